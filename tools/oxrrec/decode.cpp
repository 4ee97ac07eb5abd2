#include "oxrrec/decode.hpp"

#include <unistd.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "oxrrec/jobs/decodejobs.hpp"
#include "oxrrec/nesting.hpp"
#include "records/program/reading.hpp"

namespace oxr::rec {

namespace {

constexpr char kProgram[] = "oxrrec: ";
constexpr std::size_t kWriteBytes = std::size_t{128} << 10;
constexpr std::chrono::milliseconds kProgressDelay{1000};

// What does not go together.
void refuse(const DecodeOptions& options) {
  if (!options.errors.empty() && isSameOutput(options.errors, options.output))
    throw ToolError("--errors " + options.errors + ": the lines go there already");
  if (options.format != LineFormat::csv) return;
  if (!options.nest.empty()) throw ToolError("--nest is not for --to csv: a row has no records in it");
  if (options.pointsAsText) throw ToolError("--decimals text is not for --to csv: its values have no types");
  if (options.input.records.onUnknown == OnUnknown::isRaw)
    throw ToolError("--on-unknown raw is not for --to csv: a row has the columns of its fields");
}

// One run of the command, once the copybook is laid out. What the constructor throws leaves the output untouched.
class Decoding {
 public:
  Decoding(const DecodeOptions& options, const Console& console, const Description& description)
      : messages_(console.messages),
        input_(openInput(options.input.path, options.input.window, console)),
        progress_(makeProgress(options, console, input_)),
        badFields_(options.onError, messages_, input_.name(), [this] { progress_.wipe(); }),
        worker_(makeWorker(description.plan(), options.input, input_, badFields_, console)),
        output_(description.openOutput(options.output, input_, console)),
        lines_(makeHandler(description.plan(), options)),
        isFirstRange_(options.input.window.isFromStart()) {
    if (!options.errors.empty()) {
      badRecords_.emplace(description.openOutput(options.errors, input_, console));
      badFields_.setRecords(&*badRecords_, worker_.get());
    }
    if (!options.nest.empty()) {
      nesting_.emplace(options.nest, description.plan());
      worker_->setKindsOfInterest(nesting_->names());
    }
    worker_->setSource(&input_);
    worker_->initializeParse(-1, nullptr, -1);
    worker_->setFIHandler(lines_.get(), false);
    if (options.check) {
      quiet_.emplace();
      checked_.emplace(*worker_, *lines_);
    }
  }

  // The exit code. Throws OutputError.
  int run() {
    const auto* const csv = dynamic_cast<const CsvHandler*>(lines_.get());
    // The rows of a later range follow those of an earlier one.
    if (csv != nullptr && isFirstRange_) output_.write(csv->header());
    const int code = readAll();
    progress_.wipe();
    if (nesting_) nesting_->finish(nested_);
    writeLines();
    output_.close();
    if (badRecords_) badRecords_->close();
    if (code != kDone) return code;
    tell(beforeParent_, "it comes before any parent", "they come before any parent");
    tell(ofLeftOut_, "its parent was left out", "their parents were left out");
    if (!badFields_.hasAny()) return kDone;
    badFields_.tellSum(worker_->recordsRead(), worker_->hint());
    return kBadField;
  }

 private:
  // Whatever ends the work early, the lines of the records before it are whole.
  int readAll() {
    try {
      readRecords();
      return kDone;
    } catch (const FieldError& error) {
      return ended(kBadField, input_.name() + ": " + error.what() + worker_->hint());
    } catch (const FrameError& error) {
      return ended(kFailed, input_.name() + ": " + error.what());
    } catch (const CheckError& error) {
      return ended(kFailed,
                   input_.name() + ": record " + std::to_string(worker_->recordNumber()) + ": " + error.what());
    } catch (const OutputError&) {
      throw;
    } catch (const ToolError& error) {
      return ended(kFailed, error.what());
    }
  }

  int ended(int code, const std::string& text) {
    dropIfSkipped(std::numeric_limits<std::uint64_t>::max());
    lines_->discardUnfinished();
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
    const auto position = static_cast<std::uint64_t>(worker_->getNumBytesParsed());
    const bool isLeftOut = dropIfSkipped(position - std::exchange(position_, position));
    if (nesting_) nest(isLeftOut);
    if (text().size() >= kWriteBytes) writeLines();
    progress_.update(position);
  }

  // The record has `size` bytes at most. True if it is left out.
  bool dropIfSkipped(std::uint64_t size) {
    const bool isLeftOut = badFields_.finishRecord(size) && badFields_.isSkipping();
    if (isLeftOut) lines_->discard();
    return isLeftOut;
  }

  // Moves the line of the last record to those that are put into each other.
  void nest(bool isLeftOut) {
    const std::string_view kind = worker_->kindOfRecord();
    if (isLeftOut) {
      nesting_->leaveOut(kind, nested_);
    } else if (const auto put = nesting_->add(kind, lines_->lines(), nested_); put != Nesting::Put::inPlace) {
      Orphans& orphans = put == Nesting::Put::withoutParent ? ofLeftOut_ : beforeParent_;
      if (orphans.count++ == 0) orphans.first = std::to_string(worker_->recordNumber()) + ", " + std::string(kind);
    }
    lines_->clear();
  }

  // Children on lines of their own.
  struct Orphans {
    std::uint64_t count = 0;
    std::string first{};
  };

  void tell(const Orphans& orphans, const char* whyOne, const char* whyMany) const {
    if (orphans.count == 0) return;
    messages_ << kProgram << input_.name() << ": " << orphans.count
              << (orphans.count == 1 ? " record stands on a line of its own, since "
                                     : " records stand on lines of their own, since ")
              << (orphans.count == 1 ? whyOne : whyMany) << "; the first is record " << orphans.first << '\n';
  }

  std::string_view text() const { return nesting_ ? std::string_view(nested_) : lines_->lines(); }

  void writeLines() {
    output_.write(text());
    nested_.clear();
    lines_->clear();
  }

  std::ostream& messages_;
  FileInput input_;
  Progress progress_;
  std::optional<BadRecords> badRecords_;
  BadFields badFields_;
  RecordWorker::Owner worker_;
  FileOutput output_;
  std::unique_ptr<LineHandler> lines_;
  const bool isFirstRange_;
  std::optional<Nesting> nesting_;
  std::string nested_;  // what it has done
  Orphans beforeParent_;
  Orphans ofLeftOut_;
  std::uint64_t position_ = 0;        // where the last record ended
  std::optional<QuietOutput> quiet_;  // a checker's last line has no place among the lines of records
  std::optional<CheckedParts> checked_;
};

}  // namespace

std::unique_ptr<LineHandler> makeHandler(const RecordPlan& plan, const DecodeOptions& options) {
  if (options.format == LineFormat::csv) return std::make_unique<CsvHandler>(plan);
  return std::make_unique<JsonHandler>(plan.names(), JsonHandler::Options{options.pointsAsText});
}

Progress makeProgress(const DecodeOptions& options, const Console& console, const FileInput& input) {
  const bool isBetweenLines = options.output == kStandardStream && ::isatty(console.output) == 1;
  return Progress(console.terminal != nullptr ? *console.terminal : console.messages,
                  console.messagesOnTerminal && !isBetweenLines && options.progress.value_or(true), input.totalSize(),
                  options.progress ? std::chrono::milliseconds{0} : kProgressDelay);
}

int decode(const DecodeOptions& options, const Console& console) {
  refuse(options);
  const Description description(options.record, console);
  if (options.jobs > 1) return decodeInJobs(options, console, description);
  return Decoding(options, console, description).run();
}

}  // namespace oxr::rec
