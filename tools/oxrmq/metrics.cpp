#include "oxrmq/metrics.hpp"

#include <utility>

namespace oxr::mq {

namespace {

constexpr std::chrono::seconds kInterval{2};
constexpr double kNanosecond = 1e-9;

struct Metric {
  const char* name;
  const char* help;
  Counters::Count Counters::*count;
  bool isTime = false;
};

constexpr Metric kMetrics[] = {
    {"messages_in_total", "Messages taken from the queues.", &Counters::messagesIn},
    {"messages_out_total", "Messages that the broker has confirmed.", &Counters::messagesOut},
    {"messages_failed_total", "Messages that went to the target for errors.", &Counters::messagesFailed},
    {"records_total", "Records in the messages that went out.", &Counters::records},
    {"messages_left_out_total", "Messages without a record that was to go out.", &Counters::messagesLeftOut},
    {"records_left_out_total", "Records of no kind, or with bad fields, that the options leave out.",
     &Counters::recordsLeftOut},
    {"bytes_in_total", "Bytes of the messages that came in.", &Counters::bytesIn},
    {"bytes_out_total", "Bytes of the messages that went out.", &Counters::bytesOut},
    {"bad_fields_total", "Fields and lines that could not be converted.", &Counters::badFields},
    {"redeliveries_total", "Messages that had been delivered before.", &Counters::redeliveries},
    {"not_taken_total", "Messages that the broker refused for now, and that were published again.",
     &Counters::notTaken},
    {"given_back_total", "Messages that went back to their queue.", &Counters::givenBack},
    {"connections_lost_total", "Connections to the broker that were lost.", &Counters::connectionsLost},
    {"blocked_total", "Times that the broker asked for a pause.", &Counters::blocked},
    {"converting_seconds_total", "Time in conversion.", &Counters::convertingNanoseconds, true},
    {"publishing_seconds_total", "Time in handing messages to the broker.", &Counters::publishingNanoseconds, true},
    {"waiting_seconds_total", "Time in waiting for the broker, with the time of reading what it sends.",
     &Counters::waitingNanoseconds, true},
};

}  // namespace

std::string metricsText(const Counters& counters) {
  std::string text;
  for (const Metric& metric : kMetrics) {
    const std::string name = std::string("oxrmq_") + metric.name;
    const std::uint64_t count = counters.*metric.count;
    text += "# HELP " + name + ' ' + metric.help + "\n# TYPE " + name + " counter\n" + name + ' ' +
            (metric.isTime ? std::to_string(static_cast<double>(count) * kNanosecond) : std::to_string(count)) + '\n';
  }
  return text;
}

MetricsFile::MetricsFile(std::string path, const Counters& counters, Log& log)
    : path_(std::move(path)), counters_(counters), log_(log) {
  if (!path_.empty()) thread_ = std::thread([this] { keepUp(); });
}

MetricsFile::~MetricsFile() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  thread_.join();
  write();
}

void MetricsFile::keepUp() {
  std::unique_lock lock(mutex_);
  do
    write();
  while (!changed_.wait_for(lock, kInterval, [this] { return isEnding_; }));
}

void MetricsFile::write() noexcept {
  try {
    rec::FileOutput file = rec::FileOutput::open(path_, {}, -1);
    file.write(metricsText(counters_));
    file.close();
  } catch (const std::exception& error) {
    if (!std::exchange(isTold_, true)) log_.tell(error.what());
  }
}

}  // namespace oxr::mq
