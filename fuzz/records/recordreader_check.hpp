#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "fuzz/records/stretches.hpp"
#include "records/json/rapidjson.hpp"
#include "records/records.hpp"
// RapidJSON's own headers come after rapidjson.hpp, which sets the library up.
#include <rapidjson/reader.h>

// Any bytes give valid JSON lines and faults that name a place in the input, or an error, whatever the layout, the form
// of its fields, the kinds of records and what stands around them; and what they give does not depend on how the input
// is cut into buffers, or on who watches.

namespace oxr::fuzz {

namespace recordreader {

using namespace oxr::rec;

// A copybook with what may be said of its fields and kinds, in words.
struct Sample {
  const char* copybook;
  const char* settings = "";
  const char* conditions = "";
};
inline constexpr Sample kSamples[] = {
    {"01 R. 05 A PIC X(5). 05 P PIC S9(5)V99 COMP-3. 05 B PIC S9(4) COMP. 05 Z PIC S9(3)V9. 05 U PIC 9(18) COMP-5.",
     "P:packed-sign=leading Z:sign=leading B:integers=little A:ccsid=1208"},
    {"01 R. 05 N PIC 9. 05 G OCCURS 0 TO 4 DEPENDING ON N. 10 M PIC 9. 10 H OCCURS 0 TO 3 DEPENDING ON M. 15 F PIC X."
     " 05 T PIC X(2)."},
    {"01 R. 05 K PIC X. 05 A PIC X(8). 05 B REDEFINES A. 10 P PIC SV9(3) COMP-3. 10 Q PIC SVPP9(2) COMP-3."
     " 10 Z PIC 9(3) BLANK WHEN ZERO. 05 FILLER REDEFINES A. 10 N PIC 9(2) COMP. 05 C OCCURS 0 TO 9 DEPENDING ON N."
     " 10 S PIC S9(2) SIGN LEADING SEPARATE. 10 T PIC S99 SIGN LEADING.",
     "S:blank-numbers=null T:lenient-numbers=yes"},
    {"01 R. 05 FILLER OCCURS 3. 10 N PIC S9(3) COMP-3. 10 FILLER PIC X OCCURS 0 TO 3 DEPENDING ON N. 10 E PIC Z9.9-."},
    {"77 A PIC X(40)."},
    {"01 R. 05 F COMP-1. 05 D COMP-2. 05 W PIC S9(20)V9(3) COMP. 05 V PIC 9(37) COMP-5. 05 U PIC 9(5) COMP-6."
     " 05 N PIC N(3) NATIONAL. 05 G PIC G(2) DISPLAY-1. 05 X POINTER. 05 I INDEX. 05 E PIC ZZ9.99-. 05 B PIC X(3).",
     "D:floats=ieee-le F:floats=ieee-be E:edited=number W:integers=little N:ccsid=1200 G:ccsid=930"},
    {"01 R. 05 D PIC 9(8). 05 T PIC X(8). 05 P PIC S9(7) COMP-3. 05 B PIC 9(9) COMP. 05 E PIC 99/99/99.",
     "D:date=yyyyMMdd T:date=HH:mm:ss P:date=yyMMdd B:date=HHmmss E:date=dd/MM/yy P:packed-sign=leading"},
    {"01 A. 05 K PIC 9. 05 X PIC X(3). 01 B. 05 K PIC 9. 05 N PIC 9. 05 T PIC 9(2) OCCURS 0 TO 3 DEPENDING ON N."
     " 01 C. 05 K PIC 9. 05 P PIC S9(3) COMP-3.",
     "K:low-values=zero", "K=1:A K=2,3:B K=4:C"},
    {"01 R. 05 K PIC X. 05 G OCCURS 2. 10 T PIC 9. 10 A PIC X(4). 10 B REDEFINES A PIC S9(6) COMP-3. 10 C REDEFINES A."
     " 15 N PIC 9. 15 O PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 Y PIC X(3). 05 Z REDEFINES Y. 10 M PIC 9(3).",
     "T:blank-numbers=zero", "T=1:A T=2-3:B T=*:C K=0-3:Y K=4:Z"},
};

// Reads each copybook once.
inline const Copybook& copybookOf(std::size_t which) {
  static const std::vector<Copybook> copybooks = [] {
    std::vector<Copybook> made;
    for (const Sample& sample : kSamples)
      made.push_back(Copybook::read(sample.copybook, "c", {.format = SourceFormat::free}));
    return made;
  }();
  return copybooks[which];
}

inline std::vector<std::string> wordsOf(const char* text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

enum class Mode : std::uint8_t { stop, null, skip };

// What is read, and how.
struct Job {
  explicit Job(Choices& choices)
      : which(choices.upTo(std::size(kSamples) - 1)),
        plan(copybookOf(which), {}, planOptions(which, choices)),
        mode(static_cast<Mode>(choices.upTo(2))),
        settings(drawSettings(choices, plan.forms().front().ccsid == 1200)),
        pointsAsText(choices.coin()),
        more(choices.upTo(7)) {
    if (choices.coin()) {
      const auto bytes = choices.bytes(choices.upTo(choices.left()));
      input.assign(bytes.begin(), bytes.end());
    }
    RecordFramer framer(recordForm(plan, settings.form), static_cast<std::uint32_t>(choices.between(9, 200)));
    while (!choices.isEmpty())
      addRecord(choices, framer);
    framer.finish(input);
  }

  const std::size_t which;
  const RecordPlan plan;
  const Mode mode;
  const RecordWorker::Settings settings;
  const bool pointsAsText;
  const std::size_t more;  // bytes that a buffer has beyond what is asked for
  std::string input;

 private:
  static PhysicalForm drawForm(Choices& choices) {
    constexpr int kCcsids[] = {37, 819, 37, 819, 1208, 1200, 930};
    PhysicalForm form;
    form.ccsid = choices.oneOf(kCcsids);
    form.integerEndian = choices.coin() ? eEndianLittle : eEndianBig;
    form.hasLetterSigns = choices.coin();
    form.floats = static_cast<FloatForm>(choices.upTo(3));
    if (choices.coin()) return form;
    form.blankNumbers = static_cast<EmptyNumber>(choices.upTo(2));
    form.lowValues = static_cast<EmptyNumber>(choices.upTo(2));
    form.lenientNumbers = choices.coin();
    form.editedAsNumber = choices.coin();
    form.packedSign = choices.upTo(3) == 0 ? SignEnd::leading : SignEnd::asDeclared;
    form.sign = static_cast<SignEnd>(choices.upTo(2));
    return form;
  }

  static RecordPlan::Options planOptions(std::size_t which, Choices& choices) {
    RecordPlan::Options options;
    options.flat = options.arraysAtFullSize = choices.coin();
    options.showsFillers = choices.upTo(3) == 0;
    options.form = drawForm(choices);
    for (const std::string& setting : wordsOf(kSamples[which].settings))
      if (choices.coin()) options.fieldSettings.push_back(setting);
    if (choices.upTo(3) != 0) options.conditions = wordsOf(kSamples[which].conditions);
    return options;
  }

  // Characters of several bytes make no lines.
  static RecordWorker::Settings drawSettings(Choices& choices, bool isWide) {
    RecordWorker::Settings settings;
    settings.form.framing = static_cast<Framing>(choices.upTo(static_cast<std::size_t>(Framing::lines) - isWide));
    if (choices.coin()) settings.form.countsHeader = choices.coin();
    settings.allowExtra = choices.upTo(4) == 0;
    settings.onUnknown = static_cast<OnUnknown>(choices.upTo(2));
    return settings;
  }

  // A record with what stands around it in such a file, and bytes that are often digits, so that counts are too.
  void addRecord(Choices& choices, RecordFramer& framer) {
    std::size_t size = plan.maxSize();
    if (settings.form.framing != Framing::fixed && choices.coin()) size = choices.upTo(size + 2);
    const char zero = choices.coin() ? '0' : '\xF0';
    const bool isDigits = choices.upTo(3) != 0;
    std::string record;
    for (; size > 0; --size) {
      const auto byte = choices.any<std::uint8_t>();
      record += isDigits ? static_cast<char>(byte < 8 ? byte % 2 * (zero == '0' ? ' ' : '@') : zero + byte % 5)
                         : static_cast<char>(byte);
    }
    try {
      framer.add({reinterpret_cast<const unsigned char*>(record.data()), record.size()}, input);
    } catch (const FrameError&) {
      input += record;  // a block is too small for it, or there is a line end in it
    }
  }
};

// Sees fields, which changes nothing.
class Watcher : public FieldObserver {
 public:
  explicit Watcher(const RecordPlan& plan) : plan_(plan) {}
  void seen(const FieldSeen& field) override {
    const auto index = static_cast<std::size_t>(&field.step - plan_.steps().data());
    require(index < plan_.steps().size() && field.bytes.size() <= field.step.size, "a field has a wrong step");
    require(field.fault == nullptr || field.value.isNull(), "a bad field has a value");
  }

 private:
  const RecordPlan& plan_;
};

class Listener : public FaultListener {
 public:
  explicit Listener(const Job& job) : job_(job) {}
  bool goOnAfter(const FieldFault& fault) override {
    // A field that the record ends before may lie beyond the input, but has no bytes then; and some blanks that fill up
    // a line are not in it.
    const std::size_t size = job_.settings.form.framing == Framing::lines ? 0 : fault.bytes.size();
    require(fault.record > 0 && (fault.bytes.empty() || fault.offset + size <= job_.input.size()),
            "a fault lies outside the input");
    require(!fault.reasonText().empty() && fault.text().find('\n') == std::string::npos,
            "a fault is no line: " + fault.text());
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
inline std::string readAll(const Job& job, std::size_t more, FieldObserver* observer) {
  Listener listener(job);
  const auto worker = RecordWorker::make(job.plan, job.settings, listener);
  JsonHandler json(job.plan.names(), {job.pointsAsText});
  Stretches input(job.input, more);
  worker->setSource(&input);
  worker->initializeParse(-1, nullptr, -1);
  worker->setFIHandler(&json, false);
  worker->setObserver(observer);
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

// Keeps the bytes of the last record: once it has been read, the input may have moved on.
class Keeper : public JsonHandler {
 public:
  Keeper(const Job& job, const RecordWorker& worker)
      : JsonHandler(job.plan.names(), {job.pointsAsText}), worker_(worker) {}
  void endMessage(const WorkerInfoPtr& info) override {
    const auto bytes = worker_.recordInHand();
    record_.assign(bytes.begin(), bytes.end());
    JsonHandler::endMessage(info);
  }
  // Its first bytes, of which it has `most` at most.
  std::span<const unsigned char> record(std::size_t most) const {
    return std::span(record_).first(std::min(most, record_.size()));
  }

 private:
  const RecordWorker& worker_;
  std::vector<unsigned char> record_;
};

// What is null, unknown or beyond a count that cannot be used is no obstacle to a writer who has the original.
inline void requireKept(const Job& job) {
  if (job.mode != Mode::null || job.settings.onUnknown == OnUnknown::isSkipped) return;
  Listener listener(job);
  const auto worker = RecordWorker::make(job.plan, job.settings, listener);
  RecordWriter writer(job.plan, {std::nullopt, job.settings.form.framing != Framing::fixed});
  JsonReader reader(job.plan.names());
  Keeper json(job, *worker);
  Stretches input(job.input, job.input.size());
  worker->setSource(&input);
  worker->initializeParse(-1, nullptr, -1);
  worker->setFIHandler(&json, false);
  PWFInt64 begin = 0;
  try {
    worker->parseFirst(input.slide(0, 1), nullptr, true, 0, -1);
    while (worker->recordsRead() != 0) {
      const auto original = json.record(static_cast<std::size_t>(worker->getNumBytesParsed() - begin));
      const std::string line = std::string(json.lines()) + std::string(JsonReader::kPadding, ' ');
      try {
        const auto written = writer.write(reader.read(std::string_view(line).substr(0, json.lines().size())), original);
        require(written.size() >= std::min<std::size_t>(original.size(), worker->layoutOfRecord().maxSize()) ||
                    job.plan.isVariable(),
                "a record became shorter: " + line);
      } catch (const WriteError& error) {
        const std::string why = error.what();
        for (const char* const obstacle : {"null cannot", "no condition", "count", "name is missing", "no such name"})
          require(why.find(obstacle) == std::string::npos, why + " in " + line);
      }
      json.clear();
      begin = worker->getNumBytesParsed();
      if (!worker->hasNext()) break;
      worker->parseNext();
    }
  } catch (const FrameError&) {
    // Told by readAll too.
  }
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
  const std::string inStretches = recordreader::readAll(job, job.more, nullptr);
  recordreader::Watcher watcher(job.plan);
  const std::string atOnce = recordreader::readAll(job, job.input.size(), &watcher);
  requireEqual(inStretches, atOnce, "an input in stretches and at once");
  recordreader::requireObjects(std::string_view(inStretches).substr(inStretches.rfind('\0') + 1));
  recordreader::requireKept(job);
}

}  // namespace oxr::fuzz
