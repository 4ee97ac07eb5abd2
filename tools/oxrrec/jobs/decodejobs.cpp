#include "oxrrec/jobs/decodejobs.hpp"

#include <deque>
#include <sstream>

#include "oxrrec/jobs/decodedchunk.hpp"
#include "records/parallel/orderedwork.hpp"
#include "records/program/reading.hpp"
#include "records/program/settledrecords.hpp"

// The input is cut into chunks of whole records. Each thread has a worker and a handler of its own, which make lines of
// a chunk at a time; the lines are written in the order of the chunks.

namespace oxr::rec {

namespace {

constexpr std::size_t kChunkBytes = std::size_t{256} << 10;

InputOptions settled(const DecodeOptions& options, const RecordPlan& plan, FileInput& input, const Console& console) {
  InputOptions known = options.input;
  known.records = settledRecords(options.input, plan, input, console);
  return known;
}

// What finds the ends of records that show only when a record is read: the same plan, but it shows nothing.
class Silent {
 public:
  Silent(const RecordOptions& options, const Console& console) : description_(silent(options), console) {}
  const RecordPlan& plan() const { return description_.plan(); }

 private:
  static RecordOptions silent(RecordOptions options) {
    options.plan.isSilent = true;
    return options;
  }
  const Description description_;
};

class Jobs {
 public:
  Jobs(const DecodeOptions& options, const Console& console, const Description& description)
      : options_(options),
        console_(console),
        plan_(description.plan()),
        input_(openInput(options.input.path, options.input.window, console)),
        known_(settled(options, plan_, input_, console)),
        silent_(options.record, {console.input, console.output, unheard_, false}),
        cutter_(silent_.plan(), known_.records, input_, kChunkBytes, spares_),
        progress_(makeProgress(options, console, input_)),
        badFields_(options.onError, console.messages, input_.name(), [this] { progress_.wipe(); }) {
    for (unsigned i = 0; i < options.jobs; ++i)
      decoders_.emplace_back(plan_, options, known_, input_, *cutter_.start(), handlers_, console);
    output_.emplace(description.openOutput(options.output, input_, console));
  }

  // The exit code. Throws OutputError.
  int run() {
    if (options_.format == LineFormat::csv && options_.input.window.isFromStart())
      output_->write(CsvHandler(plan_).header());
    OrderedWork<Chunk, DecodedChunk> work([this] { return cutter_.next(); },
                                          [this](DecodedChunk chunk) { return take(std::move(chunk)); });
    std::vector<OrderedWork<Chunk, DecodedChunk>::Worker> workers;
    for (ChunkDecoder& decoder : decoders_)
      workers.emplace_back([this, &decoder](Chunk chunk) {
        DecodedChunk decoded = decoder.decode(chunk);
        chunk.bytes.clear();
        spares_.giveBack(std::move(chunk.bytes));
        return decoded;
      });
    work.run(std::move(workers));
    progress_.wipe();
    output_->close();
    if (code_ != kDone) return code_;
    if (!badFields_.hasAny()) return kDone;
    const InputStart& start = *cutter_.start();
    badFields_.tellSum(records_, start.bytes.empty() ? "" : hintFor(recordForm(plan_, known_.records.form), start));
    return kBadField;
  }

 private:
  // False for the chunk that ended the work.
  bool take(DecodedChunk chunk) {
    badFields_.add(chunk.faults);
    output_->write(chunk.lines->lines());
    handlers_.giveBack(std::move(chunk.lines));
    records_ += chunk.records;
    bytes_ += chunk.bytes;
    progress_.update(bytes_);
    if (chunk.code == kDone) return true;
    code_ = chunk.code;
    progress_.wipe();
    console_.messages << "oxrrec: " << chunk.ended << '\n';
    return false;
  }

  const DecodeOptions& options_;
  const Console& console_;
  const RecordPlan& plan_;
  FileInput input_;
  const InputOptions known_;
  std::ostringstream unheard_;  // what is told of the copybook was told before
  const Silent silent_;
  Spares<std::string> spares_;
  LineHandlers handlers_;
  RecordCutter cutter_;
  Progress progress_;
  BadFields badFields_;
  std::deque<ChunkDecoder> decoders_;
  std::optional<FileOutput> output_;
  std::uint64_t records_ = 0;
  std::uint64_t bytes_ = 0;
  int code_ = kDone;
};

}  // namespace

int decodeInJobs(const DecodeOptions& options, const Console& console, const Description& description) {
  if (options.check) throw ToolError("--jobs and --check do not go together: records are checked one after the other");
  if (!options.errors.empty())
    throw ToolError("--jobs and --errors do not go together: bad records are collected one after the other");
  if (!options.nest.empty()) throw ToolError("--jobs and --nest do not go together: children wait for their parent");
  return Jobs(options, console, description).run();
}

}  // namespace oxr::rec
