#include "oxrrec/verify/verify.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "oxrrec/badfields.hpp"
#include "oxrrec/verify/differences.hpp"
#include "records/counted.hpp"
#include "records/fields/hextext.hpp"
#include "records/program/reading.hpp"
#include "records/program/settledrecords.hpp"
#include "records/recordworker.hpp"

// Two readers go through the file: one is a worker whose records become lines and records again, the other has the
// bytes that they had. A third compares the file as a whole, so that what stands around the records is looked at too.

namespace oxr::rec {

namespace {

constexpr std::uint64_t kToldDifferences = 20;
constexpr std::size_t kShownBytes = 16;

// Bad fields are null in the line, which is no difference: their bytes are not compared.
class BadFieldTexts : public FaultListener {
 public:
  explicit BadFieldTexts(std::string input) : input_(std::move(input)) {}
  bool goOnAfter(const FieldFault& fault) override {
    if (++count_ <= kToldFields) texts_ += input_ + ": " + fault.text() + '\n';
    return true;
  }
  std::uint64_t count() const { return count_; }
  // Those that were not taken yet.
  std::string take() { return std::exchange(texts_, {}); }

 private:
  const std::string input_;
  std::string texts_;
  std::uint64_t count_ = 0;
};

std::string hex(std::span<const unsigned char> bytes) {
  return hexText(bytes.first(std::min(bytes.size(), kShownBytes)), " ") + (bytes.size() > kShownBytes ? " ..." : "");
}

// Of long ones from the first byte on that differs.
std::string hexOfBoth(std::span<const unsigned char> was, std::span<const unsigned char> is) {
  const auto equal =
      static_cast<std::size_t>(std::mismatch(was.begin(), was.end(), is.begin(), is.end()).first - was.begin());
  const std::size_t from = was.size() > kShownBytes ? equal : 0;
  const char* const before = from != 0 ? "... " : "";
  return before + hex(was.subspan(from)) + " became " + before + hex(is.subspan(from));
}

// The bytes of a file, one stretch after the other.
class Stretches {
 public:
  explicit Stretches(BufferSource& source) : source_(source) { show(source_.slide(0, 1)); }
  // How many of these bytes the file goes on with.
  std::size_t equal(std::string_view bytes) {
    if (rest_.size() < bytes.size()) show(source_.slide(used_, static_cast<int>(bytes.size())));
    const std::size_t count = std::min(rest_.size(), bytes.size());
    const auto same = static_cast<std::size_t>(
        std::mismatch(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count), rest_.begin()).first -
        bytes.begin());
    rest_.remove_prefix(count);
    used_ += static_cast<int>(count);
    return same;
  }
  bool isAtEnd() {
    if (rest_.empty()) show(source_.slide(used_, 1));
    return rest_.empty();
  }

 private:
  void show(const BitstreamBuffer* buffer) {
    rest_ = {buffer->getData(0), static_cast<std::size_t>(std::max(buffer->getLength(), 0))};
    used_ = 0;
  }
  BufferSource& source_;
  std::string_view rest_;
  int used_ = 0;
};

// Records of no kind are compared as all others.
RecordWorker::Settings withAllRecords(RecordWorker::Settings settings) {
  if (settings.onUnknown == OnUnknown::isSkipped) settings.onUnknown = OnUnknown::isRaw;
  return settings;
}

// The option without which what stands around records could lie in many ways, of which nobody knows the right one;
// empty if there is none, or it is given.
std::string missingOption(const RecordForm& form) {
  if (isBlocked(form.framing) && !form.blockSize) return "--block-size";
  if (form.framing == Framing::lines && !form.lineEnd) return "--line-end";
  return {};
}

// One run of the command, once the copybook is laid out.
class Verifying {
 public:
  Verifying(const VerifyOptions& options, const Console& console, const RecordPlan& plan)
      : keepsFiller_(options.keepsFiller),
        input_(openInput(options.input.path, options.input.window, console)),
        settings_(withAllRecords(settledRecords(options.input, plan, input_, console))),
        form_(recordForm(plan, settings_.form)),
        missingOption_(missingOption(form_)),
        faults_(input_.name()),
        bytesInput_(openInput(options.input.path, options.input.window, console)),
        wholeInput_(openInput(options.input.path, options.input.window, console)),
        output_(openOutput(kStandardStream, console)),
        worker_(RecordWorker::make(plan, settings_, faults_)),
        bytes_(form_),
        whole_(wholeInput_),
        framer_(form_),
        writer_(plan, {settings_.filler, form_.framing != Framing::fixed}),
        differences_(plan),
        json_(plan.names(), {options.pointsAsText}),
        reader_(plan.names()) {
    worker_->setSource(&input_);
    worker_->setObserver(&differences_);
    worker_->initializeParse(-1, nullptr, -1);
    worker_->setFIHandler(&json_, false);
    bytes_.open(bytesInput_.first(), 0, &bytesInput_);
  }

  int run() {
    try {
      readRecords();
    } catch (const FrameError& error) {
      output_.write(faults_.take());
      throw ToolError(input_.name() + ": " + error.what());
    }
    framer_.finish(framed_);
    checkFrames();
    framesDiffer_ = framesDiffer_ || (comparesFrames() && !whole_.isAtEnd());
    if (framesDiffer_) output_.write(input_.name() + ": what stands around the records differs\n");
    tellSum();
    output_.close();
    return isEqual() && faults_.count() == 0 ? kDone : kBadField;
  }

 private:
  void readRecords() {
    differences_.begin();
    worker_->parseFirst(input_.first(), nullptr, true, 0, -1);
    if (worker_->recordsRead() != 0) checkRecord();
    while (worker_->hasNext()) {
      differences_.begin();
      worker_->parseNext();
      checkRecord();
    }
  }

