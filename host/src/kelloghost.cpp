// The host's own log: records as lines of text, written through spdlog, which nothing outside this file sees.
//
//   2026-03-01 12:00:00.123456 [4711] trace PWFData::getInt32Value #12: LogicalType; 3
//   2026-03-01 12:00:00.123470 [4711] event OXR5501E cpAssert (src/cpi/bsutils/cpassert:46) #12: CPAssertion failed;
//   ...

#include <spdlog/logger.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "descriptorsink.hpp"
#include "kelloginternal.hpp"
#include "kelprintable.hpp"

namespace oxr {
namespace {

constexpr std::array<std::string_view, 4> kKindNames{"entry", "exit", "trace", "event"};

std::string lineOf(const LogRecord& record) {
  std::string line = record.debug ? "debug " : "";
  line += kKindNames[static_cast<std::size_t>(record.kind)];
  if (record.messageNumber != 0) line += ' ' + messageName(record.messageNumber);
  if (!record.function.empty()) line += ' ' + record.function;
  if (!record.file.empty()) line += " (" + record.file + ':' + std::to_string(record.line) + ')';
  if (!record.source.empty()) {
    line += " of " + printable(record.source);
  }
  if (record.handle != 0) line += " #" + std::to_string(record.handle);
  const char* separator = ": ";
  for (const std::string& insert : record.inserts) {
    // They quote the data of messages: a line break or an escape sequence must not forge or garble lines.
    line += separator + printable(insert);
    separator = "; ";
  }
  return line;
}

// Nothing is kept back: what an abort leaves unwritten is what one would need most.
class SpdlogSink : public LogSink {
 public:
  explicit SpdlogSink(spdlog::sink_ptr sink) : logger_("kelhost", std::move(sink)) {
    logger_.set_pattern("%Y-%m-%d %H:%M:%S.%f [%t] %v");
  }
  void write(const LogRecord& record) override { logger_.log(spdlog::level::info, lineOf(record)); }

 private:
  spdlog::logger logger_;
};

class NoSink : public LogSink {
 public:
  void write(const LogRecord&) override {}
};

std::shared_ptr<LogSink> makeStderrSink() {
  return std::make_shared<SpdlogSink>(std::make_shared<DescriptorSink>(STDERR_FILENO));
}

}  // namespace

std::shared_ptr<LogSink> makeHostSink() {
  const char* const setting = std::getenv("KELHOST_LOG");
  const std::string_view name = setting != nullptr ? setting : "";
  if (name.empty() || name == "stderr") return makeStderrSink();
  if (name == "none") return std::make_shared<NoSink>();
  try {
    return std::make_shared<SpdlogSink>(std::make_shared<DescriptorSink>(std::string(name)));
  } catch (const std::system_error& failure) {
    LogRecord refusal;
    refusal.kind = RecordKind::event;
    refusal.function = "KelLog";
    refusal.inserts = {"KELHOST_LOG names no file that can be written", failure.what()};
    std::shared_ptr<LogSink> sink = makeStderrSink();
    sink->write(refusal);
    return sink;
  }
}

}  // namespace oxr
