#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>

#include "dataconv.hpp"
#include "harness/cobol.hpp"
#include "harness/converter.hpp"
#include "harness/packedfield.hpp"

// Packed fields of 3, 8 and 16 bytes: the library, the plain loop that a good engineer would write for the same bytes
// and the same kind of object, and a COBOL run time's move to display.
namespace {

using oxr::bench::converterFor;
using oxr::bench::packedFieldOf;
using Field = oxr::bench::PackedField;

// What a PWFData holds, with its text open to a loop.
struct PlainValue {
  int type = DECIMAL;
  bool isNull = false;
  KelBufferedWstring<16u> text;
  unsigned char area[48] = {};
};

void packedPlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  Field field = packedFieldOf(size);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    PlainValue value;
    unsigned short* out = value.text.resizeForOverwrite(static_cast<unsigned>(2 * size - 1));
    for (std::size_t i = 0; i + 1 < size; ++i) {
      *out++ = static_cast<unsigned short>('0' + (field[i] >> 4));
      *out++ = static_cast<unsigned short>('0' + (field[i] & 15));
    }
    *out = static_cast<unsigned short>('0' + (field[size - 1] >> 4));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(packedPlainLoop)->Name("PckdDecToDec/plain loop")->Arg(3)->Arg(8)->Arg(16);

void packedRead(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  const int scale = static_cast<int>(state.range(1));
  Field field = packedFieldOf(static_cast<std::size_t>(size));
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    PWFData value = cnv.PckdDecToDec(field.data(), size, scale, eSignLeadingIncluded);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(packedRead)->Name("PckdDecToDec/library (size, scale)")->ArgsProduct({{3, 8, 16}, {0, 2}});

// Texts of as many digits as the field holds, with two after the point.
std::array<unsigned short, 34> textOf(std::size_t size) {
  std::array<unsigned short, 34> text{};
  const std::size_t digits = 2 * size - 1;
  for (std::size_t i = 0; i < digits; ++i)
    text[i] = static_cast<unsigned short>('1' + i % 9);
  text[digits] = text[digits - 1];
  text[digits - 1] = text[digits - 2];
  text[digits - 2] = '.';
  return text;
}

void packedWritePlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  auto text = textOf(size);
  Field field{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    unsigned short digits[34];
    std::size_t count = 0;
    for (std::size_t i = 0; text[i] != 0; ++i)
      if (text[i] != '.') digits[count++] = text[i];
    std::size_t byte = size;
    field[--byte] = static_cast<unsigned char>((digits[--count] & 15) << 4 | 0x0C);
    while (count >= 2) {
      field[--byte] = static_cast<unsigned char>((digits[count - 2] & 15) << 4 | (digits[count - 1] & 15));
      count -= 2;
    }
    if (count != 0) field[--byte] = digits[0] & 15;
    while (byte != 0)
      field[--byte] = 0;
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(packedWritePlainLoop)->Name("PckdDecFromDec/plain loop")->Arg(3)->Arg(8)->Arg(16);

void packedWrite(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  auto text = textOf(static_cast<std::size_t>(size));
  Field field{};
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    cnv.PckdDecFromDec(text.data(), field.data(), size, 2, eSignLeadingIncluded);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(packedWrite)->Name("PckdDecFromDec/library")->Arg(3)->Arg(8)->Arg(16);

#ifdef OXR_HAVE_LIBCOB
void packedCobol(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto digits = static_cast<unsigned short>(2 * size - 1);
  Field field = packedFieldOf(size);
  unsigned char display[32] = {};
  oxr::bench::CobolMove move({COB_TYPE_NUMERIC_PACKED, digits, 2, field.data(), size},
                             {COB_TYPE_NUMERIC_DISPLAY, digits, 2, display, digits});
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    move();
    benchmark::DoNotOptimize(display);
  }
}
BENCHMARK(packedCobol)->Name("PckdDecToDec/COBOL run time, move to display")->Arg(3)->Arg(8)->Arg(16);
#endif

}  // namespace
