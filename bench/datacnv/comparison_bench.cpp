#include <benchmark/benchmark.h>

#include "dataconv.hpp"
#include "kelwstringconvertor.hpp"

// Decimals compared: the operator, and what defines it, a converter that makes the canonical text of both.
namespace {

constexpr const char* kPairs[][2] = {
    {"5", "5.0"}, {"-1234567.89", "-1234567.890"}, {"12345678901234567890.12", "012345678901234567890.12"}};

PWFData decimalOf(const char* text) {
  return PWFData(oxr::fromUtf8(text).characters(), DECIMAL);
}

void compareDefined(benchmark::State& state) {
  const PWFData left = decimalOf(kPairs[state.range(0)][0]), right = decimalOf(kPairs[state.range(0)][1]);
  for (auto _ : state) {
    DataCnv cnv(1200, eEndianLittle, eEndianLittle, eFloatIeeeLittle, 53, nullptr, false, nullptr, 0, true, 12, false,
                eMessageStandardDefault, nullptr);
    const PWFData first = cnv.StrFromDec(left.getDecimalValue()), second = cnv.StrFromDec(right.getDecimalValue());
    bool areEqual = first.getPWFStringValue() == second.getPWFStringValue();
    benchmark::DoNotOptimize(areEqual);
  }
  state.SetLabel(kPairs[state.range(0)][1]);
}
BENCHMARK(compareDefined)->Name("Decimals ==/definition")->DenseRange(0, 2);

void compareLibrary(benchmark::State& state) {
  PWFData left = decimalOf(kPairs[state.range(0)][0]), right = decimalOf(kPairs[state.range(0)][1]);
  for (auto _ : state) {
    benchmark::DoNotOptimize(left);
    benchmark::DoNotOptimize(right);
    bool areEqual = left == right;
    benchmark::DoNotOptimize(areEqual);
  }
  state.SetLabel(kPairs[state.range(0)][1]);
}
BENCHMARK(compareLibrary)->Name("Decimals ==/library")->DenseRange(0, 2);

}  // namespace
