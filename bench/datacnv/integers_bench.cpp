#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

#include "dataconv.hpp"

// Binary integers of 2, 4 and 8 bytes, most significant first: the library, and the loop over the bytes that stands in
// most programs.
namespace {

using Field = std::array<unsigned char, 8>;

constexpr Field kField = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};

DataCnv converter() {
  return DataCnv(37, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
                 eMessageStandardDefault, nullptr);
}

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
  DataCnv cnv = converter();
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
