#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "fuzz/records/stretches.hpp"
#include "records/records.hpp"
// RapidJSON's own headers come after records.hpp, which sets the library up.
#include <rapidjson/reader.h>

// Any bytes give valid JSON lines and faults that name a place in the input, or an error, whatever the layout; and what
// they give does not depend on how the input is cut into buffers.

namespace oxr::fuzz {

namespace recordreader {

using namespace oxr::rec;

inline constexpr const char* kCopybooks[] = {
    "01 R. 05 A PIC X(5). 05 P PIC S9(5)V99 COMP-3. 05 B PIC S9(4) COMP. 05 Z PIC S9(3)V9. 05 U PIC 9(18) COMP-5.",
    "01 R. 05 N PIC 9. 05 G OCCURS 0 TO 4 DEPENDING ON N. 10 M PIC 9. 10 H OCCURS 0 TO 3 DEPENDING ON M. 15 F PIC X."
    " 05 T PIC X(2).",
    "01 R. 05 K PIC X. 05 A PIC X(8). 05 B REDEFINES A. 10 P PIC SV9(3) COMP-3. 10 Q PIC SVPP9(2) COMP-3."
    " 10 Z PIC 9(3) BLANK WHEN ZERO. 05 FILLER REDEFINES A. 10 N PIC 9(2) COMP. 05 C OCCURS 0 TO 9 DEPENDING ON N."
    " 10 S PIC S9(2) SIGN LEADING SEPARATE. 10 T PIC S99 SIGN LEADING.",
    "01 R. 05 FILLER OCCURS 3. 10 N PIC S9(3) COMP-3. 10 FILLER PIC X OCCURS 0 TO 3 DEPENDING ON N. 10 E PIC Z9.9-.",
    "77 A PIC X(40).",
};

// Lays out each copybook once.
inline const Layout& layoutOf(std::size_t which) {
  static const std::vector<Layout> layouts = [] {
    std::vector<Layout> made;
    for (const char* const copybook : kCopybooks)
      made.push_back(readCopybook(copybook, "c", {SourceFormat::free, {}}));
    return made;
  }();
  return layouts[which];
}

enum class Mode : std::uint8_t { stop, null, skip };

// What is read, and how.
struct Job {
  explicit Job(Choices& choices)
      : layout(layoutOf(choices.upTo(std::size(kCopybooks) - 1))),
        plan(layout, planOptions(choices)),
        mode(static_cast<Mode>(choices.upTo(2))),
        settings{{choices.oneOf(kFramings), choices.coin()}, choices.upTo(4) == 0},
        pointsAsText(choices.coin()),
        more(choices.upTo(7)) {
    if (choices.coin()) {
      const auto bytes = choices.allBytes();
      input.assign(bytes.begin(), bytes.end());
    }
    while (!choices.isEmpty())
      addRecord(choices);
  }

  const Layout& layout;
  const RecordPlan plan;
  const Mode mode;
  const RecordWorker::Settings settings;
  const bool pointsAsText;
  const std::size_t more;  // bytes that a buffer has beyond what is asked for
  std::string input;

 private:
  static RecordPlan::Options planOptions(Choices& choices) {
    RecordPlan::Options options;
    options.flat = options.arraysAtFullSize = choices.coin();
    options.form = {choices.oneOf(kCcsids), choices.coin() ? eEndianLittle : eEndianBig, choices.coin()};
    return options;
  }

  // A record with the right header, if there are any, and bytes that are often digits, so that counts are too.
  void addRecord(Choices& choices) {
    std::size_t size = plan.maxSize();
    if (settings.form.framing != Framing::fixed) {
      if (choices.coin()) size = choices.upTo(size + 2);
      const std::size_t length = size + (settings.form.countsHeader.value_or(true) ? 4 : 0);
      const char high = static_cast<char>(length >> 8);
      const char low = static_cast<char>(length);
      const bool isBig = settings.form.framing == Framing::rdw;
      input += isBig ? std::string{high, low, 0, 0} : std::string{0, 0, low, high};
    }
    const char zero = choices.coin() ? '0' : '\xF0';
    const bool isDigits = choices.upTo(3) != 0;
    for (; size > 0; --size) {
      const auto byte = choices.any<std::uint8_t>();
      input += isDigits ? static_cast<char>(zero + byte % 5) : static_cast<char>(byte);
    }
  }

