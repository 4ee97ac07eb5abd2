// Any bytes must give valid JSON lines and faults that name a place in the input, or an error, whatever the layout.
// The first byte chooses the layout, the second what becomes of faults and how records are cut; the rest is the file.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "records/records.hpp"
// Behind rapidjson.hpp, which sets it up.
#include <rapidjson/reader.h>

namespace {

using namespace oxr::rec;

void require(bool holds) {
  if (!holds) std::abort();
}

constexpr const char* kCopybooks[] = {
    "01 R. 05 A PIC X(5). 05 P PIC S9(5)V99 COMP-3. 05 B PIC S9(4) COMP. 05 Z PIC S9(3)V9. 05 U PIC 9(18) COMP-5.",
    "01 R. 05 N PIC 9. 05 G OCCURS 0 TO 4 DEPENDING ON N. 10 M PIC 9. 10 H OCCURS 0 TO 3 DEPENDING ON M. 15 F PIC X."
    " 05 T PIC X(2).",
    "01 R. 05 K PIC X. 05 A PIC X(8). 05 B REDEFINES A. 10 P PIC SV9(3) COMP-3. 10 Q PIC SVPP9(2) COMP-3."
    " 10 Z PIC 9(3) BLANK WHEN ZERO. 05 FILLER REDEFINES A. 10 N PIC 9(2) COMP. 05 C OCCURS 0 TO 9 DEPENDING ON N."
    " 10 S PIC S9(2) SIGN LEADING SEPARATE. 10 T PIC S99 SIGN LEADING.",
    "01 R. 05 FILLER OCCURS 3. 10 N PIC S9(3) COMP-3. 10 FILLER PIC X OCCURS 0 TO 3 DEPENDING ON N. 10 E PIC Z9.9-.",
    "77 A PIC X(40).",
};

// Lays out each copybook once, in both ways.
const RecordPlan& planFor(unsigned which, bool arraysAtFullSize) {
  struct Made {
    std::unique_ptr<Layout> layout;
    std::unique_ptr<RecordPlan> plan;
  };
  static const std::vector<Made> plans = [] {
    std::vector<Made> made;
    for (const char* const copybook : kCopybooks) {
      for (const bool isFull : {false, true}) {
        auto layout = std::make_unique<Layout>(readCopybook(copybook, "c", {SourceFormat::free, {}}));
        auto plan = std::make_unique<RecordPlan>(*layout, RecordPlan::Options{isFull, isFull});
        made.push_back({std::move(layout), std::move(plan)});
      }
    }
    return made;
  }();
  return *plans[2 * (which % std::size(kCopybooks)) + (arraysAtFullSize ? 1 : 0)].plan;
}

enum class Mode { stop, null, skip };

class Listener : public FaultListener {
 public:
  Listener(Mode mode, std::size_t inputSize) : mode_(mode), inputSize_(inputSize) {}
  bool goOnAfter(const FieldFault& fault) override {
    // A field that the record ends before may lie behind the input, but has no bytes then.
    require(fault.record > 0 && (fault.bytes.empty() || fault.offset + fault.bytes.size() <= inputSize_));
    require(!fault.reason.empty() && fault.text().find('\n') == std::string::npos);
    isBad = true;
    return mode_ != Mode::stop;
  }
  bool isBad = false;

 private:
  const Mode mode_;
  const std::size_t inputSize_;
};

// Hands out the input in stretches of a few bytes more than what is asked for, each in a block of its own: a worker
// that looks outside of one is caught.
class Stretches : public BufferSource {
 public:
  Stretches(std::string_view input, std::size_t more) : left_(input), more_(more) {}
  const BitstreamBuffer* slide(int consumed, int wanted) override {
    require(consumed >= 0 && static_cast<std::size_t>(consumed) <= size_ && wanted > 0);
    left_.remove_prefix(static_cast<std::size_t>(consumed));
    size_ = std::min(left_.size(),
                     std::max(size_ - static_cast<std::size_t>(consumed), static_cast<std::size_t>(wanted) + more_));
    block_.reset(new char[size_]);
    left_.copy(block_.get(), size_);
    view_ = std::make_unique<ReadOnlyByteBuffer>();
    view_->create(block_.get(), static_cast<int>(size_));
    return view_.get();
  }

 private:
  std::string_view left_;
  const std::size_t more_;
  std::size_t size_ = 0;
  std::unique_ptr<char[]> block_;
  std::unique_ptr<ReadOnlyByteBuffer> view_;
};

void requireObjects(std::string_view lines) {
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    require(end != std::string_view::npos);
    const std::string line(lines.substr(0, end));
    rapidjson::StringStream stream(line.c_str());
    rapidjson::BaseReaderHandler<> ignore;
    rapidjson::Reader reader;
    require(!reader.Parse<rapidjson::kParseValidateEncodingFlag>(stream, ignore).IsError());
    require(line.front() == '{' && line.find('\0') == std::string::npos);
    lines.remove_prefix(end + 1);
  }
}

// As the program does it.
void readAll(RecordWorker& worker, Stretches& input, JsonHandler& json, Listener& listener, Mode mode) {
  const auto settle = [&] {
    if (listener.isBad && mode == Mode::skip) json.discard();
    listener.isBad = false;
  };
  try {
    worker.parseFirst(input.slide(0, 1), nullptr, true, 0, -1);
    if (worker.recordsRead() != 0) settle();
    while (worker.hasNext()) {
      worker.parseNext();
      settle();
    }
  } catch (const FieldError&) {
    require(mode == Mode::stop);
    json.discardUnfinished();
  } catch (const FrameError&) {
    if (listener.isBad && mode == Mode::skip) json.discard();
    json.discardUnfinished();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const unsigned choice = data[1];
  const std::string_view input(reinterpret_cast<const char*>(data + 2), size - 2);
  constexpr RecordForm::Header kHeaders[] = {RecordForm::Header::none, RecordForm::Header::big,
                                             RecordForm::Header::little, RecordForm::Header::none};
  constexpr int kCcsids[] = {37, 819, 1208, 1200, 930};
  const auto mode = static_cast<Mode>(choice % 3);
  const RecordPlan& plan = planFor(data[0], (choice & 0x10) != 0);
  Listener listener(mode, input.size());
  const PhysicalForm form{kCcsids[data[0] / 16 % 5], (choice & 0x20) != 0 ? eEndianLittle : eEndianBig,
                          (choice & 0x40) != 0};
  const auto worker =
      RecordWorker::make(plan, form, {kHeaders[choice >> 2 & 3], (choice & 0x80) == 0, choice % 5 == 0}, listener);
  JsonHandler json(plan.names(), {(choice & 0x80) != 0});
  Stretches stretches(input, choice % 7);
  worker->setSource(&stretches);
  worker->initializeParse(-1, nullptr, -1);
  worker->setFIHandler(&json, false);
  readAll(*worker, stretches, json, listener, mode);
  require(worker->getNumBytesParsed() <= static_cast<PWFInt64>(input.size()));
  requireObjects(json.lines());
  return 0;
}
