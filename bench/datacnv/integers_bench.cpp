#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

#include "dataconv.hpp"
#include "harness/converter.hpp"

// Binary integers of 2, 4 and 8 bytes, most significant first, read and written: the library, and the loop over the
// bytes that stands in most programs.
namespace {

using oxr::bench::converterFor;

using Field = std::array<unsigned char, 8>;

constexpr Field kField = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};

void integerPlainLoop(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  Field field = kField;
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    std::uint64_t value = (field[0] & 0x80) != 0 ? ~std::uint64_t{0} : 0;
    for (int i = 0; i < size; ++i)
      value = value << 8 | field[static_cast<std::size_t>(i)];
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(integerPlainLoop)->Name("IntToInt64/plain loop")->Arg(2)->Arg(4)->Arg(8);

template <class Read>
void readFields(benchmark::State& state, Read read) {
  const int size = static_cast<int>(state.range(0));
  Field field = kField;
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    auto value = read(cnv, field.data(), size);
    benchmark::DoNotOptimize(value);
  }
}
void integerRead64(benchmark::State& state) {
  readFields(state, [](DataCnv& cnv, const unsigned char* field, int size) {
    return cnv.IntToInt64(field, size, eSignLeadingIncluded);
  });
}
BENCHMARK(integerRead64)->Name("IntToInt64/library")->Arg(2)->Arg(4)->Arg(8);

void integerRead32(benchmark::State& state) {
  readFields(state,
             [](DataCnv& cnv, const unsigned char* field, int size) { return cnv.IntToInt32(field, size, eSignNone); });
}
BENCHMARK(integerRead32)->Name("IntToInt32/library")->Arg(2)->Arg(4);

void integerReadUnsigned(benchmark::State& state) {
  readFields(state, [](DataCnv& cnv, const unsigned char* field, int size) { return cnv.UIntToUInt64(field, size); });
}
BENCHMARK(integerReadUnsigned)->Name("UIntToUInt64/library")->Arg(8);

// With the range test that a field needs; in other regards the least that does it.
void integerWritePlainLoop(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  Field field{};
  std::int64_t value = 0x1234;
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    const int unused = 64 - 8 * size;
    if (value << unused >> unused != value) state.SkipWithError("too long");
    for (int i = size; i-- != 0;)
      field[static_cast<std::size_t>(i)] = static_cast<unsigned char>(value >> 8 * (size - 1 - i));
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(integerWritePlainLoop)->Name("IntFromInt64/plain loop")->Arg(2)->Arg(4)->Arg(8);

void integerWrite64(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  Field field{};
  PWFInt64 value = 0x1234;
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    cnv.IntFromInt64(value, field.data(), size, eSignLeadingIncluded);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(integerWrite64)->Name("IntFromInt64/library")->Arg(2)->Arg(4)->Arg(8);

void integerWriteDouble(benchmark::State& state) {
  Field field{};
  double value = 12.5;
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    cnv.IntFromDbl(value, field.data(), 4, eSignLeadingIncluded, static_cast<int>(state.range(0)));
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(integerWriteDouble)->Name("IntFromDbl/library (scale)")->Arg(0)->Arg(2);

void swapEnds(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  std::array<unsigned char, 64> source{}, target;
  for (auto _ : state) {
    benchmark::DoNotOptimize(source);
    DataCnv::SwapEnds(target.data(), source.data(), size);
    benchmark::DoNotOptimize(target);
  }
}
BENCHMARK(swapEnds)->Name("SwapEnds/library")->Arg(8)->Arg(64);

}  // namespace
