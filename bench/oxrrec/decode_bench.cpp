// Decoding a record file: the whole program, and the worker without the JSON lines. Bytes are those of the input.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "oxrrec/decode.hpp"

namespace {

using namespace oxr::rec;

std::string sample(const std::string& name) {
  return std::string(OXR_SAMPLES_DIR) + '/' + name;
}

// The sample's records many times over, as one input.
const std::string& manyRecords() {
  static const std::string records = [] {
    std::ifstream file(sample("customers.rdw.bin"), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    std::string many;
    for (int i = 0; i < 2000; ++i)
      many += content.str();
    return many;
  }();
  return records;
}

constexpr RecordWorker::Settings kSettings{{.framing = Framing::rdw}, false};

void BM_DecodeToJsonLines(benchmark::State& state) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> input(std::tmpfile(), std::fclose);
  std::fwrite(manyRecords().data(), 1, manyRecords().size(), input.get());
  std::fflush(input.get());
  DecodeOptions options;
  options.record.copybook.path = sample("customers.cob");
  options.input.path = kStandardStream;
  options.output = "/dev/null";
  options.input.records = kSettings;
  std::ostringstream messages;
  for (auto _ : state) {
    std::rewind(input.get());
    if (decode(options, {::fileno(input.get()), -1, messages, false}) != kDone)
      state.SkipWithError(messages.str().c_str());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * manyRecords().size()));
}
BENCHMARK(BM_DecodeToJsonLines)->Unit(benchmark::kMillisecond);

// Ten fields a record, half of them packed, half in a digit a byte; all good, or all bad in ways that files have. What
// a bad one costs more than a good one is the difference of the two rows, a field; none is printed after the first 20.
void BM_DecodeBadFields(benchmark::State& state) {
  constexpr int kFields = 5;
  constexpr int kRecords = 10'000;
  const bool isBad = state.range(0) != 0;
  const std::string packed = isBad ? std::string("\x12\x4A\x0C", 3) : std::string("\x12\x34\x0C", 3);
  const std::string external = isBad ? "\xF1\xD6\xF3\xF4" : "\xF1\xF2\xF3\xF4";
  std::string record;
  for (int i = 0; i < kFields; ++i)
    record += packed + external;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> input(std::tmpfile(), std::fclose);
  for (int i = 0; i < kRecords; ++i)
    std::fwrite(record.data(), 1, record.size(), input.get());
  std::fflush(input.get());
  const std::string copybook =
      (std::filesystem::temp_directory_path() / ("oxr_bench." + std::to_string(::getpid()))).string();
  std::ofstream(copybook) << "       01 R. 05 G OCCURS 5. 10 P PIC S9(5) COMP-3. 10 D PIC 9(4).\n";
  DecodeOptions options;
  options.record.copybook.path = copybook;
  options.input.path = kStandardStream;
  options.output = "/dev/null";
  options.onError = OnError::null;
  for (auto _ : state) {
    std::rewind(input.get());
    std::ostringstream messages;
    if (decode(options, {::fileno(input.get()), -1, messages, false}) != (isBad ? kBadField : kDone))
      state.SkipWithError(messages.str().c_str());
  }
  state.SetItemsProcessed(state.iterations() * kRecords * 2 * kFields);
  std::remove(copybook.c_str());
}
BENCHMARK(BM_DecodeBadFields)->Arg(0)->Arg(1)->ArgName("bad")->Unit(benchmark::kMillisecond);

class IgnoringHandler : public RecordHandler {
 public:
  using RecordHandler::endElement;
  using RecordHandler::startElement;
  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override {}
  void endMessage(const WorkerInfoPtr&) override {}
  void startElement(const unsigned short*, unsigned short, const WorkerInfoPtr&, int, int) override {}
  void endElement(const unsigned short*, const WorkerInfoPtr&) override {}
  void data(const PWFData& value, const WorkerInfoPtr&, int, int) override { benchmark::DoNotOptimize(&value); }
};

class Stop : public FaultListener {
 public:
  bool goOnAfter(const FieldFault&) override { return false; }
};

void BM_WorkerAlone(benchmark::State& state) {
  const Layout layout = readCopybookFile(sample("customers.cob"));
  const RecordPlan plan(layout, {});
  Stop listener;
  IgnoringHandler handler;
  const auto worker = RecordWorker::make(plan, kSettings, listener);
  worker->initializeParse(-1, nullptr, -1);
  worker->setFIHandler(&handler, false);
  ReadOnlyByteBuffer buffer;
  buffer.create(manyRecords().data(), static_cast<int>(manyRecords().size()));
  for (auto _ : state)
    worker->parse(&buffer, nullptr, 0, -1);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * manyRecords().size()));
}
BENCHMARK(BM_WorkerAlone)->Unit(benchmark::kMillisecond);

}  // namespace
