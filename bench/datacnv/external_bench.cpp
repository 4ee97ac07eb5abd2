#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "dataconv.hpp"
#include "harness/cobol.hpp"
#include "harness/converter.hpp"
#include "harness/numbers.hpp"

// External decimals of 5, 10 and 18 digits: the library, the plain loop that a good engineer would write for the same
// EBCDIC bytes and the same kind of object, and a COBOL run time's move of display fields (its own code page is ASCII).
namespace {

using oxr::bench::converterFor;
using oxr::bench::decimalTexts;
using oxr::bench::externalFields;
using oxr::bench::walkFields;

using Field = std::array<unsigned char, 18>;

void plainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto fields = externalFields(size, 0xF0, true);
  bool allValid = true;
  walkFields(state, [&](std::size_t number) {
    const unsigned char* const field = fields[number];
    unsigned short units[24];
    unsigned short* out = units;
    bool valid = true;
    if (field[size - 1] >> 4 == 0xD) *out++ = '-';
    for (std::size_t i = 0; i < size; ++i) {
      const unsigned digit = field[i] & 15u;
      valid &= digit <= 9 && (field[i] >> 4 == 0xF || i == size - 1);
      if (i == size - 2) *out++ = '.';
      *out++ = static_cast<unsigned short>('0' + digit);
    }
    allValid &= valid;
    *out = 0;
    PWFData value(units, DECIMAL);
    benchmark::DoNotOptimize(value);
  });
  if (!allValid) state.SkipWithError("bad field");
}
BENCHMARK(plainLoop)->Name("ExtDecToDec/plain loop")->Arg(5)->Arg(10)->Arg(18);

void read(benchmark::State& state, int ccsid, unsigned char zero, ESign sign, int scale, bool padIsUnicode = true) {
  const int size = static_cast<int>(state.range(0));
  const auto fields = externalFields(static_cast<std::size_t>(size), zero, sign != eSignNone);
  DataCnv cnv = converterFor(ccsid);
  walkFields(state, [&](std::size_t i) {
    PWFData value = cnv.ExtDecToDec(fields[i], size, scale, sign, eJustifyRight, padIsUnicode ? ' ' : 0x40,
                                    padIsUnicode, false, nullptr, nullptr);
    benchmark::DoNotOptimize(value);
  });
}
void readOverpunched(benchmark::State& state) {
  read(state, 37, 0xF0, eSignTrailingIncluded, 2);
}
void readUnsigned(benchmark::State& state) {
  read(state, 37, 0xF0, eSignNone, 0);
}
void readLatin(benchmark::State& state) {
  read(state, 819, 0x30, eSignTrailingIncluded, 2);
}
void readUtf8(benchmark::State& state) {
  read(state, 1208, 0x30, eSignTrailingIncluded, 2);
}
void readBytePad(benchmark::State& state) {
  read(state, 37, 0xF0, eSignTrailingIncluded, 2, false);
}
BENCHMARK(readOverpunched)->Name("ExtDecToDec/EBCDIC overpunch, scale 2")->Arg(5)->Arg(10)->Arg(18);
BENCHMARK(readUnsigned)->Name("ExtDecToDec/EBCDIC unsigned, no scale")->Arg(10);
BENCHMARK(readLatin)->Name("ExtDecToDec/Latin-1 overpunch, scale 2")->Arg(10);
BENCHMARK(readUtf8)->Name("ExtDecToDec/UTF-8 overpunch, scale 2")->Arg(10);
BENCHMARK(readBytePad)->Name("ExtDecToDec/EBCDIC, pad in the code page")->Arg(10);

void writePlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto texts = decimalTexts(size, 2);
  Field field{};
  bool allValid = true;
  walkFields(state, [&](std::size_t number) {
    const unsigned short* in = texts[number];
    const bool negative = *in == '-';
    in += negative;
    unsigned char digits[32];
    std::size_t count = 0;
    bool valid = true;
    for (; *in != 0; ++in) {
      if (*in == '.') continue;
      valid &= *in >= '0' && *in <= '9';
      digits[count++] = static_cast<unsigned char>(0xF0 | (*in & 15));
    }
    allValid &= valid && count <= size;
    std::size_t out = 0;
    while (out < size - count)
      field[out++] = 0xF0;
    for (std::size_t i = 0; i < count; ++i)
      field[out++] = digits[i];
    if (negative) field[size - 1] &= 0xDF;
    benchmark::DoNotOptimize(field);
  });
  if (!allValid) state.SkipWithError("bad text");
}
BENCHMARK(writePlainLoop)->Name("ExtDecFromDec/plain loop")->Arg(5)->Arg(10)->Arg(18);