  static constexpr int kCcsids[] = {37, 819, 37, 819, 1208, 1200, 930};
  static constexpr Framing kFramings[] = {Framing::fixed, Framing::rdw, Framing::rdwLittle};
};

class Listener : public FaultListener {
 public:
  explicit Listener(const Job& job) : job_(job) {}
  bool goOnAfter(const FieldFault& fault) override {
    // A field that the record ends before may lie beyond the input, but has no bytes then.
    require(fault.record > 0 && (fault.bytes.empty() || fault.offset + fault.bytes.size() <= job_.input.size()),
            "a fault lies outside the input");
    require(!fault.reasonText().empty() && fault.text().find('\n') == std::string::npos, "a fault is no line");
    told += fault.text() + '\n';
    isBad = true;
    return job_.mode != Mode::stop;
  }
  bool isBad = false;
  std::string told;

 private:
  const Job& job_;
};

// Reads the input as a program does. Returns what it told and wrote, and how far it came.
inline std::string readAll(const Job& job, std::size_t more) {
  Listener listener(job);
  const auto worker = RecordWorker::make(job.plan, job.settings, listener);
  JsonHandler json(job.plan.names(), {job.pointsAsText});
  Stretches input(job.input, more);
  worker->setSource(&input);
  worker->initializeParse(-1, nullptr, -1);
  worker->setFIHandler(&json, false);
  const auto finishRecord = [&] {
    if (listener.isBad && job.mode == Mode::skip) json.discard();
    listener.isBad = false;
  };
  try {
    worker->parseFirst(input.slide(0, 1), nullptr, true, 0, -1);
    if (worker->recordsRead() != 0) finishRecord();
    while (worker->hasNext()) {
      worker->parseNext();
      finishRecord();
    }
  } catch (const FieldError& error) {
    require(job.mode == Mode::stop, "a field ended the work that was to go on");
    json.discardUnfinished();
    listener.told += error.what();
  } catch (const FrameError& error) {
    if (listener.isBad && job.mode == Mode::skip) json.discard();
    json.discardUnfinished();
    listener.told += error.what();
  }
  const PWFInt64 parsed = worker->getNumBytesParsed();
  require(parsed <= static_cast<PWFInt64>(job.input.size()), "more bytes were parsed than there are");
  return listener.told + '\0' + std::to_string(parsed) + '\0' + std::string(json.lines());
}

inline void requireObjects(std::string_view lines) {
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    require(end != std::string_view::npos, "a line has no end");
    const std::string line(lines.substr(0, end));
    rapidjson::StringStream stream(line.c_str());
    rapidjson::BaseReaderHandler<> ignore;
    rapidjson::Reader reader;
    require(!reader.Parse<rapidjson::kParseValidateEncodingFlag>(stream, ignore).IsError(), "no JSON: " + line);
    require(line.front() == '{' && line.find('\0') == std::string::npos, "no JSON object: " + line);
    lines.remove_prefix(end + 1);
  }
}

}  // namespace recordreader

inline void checkRecordReader(Choices& choices) {
  const recordreader::Job job(choices);
  const std::string inStretches = recordreader::readAll(job, job.more);
  const std::string atOnce = recordreader::readAll(job, job.input.size());
  requireEqual(inStretches, atOnce, "an input in stretches and at once");
  recordreader::requireObjects(std::string_view(inStretches).substr(inStretches.rfind('\0') + 1));
}

}  // namespace oxr::fuzz
