#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>

#include "dataconv.hpp"
#include "harness/converter.hpp"

// Transaction-log fields of 4, 8 and 32 bytes: the library, and the plain loop that a good engineer would write for the
// same bytes and the same kind of text.
namespace {

using oxr::bench::converterFor;

using Field = std::array<unsigned char, 32>;
using Text = KelBufferedWstring<16u>;

constexpr Field kField = [] {
  Field field{};
  for (std::size_t i = 0; i < field.size(); ++i)
    field[i] = static_cast<unsigned char>(i % 5 << 4 | (i + 3) % 10);
  return field;
}();

void decimalPlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  Field field = kField;
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    Text text;
    unsigned short* out = text.resizeForOverwrite(static_cast<unsigned>(2 * size));
    bool bad = false;
    for (std::size_t i = 0; i < size; ++i) {
      bad |= field[i] >> 4 > 9 || (field[i] & 15) > 9;
      *out++ = static_cast<unsigned short>('0' + (field[i] >> 4));
      *out++ = static_cast<unsigned short>('0' + (field[i] & 15));
    }
    benchmark::DoNotOptimize(bad);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(decimalPlainLoop)->Name("TLOGPckdDecToDec/plain loop")->Arg(4)->Arg(8)->Arg(32);

void decimalRead(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  Field field = kField;
  DataCnv cnv = converterFor(819);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    Text text;
    cnv.TLOGPckdDecToDec(field.data(), text, size, eEndianBig);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(decimalRead)->Name("TLOGPckdDecToDec/library")->Arg(4)->Arg(8)->Arg(32);

void stringPlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  Field field = kField;
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    Text text;
    unsigned short* out = text.resizeForOverwrite(static_cast<unsigned>(2 * size));
    for (std::size_t i = 0; i < size; ++i) {
      *out++ = static_cast<unsigned char>("0123456789ABCDEF"[field[i] >> 4]);
      *out++ = static_cast<unsigned char>("0123456789ABCDEF"[field[i] & 15]);
    }
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(stringPlainLoop)->Name("TLOGPckdStrToStr/plain loop")->Arg(4)->Arg(8)->Arg(32);

void stringRead(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  Field field = kField;
  DataCnv cnv = converterFor(819);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    Text text;
    cnv.TLOGPckdStrToStr(field.data(), text, size, eEndianBig);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(stringRead)->Name("TLOGPckdStrToStr/library")->Arg(4)->Arg(8)->Arg(32);

// A value of as many digits as fill the field.
PWFData valueOf(int size, ELogicalType type) {
  std::array<unsigned short, 65> text{};
  for (std::size_t i = 0; i < 2 * static_cast<std::size_t>(size); ++i)
    text[i] = static_cast<unsigned short>('1' + i % 9);
  return PWFData(text.data(), type);
}

void decimalWritePlainLoop(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  PWFData value = valueOf(size, DECIMAL);
  Field field{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    const unsigned short* text = value.getDecimalValue();
    for (std::size_t i = 0; i < static_cast<std::size_t>(size); ++i, text += 2)
      field[i] = static_cast<unsigned char>((text[0] & 15) << 4 | (text[1] & 15));
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(decimalWritePlainLoop)->Name("TLOGPWFDataToPckdDecimal/plain loop")->Arg(4)->Arg(8)->Arg(32);

void decimalWrite(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  PWFData value = valueOf(size, DECIMAL);
  Field field{};
  DataCnv cnv = converterFor(819);
  int written = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    cnv.TLOGPWFDataToPckdDecimal(value, field.data(), size, eEndianBig, false, written);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(decimalWrite)->Name("TLOGPWFDataToPckdDecimal/library")->Arg(4)->Arg(8)->Arg(32);

void stringWrite(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  PWFData value = valueOf(size, STRING);
  Field field{};
  DataCnv cnv = converterFor(819);
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    cnv.TLOGPWFDataToPckdStr(value, field.data(), size, eEndianBig);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(stringWrite)->Name("TLOGPWFDataToPckdStr/library")->Arg(4)->Arg(8)->Arg(32);

}  // namespace
