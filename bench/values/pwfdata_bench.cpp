#include "pwfdata.hpp"

#include <benchmark/benchmark.h>

namespace {

const unsigned short kSixteen[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9', '0', '1', '2', '3', '4', '5', '6'};

void pwfDataEmpty(benchmark::State& state) {
  for (auto _ : state) {
    PWFData value(NOTHING);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(pwfDataEmpty)->Name("PWFData/empty, made and dropped (at most 3 ns)");

void pwfDataText16(benchmark::State& state) {
  for (auto _ : state) {
    PWFData value(kSixteen, 16);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(pwfDataText16)->Name("PWFData/16 units, made and dropped (at most 7 ns)");

}  // namespace
