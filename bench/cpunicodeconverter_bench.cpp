#include "cpunicodeconverter.hpp"

#include <benchmark/benchmark.h>
#include <unicode/ucnv_err.h>

#include <string>

#include "dataconv.hpp"

// Text fields of 8 to 200 bytes into UTF-16: the library's strings and values, and one call of ICU into a buffer that
// is large enough.
namespace {

constexpr int kEbcdic = 37;
constexpr int kUtf8 = 1208;

std::string fieldOf(int ccsid, std::int64_t size) {
  std::string field(static_cast<std::size_t>(size), ' ');
  for (std::size_t i = 0; i < field.size(); ++i)
    field[i] = static_cast<char>((ccsid == kEbcdic ? 0xC1 : 'A') + i % 9);
  return field;
}

void textByIcu(benchmark::State& state) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer page(ucnv_open(state.range(0) == kEbcdic ? "ibm-37" : "UTF-8", &status));
  ucnv_setToUCallBack(page.getAlias(), UCNV_TO_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  const std::string field = fieldOf(static_cast<int>(state.range(0)), state.range(1));
  char16_t units[256];
  for (auto _ : state) {
    char16_t* target = units;
    const char* source = field.data();
    ucnv_toUnicode(page.getAlias(), &target, units + 256, &source, source + field.size(), nullptr, true, &status);
    benchmark::DoNotOptimize(units);
  }
}
BENCHMARK(textByIcu)->Name("toUnicodeString/ICU alone (CCSID, bytes)")->ArgsProduct({{kEbcdic, kUtf8}, {8, 40, 200}});

void textString(benchmark::State& state) {
  const CPUnicodeConverter page(static_cast<int>(state.range(0)), eEndianBig);
  const std::string field = fieldOf(static_cast<int>(state.range(0)), state.range(1));
  KelBufferedWstring<16u> text;
  UErrorCode status = U_ZERO_ERROR;
  for (auto _ : state) {
    page.toUnicodeString(text, field.data(), static_cast<int>(field.size()), status);
    benchmark::DoNotOptimize(text.characters());
  }
}
BENCHMARK(textString)->Name("toUnicodeString/library (CCSID, bytes)")->ArgsProduct({{kEbcdic, kUtf8}, {8, 40, 200}});

void textValue(benchmark::State& state) {
  DataCnv cnv(static_cast<int>(state.range(0)), eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr,
              0, true, 12, false, eMessageStandardDefault, nullptr);
  const std::string field = fieldOf(static_cast<int>(state.range(0)), state.range(1));
  for (auto _ : state) {
    PWFData value = cnv.RawCharsToPWFData(field.data(), static_cast<int>(field.size()));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(textValue)->Name("RawCharsToPWFData/library (CCSID, bytes)")->ArgsProduct({{kEbcdic, kUtf8}, {8, 40, 200}});

void textWritten(benchmark::State& state) {
  const CPUnicodeConverter page(static_cast<int>(state.range(0)), eEndianBig);
  const std::string field = fieldOf(static_cast<int>(state.range(0)), state.range(1));
  KelWstring text;
  UErrorCode status = U_ZERO_ERROR;
  page.toUnicodeString(text, field.data(), static_cast<int>(field.size()), status);
  char bytes[256];
  for (auto _ : state) {
    int size = sizeof bytes;
    page.fromUnicodeString(bytes, size, text, status);
    benchmark::DoNotOptimize(bytes);
  }
}
BENCHMARK(textWritten)->Name("fromUnicodeString/library (CCSID, bytes)")->ArgsProduct({{kEbcdic, kUtf8}, {8, 40, 200}});

void converterMade(benchmark::State& state) {
  for (auto _ : state) {
    CPUnicodeConverter page(static_cast<int>(state.range(0)), eEndianBig);
    benchmark::DoNotOptimize(page);
  }
}
BENCHMARK(converterMade)->Name("CPUnicodeConverter/made and dropped (CCSID)")->Arg(kEbcdic)->Arg(kUtf8);

}  // namespace
