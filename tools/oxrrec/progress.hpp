#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

namespace oxr::rec {

// "45 %  530 of 1180 MB  150 MB/s  0:04 left"; without a known `total`: "530 MB  150 MB/s".
std::string progressText(std::uint64_t done, std::optional<std::uint64_t> total, double seconds);

// A line on a terminal that tells how far the work is, a few times a second. The line is wiped when the object goes.
class Progress {
 public:
  // Nothing is ever shown unless `isOn`, and nothing before `delay` has passed.
  Progress(std::ostream& terminal, bool isOn, std::optional<std::uint64_t> total, std::chrono::milliseconds delay)
      : terminal_(terminal), isOn_(isOn), total_(total), start_(Clock::now()), next_(start_ + delay) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { wipe(); }

  // Tells of `bytes` done so far. A call is cheap: the clock is looked at only now and then.
  void update(std::uint64_t bytes) {
    if (isOn_ && ++calls_ % kCallsPerLook == 0) show(bytes);
  }
  // Takes the line off, for other text to stand there.
  void wipe();

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr unsigned kCallsPerLook = 256;
  static constexpr std::chrono::milliseconds kInterval{200};

  void show(std::uint64_t bytes);

  std::ostream& terminal_;
  const bool isOn_;
  const std::optional<std::uint64_t> total_;
  const Clock::time_point start_;
  Clock::time_point next_;
  unsigned calls_ = 0;
  bool isShown_ = false;
};

}  // namespace oxr::rec
