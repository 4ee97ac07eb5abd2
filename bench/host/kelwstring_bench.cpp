#include "kelwstring.hpp"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

// A value's text goes into a string with a buffer of 16: short ones stay inside, longer ones take a block.
void assignToNewString(benchmark::State& state) {
  const std::vector<unsigned short> units(static_cast<std::size_t>(state.range(0)), u'7');
  for (auto _ : state) {
    const KelBufferedWstring<16u> text(units.data(), static_cast<unsigned>(units.size()));
    benchmark::DoNotOptimize(text.characters());
  }
}
BENCHMARK(assignToNewString)->Arg(1)->Arg(5)->Arg(16)->Arg(20);

void assignToUsedString(benchmark::State& state) {
  const std::vector<unsigned short> units(static_cast<std::size_t>(state.range(0)), u'7');
  KelBufferedWstring<16u> text;
  for (auto _ : state) {
    text.assignInternal(units.data(), static_cast<unsigned>(units.size()), 0);
    benchmark::DoNotOptimize(text.characters());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(assignToUsedString)->Arg(5)->Arg(16)->Arg(20);

void buildInPlace(benchmark::State& state) {
  const auto length = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    KelBufferedWstring<16u> text;
    unsigned short* const units = text.resizeForOverwrite(length);
    for (unsigned i = 0; i < length; ++i)
      units[i] = u'7';
    benchmark::DoNotOptimize(text.characters());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(buildInPlace)->Arg(16)->Arg(20);

void copyString(benchmark::State& state) {
  const KelBufferedWstring<16u> text(std::vector<unsigned short>(static_cast<std::size_t>(state.range(0))).data(),
                                     static_cast<unsigned>(state.range(0)));
  for (auto _ : state) {
    const KelBufferedWstring<16u> copy(text);
    benchmark::DoNotOptimize(copy.characters());
  }
}
BENCHMARK(copyString)->Arg(16)->Arg(20);

}  // namespace