  void checkRecord() {
    const RecordBytes next = bytes_.next();
    const auto parsed = static_cast<std::uint64_t>(worker_->getNumBytesParsed());
    const auto size = bytes_.isFramed() ? next.size : static_cast<std::uint32_t>(parsed - bytes_.position());
    original_.assign(next.data, next.data + size);
    output_.write(faults_.take());
    encode(next.padding, keepsFiller_ || faults_.count() != faultsBefore_);
    faultsBefore_ = faults_.count();
    if (comparesFrames()) framer_.add(original_, framed_);
    checkFrames();
    bytes_.finish(size);
    json_.clear();
  }

  // Encodes the record again, and tells how it differs from the original, of which the last bytes are padding. What has
  // no value, as a bad field, may come from the original.
  void encode(std::uint32_t padding, bool takesOriginal) {
    line_ = json_.lines();
    line_.append(JsonReader::kPadding, ' ');
    try {
      const JsonTree& tree = reader_.read(std::string_view(line_).substr(0, line_.size() - JsonReader::kPadding));
      const auto written = takesOriginal ? writer_.write(tree, original_) : writer_.write(tree);
      record_.assign(written.begin(), written.end());
    } catch (const WriteError& error) {
      ++refused_;
      if (isTold()) tell(": " + std::string(error.what()));
      return;
    }
    if (record_.size() + padding == original_.size()) record_.insert(record_.end(), padding, form_.blank);
    if (record_ != original_) compare();
  }

  void compare() {
    for (const Difference& difference : differences_.between(worker_->layoutOfRecord(), original_, record_)) {
      const auto at = static_cast<std::ptrdiff_t>(difference.offset);
      if (keepsFiller_ && !difference.hasValue) {
        std::copy_n(original_.begin() + at, difference.size, record_.begin() + at);
        ++kept_;
        continue;
      }
      ++(difference.hasValue ? withValue_ : withoutValue_);
      if (isTold())
        tell(", byte " + std::to_string(difference.offset) + (difference.path.empty() ? "" : ", " + difference.path) +
             ": " +
             hexOfBoth(std::span(original_).subspan(difference.offset, difference.size),
                       std::span(record_).subspan(difference.offset, difference.size)) +
             (difference.hasValue       ? ""
              : difference.path.empty() ? ", which no field gives"
                                        : ", the same value"));
    }
    // All fields are compared: the bytes that are missing, or too many, are of none, or blanks at the end of one.
    if (record_.size() == original_.size()) return;
    ++(keepsFiller_ ? kept_ : withoutValue_);
    if (!keepsFiller_ && isTold())
      tell(": " + counted(original_.size(), "byte") + " became " + std::to_string(record_.size()) +
           ", the same values");
  }

  // Compares the original records, as they are framed here, with the file.
  void checkFrames() {
    framesDiffer_ = framesDiffer_ || whole_.equal(framed_) != framed_.size();
    framed_.clear();
  }

  bool comparesFrames() const { return missingOption_.empty(); }
  bool isTold() { return ++told_ <= kToldDifferences; }
  void tell(const std::string& text) {
    output_.write(input_.name() + ": record " + std::to_string(worker_->recordNumber()) + text + '\n');
  }

  bool isEqual() const { return !framesDiffer_ && withValue_ + withoutValue_ + refused_ == 0; }

  void tellSum() {
    std::string text = input_.name() + ": " + counted(worker_->recordsRead(), "record") + ", " +
                       counted(static_cast<std::uint64_t>(worker_->getNumBytesParsed()), "byte") + ": ";
    const char* const equal = faults_.count() != 0 ? "all else equal"
                              : comparesFrames()   ? "all equal"
                                                   : "all records equal";
    text += isEqual() ? equal
                      : counted(withValue_ + refused_, "difference") + " with a value, " +
                            std::to_string(withoutValue_) + " without";
    if (kept_ != 0) text += "; " + std::to_string(kept_) + " without a value taken from the original";
    if (faults_.count() != 0) text += "; " + counted(faults_.count(), "bad field");
    if (!comparesFrames()) text += "; what stands around records is compared with " + missingOption_;
    output_.write(text + '\n');
  }

  const bool keepsFiller_;
  FileInput input_;
  const RecordWorker::Settings settings_;
  const RecordForm form_;
  const std::string missingOption_;
  BadFieldTexts faults_;
  std::uint64_t faultsBefore_ = 0;  // of the record in hand
  FileInput bytesInput_;
  FileInput wholeInput_;
  FileOutput output_;
  RecordWorker::Owner worker_;
  RecordReader bytes_;
  Stretches whole_;
  RecordFramer framer_;
  RecordWriter writer_;
  Differences differences_;
  JsonHandler json_;
  JsonReader reader_;
  std::vector<unsigned char> original_;  // the record in hand as it is in the file
  std::vector<unsigned char> record_;    // and as it is encoded
  std::string line_;
  std::string framed_;
  std::uint64_t withValue_ = 0;
  std::uint64_t withoutValue_ = 0;
  std::uint64_t refused_ = 0;  // records that are not encoded
  std::uint64_t kept_ = 0;
  std::uint64_t told_ = 0;
  bool framesDiffer_ = false;
};

}  // namespace

int verify(const VerifyOptions& options, const Console& console) {
  if (options.input.path == kStandardStream)
    throw ToolError("verify reads its input more than once: it takes a file, not standard input");
  const Description description(options.record, console);
  return Verifying(options, console, description.plan()).run();
}

}  // namespace oxr::rec
