#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>

#include "dataconv.hpp"
#include "harness/cobol.hpp"
#include "harness/converter.hpp"

// External decimals of 5, 10 and 18 digits: the library, the plain loop that a good engineer would write for the same
// EBCDIC bytes and the same kind of object, and a COBOL run time's move of display fields (its own code page is ASCII).
namespace {

using oxr::bench::converterFor;

using Field = std::array<unsigned char, 18>;

Field fieldOf(std::size_t size, unsigned char zero) {
  Field field{};
  for (std::size_t i = 0; i < size; ++i)
    field[i] = static_cast<unsigned char>(zero + (i + 1) % 10);
  return field;
}

void plainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  Field field = fieldOf(size, 0xF0);
  field[size - 1] = static_cast<unsigned char>(field[size - 1] & 0xDF);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
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
    if (!valid) state.SkipWithError("bad field");
    *out = 0;
    PWFData value(units, DECIMAL);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(plainLoop)->Name("ExtDecToDec/plain loop")->Arg(5)->Arg(10)->Arg(18);

void read(benchmark::State& state, int ccsid, unsigned char zero, ESign sign, int scale, bool padIsUnicode = true) {
  const int size = static_cast<int>(state.range(0));
  Field field = fieldOf(static_cast<std::size_t>(size), zero);
  DataCnv cnv = converterFor(ccsid);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    PWFData value = cnv.ExtDecToDec(field.data(), size, scale, sign, eJustifyRight, padIsUnicode ? ' ' : 0x40,
                                    padIsUnicode, false, nullptr, nullptr);
    benchmark::DoNotOptimize(value);
  }
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

// A text of `size` digits, two of them after the point.
std::array<unsigned short, 24> textOf(std::size_t size) {
  std::array<unsigned short, 24> text{'-'};
  for (std::size_t i = 0, out = 1; i < size; ++i) {
    if (i == size - 2) text[out++] = '.';
    text[out++] = static_cast<unsigned short>('0' + (i + 1) % 10);
  }
  return text;
}

void writePlainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  auto text = textOf(size);
  Field field{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    const unsigned short* in = text.data();
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
    if (!valid || count > size) state.SkipWithError("bad text");
    std::size_t out = 0;
    while (out < size - count)
      field[out++] = 0xF0;
    for (std::size_t i = 0; i < count; ++i)
      field[out++] = digits[i];
    if (negative) field[size - 1] &= 0xDF;
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(writePlainLoop)->Name("ExtDecFromDec/plain loop")->Arg(5)->Arg(10)->Arg(18);

void write(benchmark::State& state, int ccsid, bool padIsUnicode = true) {
  int size = static_cast<int>(state.range(0));
  auto text = textOf(static_cast<std::size_t>(size));
  Field field{};
  DataCnv cnv = converterFor(ccsid);
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    cnv.ExtDecFromDec(text.data(), field.data(), size, 2, eSignTrailingIncluded, eJustifyRight,
                      padIsUnicode ? '0' : 0xF0, padIsUnicode, false, nullptr, nullptr);
    benchmark::DoNotOptimize(field);
  }
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
  int size = 10;
  long value = -1234567890;
  Field field{};
  DataCnv cnv = converterFor(37);
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    cnv.ExtDecFromInt64(value, field.data(), size, eSignTrailingIncluded, eJustifyRight, '0', true, false, nullptr,
                        nullptr);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(writeInteger)->Name("ExtDecFromInt64/EBCDIC overpunch, 10 digits");

void readDouble(benchmark::State& state) {
  Field field = fieldOf(10, 0xF0);
  DataCnv cnv = converterFor(37);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    benchmark::DoNotOptimize(
        cnv.ExtDecToDbl(field.data(), 10, 2, eSignTrailingIncluded, eJustifyRight, ' ', true, false, nullptr, nullptr));
  }
}
BENCHMARK(readDouble)->Name("ExtDecToDbl/EBCDIC overpunch, 10 digits, scale 2");

void readInteger(benchmark::State& state) {
  Field field = fieldOf(10, 0xF0);
  DataCnv cnv = converterFor(37);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    benchmark::DoNotOptimize(
        cnv.ExtDecToInt64(field.data(), 10, eSignTrailingIncluded, eJustifyRight, ' ', true, false, nullptr, nullptr));
  }
}
BENCHMARK(readInteger)->Name("ExtDecToInt64/EBCDIC overpunch, 10 digits");

void readText(benchmark::State& state) {
  Field field = fieldOf(10, 0xF0);
  DataCnv cnv = converterFor(37);
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    KelWstring text =
        cnv.ExtDecToStr(field.data(), 10, eSignTrailingIncluded, eJustifyRight, ' ', true, false, nullptr, nullptr);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(readText)->Name("ExtDecToStr/EBCDIC overpunch, 10 digits");

#ifdef OXR_HAVE_LIBCOB
// From one display field to another, as an overpunched sign and a scale of 2 become those of the target.
void cobolMove(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto digits = static_cast<unsigned short>(size);
  Field field = fieldOf(size, 0x30);
  Field target{};
  oxr::bench::CobolMove move({COB_TYPE_NUMERIC_DISPLAY, digits, 2, field.data(), size},
                             {COB_TYPE_NUMERIC_DISPLAY, digits, 1, target.data(), size});
  for (auto _ : state) {
    benchmark::DoNotOptimize(field);
    move();
    benchmark::DoNotOptimize(target);
  }
}
BENCHMARK(cobolMove)->Name("ExtDecToDec/COBOL move of display to display")->Arg(5)->Arg(10)->Arg(18);

// To and from text like the library's: a picture of -9(8).99 has the sign and the point of "-12345678.90".
void cobolEdit(benchmark::State& state, bool isRead) {
  constexpr cob_pic_symbol kPicture[] = {{'-', 1}, {'9', 8}, {'.', 1}, {'9', 2}, {0, 0}};
  Field display = fieldOf(10, 0x30);
  display[9] |= 0x40;
  std::array<unsigned char, 12> edited{'-', '1', '2', '3', '4', '5', '6', '7', '8', '.', '9', '0'};
  const oxr::bench::CobolMove::Field displayField{COB_TYPE_NUMERIC_DISPLAY, 10, 2, display.data(), 10};
  const oxr::bench::CobolMove::Field editedField{COB_TYPE_NUMERIC_EDITED, 10, 2, edited.data(), 12, kPicture};
  oxr::bench::CobolMove move(isRead ? displayField : editedField, isRead ? editedField : displayField);
  for (auto _ : state) {
    benchmark::DoNotOptimize(display);
    benchmark::DoNotOptimize(edited);
    move();
  }
}
BENCHMARK_CAPTURE(cobolEdit, read, true)->Name("ExtDecToDec/COBOL move of display to text/10");
BENCHMARK_CAPTURE(cobolEdit, write, false)->Name("ExtDecFromDec/COBOL move of text to display/10");
#endif

}  // namespace
