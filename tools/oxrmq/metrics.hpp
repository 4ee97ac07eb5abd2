#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "oxrmq/counters.hpp"
#include "oxrmq/log.hpp"

namespace oxr::mq {

// The counts as Prometheus reads them, a help line, a type line and a value for each; times in seconds.
std::string metricsText(const Counters& counters);

// Keeps a file with the counts up to date, on a thread of its own: it is written every few seconds, under a temporary
// name that becomes its own, so that a reader finds it whole, and a last time when the object goes. What cannot be
// written is told once, and the work goes on.
class MetricsFile {
 public:
  // No file if the path is empty. All must outlive the object.
  MetricsFile(std::string path, const Counters& counters, Log& log);
  MetricsFile(const MetricsFile&) = delete;
  MetricsFile& operator=(const MetricsFile&) = delete;
  ~MetricsFile();

 private:
  void keepUp();
  void write() noexcept;

  const std::string path_;
  const Counters& counters_;
  Log& log_;
  bool isTold_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isEnding_ = false;
  std::thread thread_;
};

}  // namespace oxr::mq
