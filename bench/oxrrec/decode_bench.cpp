// Decoding a record file: the whole program, and the worker without the JSON lines. Bytes are those of the input.

#include <benchmark/benchmark.h>

#include <cstdio>
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
