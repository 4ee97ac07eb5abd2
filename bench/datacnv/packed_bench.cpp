#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>

#include "dataconv.hpp"
#include "harness/cobol.hpp"
#include "harness/converter.hpp"
#include "harness/numbers.hpp"

// Packed fields of 3, 8 and 16 bytes: the library, the plain loop that a good engineer would write for the same bytes
// and the same kind of object, and a COBOL run time's move to display.
namespace {

using oxr::bench::converterFor;
using oxr::bench::decimalTexts;
using oxr::bench::packedFields;
using oxr::bench::walkFields;

// What a PWFData holds, with its text open to a loop.
struct PlainValue {
  int type = DECIMAL;
  bool isNull = false;
  KelBufferedWstring<16u> text;
  unsigned char area[48] = {};
};

void packedPlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto fields = packedFields(size);
  walkFields(state, [&](std::size_t i) {
    const unsigned char* const field = fields[i];
    PlainValue value;
    const unsigned minus = (field[size - 1] & 15) == 0xD;
    unsigned short* out = value.text.resizeForOverwrite(static_cast<unsigned>(2 * size - 1) + minus);
    if (minus) *out++ = '-';
    for (std::size_t byte = 0; byte + 1 < size; ++byte) {
      *out++ = static_cast<unsigned short>('0' + (field[byte] >> 4));
      *out++ = static_cast<unsigned short>('0' + (field[byte] & 15));
    }
    *out = static_cast<unsigned short>('0' + (field[size - 1] >> 4));
    benchmark::DoNotOptimize(value);
  });
}
BENCHMARK(packedPlainLoop)->Name("PckdDecToDec/plain loop")->Arg(3)->Arg(8)->Arg(16);

void packedRead(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  const int scale = static_cast<int>(state.range(1));
  const auto fields = packedFields(static_cast<std::size_t>(size));
  DataCnv cnv = converterFor();
  walkFields(state, [&](std::size_t i) {
    PWFData value = cnv.PckdDecToDec(fields[i], size, scale, eSignLeadingIncluded);
    benchmark::DoNotOptimize(value);
  });
}
BENCHMARK(packedRead)->Name("PckdDecToDec/library (size, scale)")->ArgsProduct({{3, 8, 16}, {0, 2}});

void packedWritePlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto texts = decimalTexts(2 * size - 1, static_cast<std::size_t>(state.range(1)));
  unsigned char field[16];
  walkFields(state, [&](std::size_t i) {
    const unsigned short* text = texts[i];
    const bool minus = *text == '-';
    text += minus;
    unsigned short digits[34];
    std::size_t count = 0;
    for (; *text != 0; ++text)
      if (*text != '.') digits[count++] = *text;
    std::size_t byte = size;
    field[--byte] = static_cast<unsigned char>((digits[--count] & 15) << 4 | (minus ? 0x0D : 0x0C));
    while (count >= 2) {
      field[--byte] = static_cast<unsigned char>((digits[count - 2] & 15) << 4 | (digits[count - 1] & 15));
      count -= 2;
    }
    if (count != 0) field[--byte] = digits[0] & 15;
    while (byte != 0)
      field[--byte] = 0;
    benchmark::DoNotOptimize(field);
  });
}
BENCHMARK(packedWritePlainLoop)->Name("PckdDecFromDec/plain loop (size, scale)")->ArgsProduct({{3, 8, 16}, {0, 2}});

void packedWrite(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  const int scale = static_cast<int>(state.range(1));
  const auto texts = decimalTexts(2 * static_cast<std::size_t>(size) - 1, static_cast<std::size_t>(scale));
  unsigned char field[16];
  DataCnv cnv = converterFor();
  walkFields(state, [&](std::size_t i) {
    cnv.PckdDecFromDec(texts[i], field, size, scale, eSignLeadingIncluded);
    benchmark::DoNotOptimize(field);
  });
}
BENCHMARK(packedWrite)->Name("PckdDecFromDec/library (size, scale)")->ArgsProduct({{3, 8, 16}, {0, 2}});

#ifdef OXR_HAVE_LIBCOB
void packedCobol(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto digits = static_cast<unsigned short>(2 * size - 1);
  const auto fields = packedFields(size);
  unsigned char field[16], display[32] = {};
  oxr::bench::CobolMove move({COB_TYPE_NUMERIC_PACKED, digits, 2, field, size},
                             {COB_TYPE_NUMERIC_DISPLAY, digits, 2, display, digits});
  walkFields(state, [&](std::size_t i) {
    std::copy_n(fields[i], size, field);
    move();
    benchmark::DoNotOptimize(display);
  });
}
BENCHMARK(packedCobol)->Name("PckdDecToDec/COBOL run time, move to display")->Arg(3)->Arg(8)->Arg(16);
#endif

}  // namespace
