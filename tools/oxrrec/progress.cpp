#include "oxrrec/progress.hpp"

#include <cmath>
#include <cstdio>

namespace oxr::rec {

namespace {

constexpr double kMegabyte = 1e6;
constexpr char kEraseLine[] = "\r\x1b[K";

template <class... Values>
std::string formatted(const char* format, Values... values) {
  char text[96];
  const int length = std::snprintf(text, sizeof text, format, values...);
  return std::string(text, static_cast<std::size_t>(length));
}

}  // namespace

std::string progressText(std::uint64_t done, std::optional<std::uint64_t> total, double seconds) {
  const auto bytes = static_cast<double>(done);
  const double rate = seconds > 0 ? bytes / seconds : 0;
  if (!total || *total == 0) return formatted("%.0f MB  %.0f MB/s", bytes / kMegabyte, rate / kMegabyte);
  const auto all = static_cast<double>(*total);
  std::string text = formatted("%.0f %%  %.0f of %.0f MB  %.0f MB/s", std::floor(100 * std::fmin(bytes / all, 1)),
                               bytes / kMegabyte, all / kMegabyte, rate / kMegabyte);
  if (rate > 0) {
    const auto left = static_cast<long>(std::ceil(std::fmax(all - bytes, 0) / rate));
    text += formatted("  %ld:%02ld left", left / 60, left % 60);
  }
  return text;
}

void Progress::show(std::uint64_t bytes) {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  isShown_ = true;
  terminal_ << kEraseLine << progressText(bytes, total_, std::chrono::duration<double>(now - start_).count())
            << std::flush;
}

void Progress::wipe() {
  if (isShown_) terminal_ << kEraseLine << std::flush;
  isShown_ = false;
}

}  // namespace oxr::rec
