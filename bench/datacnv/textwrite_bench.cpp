#include <benchmark/benchmark.h>
#include <unicode/decimfmt.h>

#include <algorithm>
#include <charconv>
#include <memory>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/numbers.hpp"

// Numbers as text: the library, the standard library's digits widened to code units, and ICU's formatter set up for the
// same text. Field forms stand beside the plain ones that they begin with.
namespace {

using oxr::bench::converterFor;

using oxr::bench::doubles;
using oxr::bench::integers;
using oxr::bench::kFields;

void integerByStandardLibrary(benchmark::State& state) {
  const auto values = integers();
  KelBufferedWstring<32u> text;
  std::size_t i = 0;
  for (auto _ : state) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, values[i++ % kFields]).ptr;
    std::copy(digits, end, text.resizeForOverwrite(static_cast<unsigned>(end - digits)));
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(integerByStandardLibrary)->Name("Int64ToUString/std::to_chars and widening");

void integer(benchmark::State& state) {
  const auto values = integers();
  DataCnv cnv = converterFor();
  KelBufferedWstring<32u> text;
  std::size_t i = 0;
  for (auto _ : state) {
    cnv.Int64ToUString(values[i++ % kFields], text);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(integer)->Name("Int64ToUString/library");

void integerField(benchmark::State& state) {
  const auto values = integers();
  DataCnv cnv = converterFor();
  unsigned short field[24];
  std::size_t i = 0;
  for (auto _ : state) {
    int length = 22;
    cnv.StrFromInt64(values[i++ % kFields], field, length, eSignLeadingSeparate, DataCnv::US_MINUS.characters(),
                     DataCnv::US_PLUS.characters(), true, eJustifyRight, ' ', true);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(integerField)->Name("StrFromInt64/field of 22");

// Arguments: exponential form, all digits.
void doubleByIcu(benchmark::State& state) {
  const auto values = doubles(state.range(1) != 0);
  DataCnv cnv = converterFor();
  const std::unique_ptr<icu::DecimalFormat> format(cnv.getDecimalFormatter()->clone());
  format->setScientificNotation(state.range(0) != 0);
  format->setMaximumIntegerDigits(state.range(0) != 0 ? 1 : 9999);
  format->setMaximumFractionDigits(340);
  std::size_t i = 0;
  for (auto _ : state) {
    icu::UnicodeString text;
    icu::FieldPosition position;
    format->format(values[i++ % kFields], text, position);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(doubleByIcu)
    ->Name("doubleToUString/DecimalFormat::format (exponential, long)")
    ->ArgsProduct({{0, 1}, {0, 1}});

void doubleText(benchmark::State& state) {
  const auto values = doubles(state.range(1) != 0);
  DataCnv cnv = converterFor();
  KelBufferedWstring<32u> text;
  std::size_t i = 0;
  for (auto _ : state) {
    cnv.doubleToUString(values[i++ % kFields], text, state.range(0) != 0);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(doubleText)->Name("doubleToUString/library (exponential, long)")->ArgsProduct({{0, 1}, {0, 1}});

void doubleField(benchmark::State& state) {
  const auto values = doubles(false);
  DataCnv cnv = converterFor();
  unsigned short field[24];
  std::size_t i = 0;
  for (auto _ : state) {
    int length = 22;
    cnv.StrFromDbl(values[i++ % kFields], field, length, false, 2, DataCnv::US_DECIMAL.characters(),
                   eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), true,
                   eJustifyRight, ' ', true);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(doubleField)->Name("StrFromDbl/field of 22");

void decimalField(benchmark::State& state) {
  constexpr unsigned short kText[] = {'-', '1', '2', '3', '4', '5', '6', '7', '8', '9', '0', '.', '5', '0', 0};
  DataCnv cnv = converterFor();
  unsigned short field[24];
  for (auto _ : state) {
    int length = 22;
    cnv.StrFromDec(kText, field, length, false, 2, DataCnv::US_DECIMAL.characters(), eSignLeadingSeparate,
                   DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), true, eJustifyRight, ' ', true,
                   false);
    benchmark::DoNotOptimize(field);
  }
}
BENCHMARK(decimalField)->Name("StrFromDec/field of 22");

// The plain forms, as values.
void plainInteger(benchmark::State& state) {
  const auto values = integers();
  DataCnv cnv = converterFor();
  std::size_t i = 0;
  for (auto _ : state) {
    const PWFData text = cnv.StrFromInt64(values[i++ % kFields]);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(plainInteger)->Name("StrFromInt64/plain");

void plainDouble(benchmark::State& state) {
  const auto values = doubles(false);
  DataCnv cnv = converterFor();
  cnv.getDecimalFormatter();
  std::size_t i = 0;
  for (auto _ : state) {
    const PWFData text = cnv.StrFromDbl(values[i++ % kFields]);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(plainDouble)->Name("StrFromDbl/plain");

void plainDecimal(benchmark::State& state) {
  constexpr unsigned short kText[] = {'-', '1', '2', '3', '4', '5', '6', '7', '8', '9', '0', '.', '5', '0', 0};
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    const PWFData text = cnv.StrFromDec(kText);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(plainDecimal)->Name("StrFromDec/plain");

}  // namespace
