#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "dataconv.hpp"
#include "harness/converter.hpp"

// Float fields, most significant byte first: the library, and the arithmetic that a good engineer would write for the
// same bytes: the fraction as an integer, times a power of two.
namespace {

using oxr::bench::converterFor;

using Field = std::array<unsigned char, 8>;

constexpr Field kHundred = {0x42, 0x64, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC};

void hexReadPlain(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  Field field = kHundred;
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    std::uint64_t fraction = 0;
    for (std::size_t i = 1; i < size; ++i)
      fraction = fraction << 8 | field[i];
    const int exponent = 4 * ((field[0] & 0x7F) - 64) - static_cast<int>(8 * (size - 1));
    const double magnitude = std::ldexp(static_cast<double>(fraction), exponent);
    double value = (field[0] & 0x80) != 0 ? -magnitude : magnitude;
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(hexReadPlain)->Name("FltToDbl/hexadecimal, plain arithmetic")->Arg(4)->Arg(8);

void floatRead(benchmark::State& state, EFloatFmt format) {
  const int size = static_cast<int>(state.range(0));
  Field field = kHundred;
  DataCnv cnv = converterFor(37, format);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    double value = cnv.FltToDbl(field.data(), size);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK_CAPTURE(floatRead, hexadecimal, eFloatHexadecimal)->Name("FltToDbl/hexadecimal, library")->Arg(4)->Arg(8);
BENCHMARK_CAPTURE(floatRead, ieee, eFloatIeeeBig)->Name("FltToDbl/IEEE, library")->Arg(4)->Arg(8);

void hexWritePlain(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  Field field{};
  double value = 100.0703125;
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    int exponent = 0;
    double fraction = std::frexp(std::fabs(value), &exponent);
    const int power = (exponent + 256 + 3) / 4;
    fraction = std::ldexp(fraction, exponent + 256 - 4 * power + static_cast<int>(8 * (size - 1)));
    auto digits = static_cast<std::uint64_t>(fraction);
    for (std::size_t i = size; --i != 0; digits >>= 8)
      field[i] = static_cast<unsigned char>(digits);
    field[0] = static_cast<unsigned char>(power | (value < 0 ? 0x80 : 0));
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(hexWritePlain)->Name("FltFromDbl/hexadecimal, plain arithmetic")->Arg(4)->Arg(8);

void floatWrite(benchmark::State& state, EFloatFmt format) {
  const int size = static_cast<int>(state.range(0));
  Field field{};
  double value = 100.0703125;
  DataCnv cnv = converterFor(37, format);
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    cnv.FltFromDbl(value, field.data(), size);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK_CAPTURE(floatWrite, hexadecimal, eFloatHexadecimal)->Name("FltFromDbl/hexadecimal, library")->Arg(4)->Arg(8);
BENCHMARK_CAPTURE(floatWrite, ieee, eFloatIeeeBig)->Name("FltFromDbl/IEEE, library")->Arg(4)->Arg(8);

}  // namespace
