#include "kelabend.hpp"

#include <cstdint>
#include <cstdlib>

#include "kellog.hpp"
#include "kelloginternal.hpp"

namespace {

// Nothing may leave on the way to the log, least of all a want of memory.
template <class Fill>
void writeEvent(Fill fill) noexcept {
  try {
    oxr::LogRecord record;
    record.kind = oxr::RecordKind::event;
    fill(record);
    oxr::writeRecord(record);
  } catch (...) {
  }
}

}  // namespace

void KelAbend::logSystemErrorInternal(const char* file, int line, const char*, const Insert& a, const Insert& b,
                                      const Insert& c, const Insert& d, const Insert& e, const Insert& f,
                                      const void* data, bool) noexcept {
  writeEvent([&](oxr::LogRecord& record) {
    record.function = "KelAbend";
    if (file != nullptr) record.file = file;
    record.line = line;
    record.inserts.emplace_back("System error");
    for (const Insert* insert : {&a, &b, &c, &d, &e, &f}) {
      if (insert->tag() == Insert::Tag::integer) record.inserts.push_back(std::to_string(insert->integer()));
      if (insert->text() != nullptr) record.inserts.emplace_back(insert->text());
    }
    if (data != nullptr) record.inserts.push_back(oxr::addressText(data));
  });
}

void KelAbend::logSystemErrorAndTerminateProcessInternal(const char* file, int line, const char* version,
                                                         const Insert& a, const Insert& b, const Insert& c,
                                                         const Insert& d, const Insert& e, const Insert& f,
                                                         const void* data, bool last) noexcept {
  logSystemErrorInternal(file, line, version, a, b, c, d, e, f, data, last);
  std::abort();
}

void KelAbend::newHandler() noexcept {
  writeEvent([](oxr::LogRecord& record) {
    record.function = "KelAbend::newHandler";
    record.inserts.emplace_back("Out of memory");
  });
}
