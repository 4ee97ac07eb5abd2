#include "oxrrec/decode.hpp"

#include <unistd.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "oxrrec/progress.hpp"

namespace oxr::rec {

namespace {

constexpr char kProgram[] = "oxrrec: ";
constexpr std::size_t kWriteBytes = std::size_t{256} << 10;
constexpr std::uint64_t kToldFaults = 20;
constexpr std::chrono::milliseconds kProgressDelay{1000};

// Decides by the option on errors, tells the first faults, and counts.
class Faults : public FaultListener {
 public:
  Faults(OnError onError, std::ostream& messages, const std::string& input, std::function<void()> beforeText)
      : onError_(onError), messages_(messages), input_(input), beforeText_(std::move(beforeText)) {}

  bool goOnAfter(const FieldFault& fault) override {
    if (onError_ == OnError::stop) return false;
    recordIsBad_ = true;
    ++fields_;
    if (fields_ <= kToldFaults) {
      beforeText_();
      messages_ << kProgram << input_ << ": " << fault.text() << '\n';
    } else if (fields_ == kToldFaults + 1) {
      messages_ << kProgram << input_ << ": more bad fields follow; they are only counted\n";
    }
    return true;
  }

  // To be called after each record; true if it is to be left out.
  bool isSkipped() {
    const bool wasBad = std::exchange(recordIsBad_, false);
    if (wasBad) ++records_;
    return wasBad && onError_ == OnError::skip;
  }

  void tellSum(std::uint64_t allRecords) const {
    if (fields_ == 0) return;
    messages_ << kProgram << input_ << ": " << fields_ << (fields_ == 1 ? " bad field in " : " bad fields in ")
              << records_ << " of " << allRecords << (allRecords == 1 ? " record, " : " records, ")
              << (onError_ == OnError::skip ? "left out\n" : "written as null\n");
  }

 private:
  const OnError onError_;
  std::ostream& messages_;
  const std::string& input_;
  const std::function<void()> beforeText_;
  std::uint64_t fields_ = 0;
  std::uint64_t records_ = 0;
  bool recordIsBad_ = false;
};

RecordWorker::Owner makeWorker(const RecordPlan& plan, const DecodeOptions& options, FaultListener& listener) {
  try {
    return RecordWorker::make(plan, options.input.records, listener);
  } catch (const KelException& failure) {
    throw ToolError("CCSID " + std::to_string(options.record.plan.form.ccsid) + ": " + faultText(failure));
  }
}

// One run of the command, once the copybook is laid out. What the constructor throws leaves the output untouched.
class Decoding {
 public:
  Decoding(const DecodeOptions& options, const Console& console, const RecordPlan& plan)
      : messages_(console.messages),
        input_(openInput(options.input.path, console)),
        progress_(messages_, isProgressWanted(options, console), input_.totalSize(),
                  options.progress ? std::chrono::milliseconds{0} : kProgressDelay),
        faults_(options.onError, messages_, input_.name(), [this] { progress_.wipe(); }),
        worker_(makeWorker(plan, options, faults_)),
        output_(openOutput(options.output, console, input_.descriptor())),
        json_(plan.names(), {options.pointsAsText}) {
    worker_->setSource(&input_);
    worker_->initializeParse(-1, nullptr, -1);
    worker_->setFIHandler(&json_, false);
    if (options.check) {
      quiet_.emplace();
      checked_.emplace(*worker_, json_);
    }
  }

  // The exit code. Throws OutputError.
  int run() {
    const int code = readAll();
    progress_.wipe();
    writeLines();
    output_.close();
    if (code == kDone) faults_.tellSum(worker_->recordsRead());
    return code;
  }

 private:
  static bool isProgressWanted(const DecodeOptions& options, const Console& console) {
    const bool isBetweenLines = options.output == kStandardStream && ::isatty(console.output) == 1;
    return console.messagesOnTerminal && !isBetweenLines && options.progress.value_or(true);
  }

  // Whatever ends the work early, the lines of the records before it are whole.
  int readAll() {
    try {
      readRecords();
      return kDone;
    } catch (const FieldError& error) {
      return ended(kBadField, input_.name() + ": " + error.what());
    } catch (const FrameError& error) {
      return ended(kFailed, input_.name() + ": " + error.what());
    } catch (const CheckError& error) {
      return ended(kFailed, input_.name() + ": record " + std::to_string(worker_->recordsRead()) + ": " + error.what());
    } catch (const OutputError&) {
      throw;
    } catch (const ToolError& error) {
      return ended(kFailed, error.what());
    }
  }

  int ended(int code, const std::string& text) {
    dropIfSkipped();
    json_.discardUnfinished();
    progress_.wipe();
    messages_ << kProgram << text << '\n';
    return code;
  }

  void readRecords() {
    parseFirst();
    if (worker_->recordsRead() == 0) return;
    finishRecord();
    while (worker_->hasNext()) {
      parseNext();
      finishRecord();
    }
  }

  void parseFirst() {
    if (checked_)
      checked_->parseFirst(input_.first());
    else
      worker_->parseFirst(input_.first(), nullptr, true, 0, -1);
  }

  void parseNext() {
    if (checked_)
      checked_->parseNext();
    else
      worker_->parseNext();
  }

  void finishRecord() {
    dropIfSkipped();
    if (json_.size() >= kWriteBytes) writeLines();
    progress_.update(static_cast<std::uint64_t>(worker_->getNumBytesParsed()));
  }

  void dropIfSkipped() {
    if (faults_.isSkipped()) json_.discard();
  }

  void writeLines() {
    output_.write(json_.lines());
    json_.clear();
  }

  std::ostream& messages_;
  FileInput input_;
  Progress progress_;
  Faults faults_;
  RecordWorker::Owner worker_;
  FileOutput output_;
  JsonHandler json_;
  std::optional<QuietOutput> quiet_;  // a checker's last line has no place among the lines of records
  std::optional<CheckedParts> checked_;
};

}  // namespace

int decode(const DecodeOptions& options, const Console& console) {
  const RecordOptions& record = options.record;
  const Layout layout = readCopybookFile(record.copybook.path, record.copybook.options);
  const RecordPlan plan(layout, record.plan);
  return Decoding(options, console, plan).run();
}

}  // namespace oxr::rec
