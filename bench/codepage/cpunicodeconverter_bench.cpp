#include "cpunicodeconverter.hpp"

#include <benchmark/benchmark.h>
#include <unicode/ucnv_err.h>

#include <string>
#include <vector>

#include "dataconv.hpp"

// Text fields into UTF-16 and back: the library's steps, strings and values, and what a user would write instead: one
// call of ICU, with a kept converter, into a buffer that is large enough.

namespace {

// A code page and a text in it of so many units.
struct Field {
  explicit Field(const benchmark::State& state)
      : ccsid(static_cast<int>(state.range(0) < 0 ? -state.range(0) : state.range(0))),
        endian(state.range(0) == -1200 ? eEndianLittle : eEndianBig) {
    // Letters and digits, in mixed text an e with an accent or a euro sign among each eight.
    for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(1)); ++i)
      units.push_back(state.range(0) == -1208 && i % 8 == 3
                          ? static_cast<unsigned short>(i % 16 == 3 ? 0xE9 : 0x20AC)
                          : static_cast<unsigned short>((i % 3 != 0 ? 'A' : '0') + i % 10));
    bytes.resize(4 * units.size());
    char* end = bytes.data();
    const unsigned short* source = units.data();
    UErrorCode status = U_ZERO_ERROR;
    CPUnicodeConverter(ccsid, endian)
        .fromUnicode(end, bytes.data() + bytes.size(), source, units.data() + units.size(), nullptr, true, status);
    bytes.resize(static_cast<std::size_t>(end - bytes.data()));
  }
  icu::LocalUConverterPointer icuPage() const {
    const std::string name = ccsid != 1200             ? "ibm-" + std::to_string(ccsid)
                             : endian == eEndianLittle ? "UTF-16LE"
                                                       : "UTF-16BE";
    UErrorCode status = U_ZERO_ERROR;
    icu::LocalUConverterPointer page(ucnv_open(name.c_str(), &status));
    ucnv_setToUCallBack(page.getAlias(), UCNV_TO_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(page.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
    return page;
  }

  int ccsid;
  EEndian endian;
  std::vector<unsigned short> units;
  std::string bytes;
};

void readByIcu(benchmark::State& state) {
  const Field field(state);
  const auto page = field.icuPage();
  char16_t units[256];
  for (auto _ : state) {
    char16_t* target = units;
    const char* source = field.bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(page.getAlias(), &target, units + 256, &source, source + field.bytes.size(), nullptr, true, &status);
    benchmark::DoNotOptimize(units);
  }
}

void readStep(benchmark::State& state) {
  const Field field(state);
  CPUnicodeConverter page(field.ccsid, field.endian);
  unsigned short units[256];
  for (auto _ : state) {
    unsigned short* target = units;
    const char* source = field.bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    page.toUnicode(target, units + 256, source, source + field.bytes.size(), nullptr, true, status);
    benchmark::DoNotOptimize(units);
  }
}

void readString(benchmark::State& state) {
  const Field field(state);
  const CPUnicodeConverter page(field.ccsid, field.endian);
  KelBufferedWstring<16u> text;
  UErrorCode status = U_ZERO_ERROR;
  for (auto _ : state) {
    page.toUnicodeString(text, field.bytes.data(), static_cast<int>(field.bytes.size()), status);
    benchmark::DoNotOptimize(text.characters());
  }
}

void readValue(benchmark::State& state) {
  const Field field(state);
  DataCnv cnv(field.ccsid, field.endian, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
              eMessageStandardDefault, nullptr);
  for (auto _ : state) {
    PWFData value = cnv.RawCharsToPWFData(field.bytes.data(), static_cast<int>(field.bytes.size()));
    benchmark::DoNotOptimize(value);
  }
}

void writtenByIcu(benchmark::State& state) {
  const Field field(state);
  const auto page = field.icuPage();
  char bytes[512];
  for (auto _ : state) {
    char* target = bytes;
    const char16_t* source = oxr::toIcu(field.units.data());
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(page.getAlias(), &target, bytes + sizeof bytes, &source, source + field.units.size(), nullptr,
                     true, &status);
    benchmark::DoNotOptimize(bytes);
  }
}

void writtenStep(benchmark::State& state) {
  const Field field(state);
  CPUnicodeConverter page(field.ccsid, field.endian);
  char bytes[512];
  for (auto _ : state) {
    char* target = bytes;
    const unsigned short* source = field.units.data();
    UErrorCode status = U_ZERO_ERROR;
    page.fromUnicode(target, bytes + sizeof bytes, source, source + field.units.size(), nullptr, true, status);
    benchmark::DoNotOptimize(bytes);
  }
}

void writtenString(benchmark::State& state) {
  const Field field(state);
  const CPUnicodeConverter page(field.ccsid, field.endian);
  const KelWstring text(field.units.data(), static_cast<unsigned>(field.units.size()));
  char bytes[512];
  UErrorCode status = U_ZERO_ERROR;
  for (auto _ : state) {
    int size = sizeof bytes;
    page.fromUnicodeString(bytes, size, text, status);
    benchmark::DoNotOptimize(bytes);
  }
}

// Two of a kind stand side by side, so that one run compares them. -1208 is UTF-8 that is not all ASCII, -1200 the
// other byte order.
const std::vector<std::vector<std::int64_t>> kCases = {{37, 1252, 1208, -1208, 1200, -1200}, {16, 32, 64}};
BENCHMARK(readByIcu)->Name("toUnicode/ICU alone (CCSID, units)")->ArgsProduct(kCases);
BENCHMARK(readStep)->Name("toUnicode/library (CCSID, units)")->ArgsProduct(kCases);
BENCHMARK(readString)->Name("toUnicodeString/library (CCSID, units)")->ArgsProduct(kCases);
BENCHMARK(readValue)->Name("RawCharsToPWFData/library (CCSID, units)")->ArgsProduct(kCases);
BENCHMARK(writtenByIcu)->Name("fromUnicode/ICU alone (CCSID, units)")->ArgsProduct(kCases);
BENCHMARK(writtenStep)->Name("fromUnicode/library (CCSID, units)")->ArgsProduct(kCases);
BENCHMARK(writtenString)->Name("fromUnicodeString/library (CCSID, units)")->ArgsProduct(kCases);

void converterMade(benchmark::State& state) {
  for (auto _ : state) {
    CPUnicodeConverter page(static_cast<int>(state.range(0)), eEndianBig);
    benchmark::DoNotOptimize(page);
  }
}
BENCHMARK(converterMade)->Name("CPUnicodeConverter/made and dropped (CCSID)")->Arg(37)->Arg(1208);

}  // namespace
