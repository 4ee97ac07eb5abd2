// Encoding JSON lines, the way back of BM_DecodeToJsonLines: bytes are those of the records, so that the rates compare.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "oxrrec/encode/encode.hpp"

namespace {

using namespace oxr::rec;

std::string contentOf(const char* name) {
  std::ifstream file(std::string(OXR_SAMPLES_DIR) + '/' + name, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

void BM_EncodeFromJsonLines(benchmark::State& state) {
  constexpr int kTimes = 2000;
  const std::string lines = contentOf("customers.expected.jsonl");
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> input(std::tmpfile(), std::fclose);
  for (int i = 0; i < kTimes; ++i)
    std::fwrite(lines.data(), 1, lines.size(), input.get());
  std::fflush(input.get());
  EncodeOptions options;
  options.record.copybook.path = std::string(OXR_SAMPLES_DIR) + "/customers.cob";
  options.input = std::string("-");
  options.output = "/dev/null";
  options.records.form.framing = Framing::rdw;
  std::ostringstream messages;
  for (auto _ : state) {
    std::rewind(input.get());
    if (encode(options, {::fileno(input.get()), -1, messages, false}) != kDone)
      state.SkipWithError(messages.str().c_str());
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * kTimes * contentOf("customers.rdw.bin").size()));
}
BENCHMARK(BM_EncodeFromJsonLines)->Unit(benchmark::kMillisecond);

}  // namespace