void write(benchmark::State& state, int ccsid, bool padIsUnicode = true) {
  const auto texts = decimalTexts(static_cast<std::size_t>(state.range(0)), 2);
  Field field{};
  DataCnv cnv = converterFor(ccsid);
  walkFields(state, [&](std::size_t i) {
    int size = static_cast<int>(state.range(0));
    cnv.ExtDecFromDec(texts[i], field.data(), size, 2, eSignTrailingIncluded, eJustifyRight, padIsUnicode ? '0' : 0xF0,
                      padIsUnicode, false, nullptr, nullptr);
    benchmark::DoNotOptimize(field);
  });
}
void writeOverpunched(benchmark::State& state) {
  write(state, 37);
}
void writeBytePad(benchmark::State& state) {
  write(state, 37, false);
}
BENCHMARK(writeOverpunched)->Name("ExtDecFromDec/EBCDIC overpunch, scale 2")->Arg(5)->Arg(10)->Arg(18);
BENCHMARK(writeBytePad)->Name("ExtDecFromDec/EBCDIC, pad in the code page")->Arg(10);

void writeInteger(benchmark::State& state) {
  const auto values = oxr::bench::integers();
  Field field{};
  DataCnv cnv = converterFor(37);
  walkFields(state, [&](std::size_t i) {
    int size = 18;
    cnv.ExtDecFromInt64(values[i], field.data(), size, eSignTrailingIncluded, eJustifyRight, '0', true, false, nullptr,
                        nullptr);
    benchmark::DoNotOptimize(field);
  });
}
BENCHMARK(writeInteger)->Name("ExtDecFromInt64/EBCDIC overpunch, 18 digits");

void readDouble(benchmark::State& state) {
  const auto fields = externalFields(10, 0xF0, true);
  DataCnv cnv = converterFor(37);
  walkFields(state, [&](std::size_t i) {
    benchmark::DoNotOptimize(
        cnv.ExtDecToDbl(fields[i], 10, 2, eSignTrailingIncluded, eJustifyRight, ' ', true, false, nullptr, nullptr));
  });
}
BENCHMARK(readDouble)->Name("ExtDecToDbl/EBCDIC overpunch, 10 digits, scale 2");

void readInteger(benchmark::State& state) {
  const auto fields = externalFields(10, 0xF0, true);
  DataCnv cnv = converterFor(37);
  walkFields(state, [&](std::size_t i) {
    benchmark::DoNotOptimize(
        cnv.ExtDecToInt64(fields[i], 10, eSignTrailingIncluded, eJustifyRight, ' ', true, false, nullptr, nullptr));
  });
}
BENCHMARK(readInteger)->Name("ExtDecToInt64/EBCDIC overpunch, 10 digits");

void readText(benchmark::State& state) {
  const auto fields = externalFields(10, 0xF0, true);
  DataCnv cnv = converterFor(37);
  walkFields(state, [&](std::size_t i) {
    KelWstring text =
        cnv.ExtDecToStr(fields[i], 10, eSignTrailingIncluded, eJustifyRight, ' ', true, false, nullptr, nullptr);
    benchmark::DoNotOptimize(text);
  });
}
BENCHMARK(readText)->Name("ExtDecToStr/EBCDIC overpunch, 10 digits");

#ifdef OXR_HAVE_LIBCOB
// From one display field to another, as an overpunched sign and a scale of 2 become those of the target.
void cobolMove(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto digits = static_cast<unsigned short>(size);
  const auto fields = externalFields(size, 0x30, true);
  Field field{}, target{};
  oxr::bench::CobolMove move({COB_TYPE_NUMERIC_DISPLAY, digits, 2, field.data(), size},
                             {COB_TYPE_NUMERIC_DISPLAY, digits, 1, target.data(), size});
  walkFields(state, [&](std::size_t i) {
    std::copy_n(fields[i], size, field.data());
    move();
    benchmark::DoNotOptimize(target);
  });
}
BENCHMARK(cobolMove)->Name("ExtDecToDec/COBOL move of display to display")->Arg(5)->Arg(10)->Arg(18);

// To and from text like the library's: a picture of -9(8).99 has the sign and the point of "-12345678.90".
void cobolEdit(benchmark::State& state, bool isRead) {
  constexpr cob_pic_symbol kPicture[] = {{'-', 1}, {'9', 8}, {'.', 1}, {'9', 2}, {0, 0}};
  const auto fields = externalFields(10, 0x30, true);
  Field display{};
  std::array<unsigned char, 12> edited{};
  const oxr::bench::CobolMove::Field displayField{COB_TYPE_NUMERIC_DISPLAY, 10, 2, display.data(), 10};
  const oxr::bench::CobolMove::Field editedField{COB_TYPE_NUMERIC_EDITED, 10, 2, edited.data(), 12, kPicture};
  oxr::bench::CobolMove read(displayField, editedField), write(editedField, displayField);
  std::vector<std::array<unsigned char, 12>> texts;
  for (std::size_t i = 0; i < oxr::bench::kFields; ++i) {
    std::copy_n(fields[i], 10, display.data());
    read();
    texts.push_back(edited);
  }
  walkFields(state, [&](std::size_t i) {
    if (isRead) {
      std::copy_n(fields[i], 10, display.data());
      read();
    } else {
      edited = texts[i];
      write();
    }
    benchmark::DoNotOptimize(display);
    benchmark::DoNotOptimize(edited);
  });
}
BENCHMARK_CAPTURE(cobolEdit, read, true)->Name("ExtDecToDec/COBOL move of display to text/10");
BENCHMARK_CAPTURE(cobolEdit, write, false)->Name("ExtDecFromDec/COBOL move of text to display/10");
#endif

}  // namespace
