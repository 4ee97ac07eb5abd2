#include "oxrrec/encode/encode.hpp"

#include <optional>

#include "growingbytebuffer.hpp"
#include "oxrrec/encode/unnesting.hpp"
#include "oxrrec/nesting.hpp"
#include "records/counted.hpp"
#include "records/program/reading.hpp"

namespace oxr::rec {

namespace {

constexpr char kProgram[] = "oxrrec: ";
constexpr int kWriteBytes = 256 << 10;
constexpr std::uint64_t kToldLines = 20;

// No record is read.
class NoFaults : public FaultListener {
 public:
  bool goOnAfter(const FieldFault&) override { return false; }
};

// One run of the command, once the copybook is laid out. What the constructor throws leaves the output untouched.
class Encoding {
  using Written = Unnesting::Written;

 public:
  Encoding(const EncodeOptions& options, const Console& console, const Description& description)
      : messages_(console.messages),
        isSkipping_(options.onError == OnError::skip),
        input_(openInput(options.input, {}, console)),
        worker_(RecordWorker::make(description.plan(), options.records, faults_)),
        output_(description.openOutput(options.output, input_, console)),
        lines_(input_, options.longestLine),
        reader_(description.plan().names()) {
    if (!options.nest.empty()) unnesting_.emplace(options.nest, description.plan());
    worker_->initializeWrite(nullptr, 0, 0, 0);
  }

  // The exit code. Throws ToolError.
  int run() {
    while (const auto line = nextLine()) {
      if (!add(*line) && !isSkipping_) break;
      if (buffer_.getLength() >= kWriteBytes) flush();
    }
    worker_->finishWriting(buffer_);
    flush();
    output_.close();
    if (bad_ != 0 && isSkipping_)
      messages_ << kProgram << input_.name() << ": " << bad_ << " of " << counted(records_, "record") << " left out\n";
    return bad_ == 0 ? kDone : kBadField;
  }

 private:
  std::optional<std::string_view> nextLine() {
    try {
      return lines_.next();
    } catch (const FrameError& error) {
      throw ToolError(input_.name() + ": " + error.what() + " (--max-line)");
    }
  }

  // False if something in the line is told as bad.
  bool add(std::string_view line) {
    const std::uint64_t badBefore = bad_;
    try {
      JsonTree& tree = reader_.read(line);
      if (!unnesting_) return write(tree, {}) != Written::isBad;
      const Unnesting::Left left = unnesting_->writeAll(
          tree, isSkipping_, [this](const JsonTree& record, const std::string& path) { return write(record, path); });
      records_ += left.withBad + left.withUnknown;
      bad_ += left.withBad;
    } catch (const JsonLineError& error) {
      ++records_;
      tell(std::string(", ") + error.what());
    }
    return bad_ == badBefore;
  }

  Written write(const JsonTree& tree, const std::string& path) {
    ++records_;
    try {
      worker_->setFIMessageTree(&tree, false);
      worker_->write(&buffer_, 0, 0);
      return Written::isGood;
    } catch (const UnknownRecord&) {
      return Written::isUnknown;
    } catch (const WriteError& error) {
      tell(", " + (path.empty() ? error.what() : error.within(path)));
    } catch (const FrameError& error) {
      tell((path.empty() ? "" : ", " + path) + ": " + error.what());
    }
    return Written::isBad;
  }

  void tell(const std::string& what) {
    ++bad_;
    if (bad_ <= kToldLines)
      messages_ << kProgram << input_.name() << ": line " << lines_.lineNumber() << what << '\n';
    else if (bad_ == kToldLines + 1)
      messages_ << kProgram << input_.name() << ": more bad lines follow; they are only counted\n";
  }

  void flush() {
    output_.write(buffer_.bytes());
    buffer_.setLength(0);
  }

  std::ostream& messages_;
  const bool isSkipping_;
  NoFaults faults_;
  FileInput input_;
  RecordWorker::Owner worker_;
  FileOutput output_;
  JsonLines lines_;
  JsonReader reader_;
  std::optional<Unnesting> unnesting_;
  GrowingByteBuffer buffer_;
  std::uint64_t records_ = 0;
  std::uint64_t bad_ = 0;
};

}  // namespace

int encode(const EncodeOptions& options, const Console& console) {
  const Description description(options.record, console);
  return Encoding(options, console, description).run();
}

}  // namespace oxr::rec
