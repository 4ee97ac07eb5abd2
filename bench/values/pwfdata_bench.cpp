#include "pwfdata.hpp"

#include <benchmark/benchmark.h>

#include <type_traits>

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

template <class Number>
void pwfDataNumber(benchmark::State& state) {
  Number number = 12;
  for (auto _ : state) {
    benchmark::DoNotOptimize(number);
    if constexpr (std::is_same_v<Number, double>) {
      PWFData value(number);
      benchmark::DoNotOptimize(value);
    } else {
      PWFData value(number, false);
      benchmark::DoNotOptimize(value);
    }
  }
}
BENCHMARK(pwfDataNumber<PWFInt64>)->Name("PWFData/PWFInt64, made and dropped (at most 3 ns)");
BENCHMARK(pwfDataNumber<double>)->Name("PWFData/double, made and dropped (at most 3 ns)");

}  // namespace
