// Numbers of text fields. Yardsticks: ICU's parse of the same text, and std::from_chars after a loop that narrows the
// units, which has no field's settings to look at.

#include <benchmark/benchmark.h>
#include <unicode/decimfmt.h>

#include <charconv>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/numbers.hpp"
#include "kelwstringconvertor.hpp"

namespace {

using oxr::bench::converterFor;

template <class T>
T narrowed(const KelWstring& text) {
  char chars[64];
  for (unsigned i = 0; i < text.length(); ++i)
    chars[i] = static_cast<char>(text[i]);
  T value{};
  std::from_chars(chars, chars + text.length(), value);
  return value;
}

template <class F>
void repeat(benchmark::State& state, const char* utf8, F read) {
  DataCnv cnv = converterFor();
  cnv.getDecimalFormatter();
  const KelWstring text = oxr::fromUtf8(utf8);
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.characters());
    benchmark::ClobberMemory();
    auto result = read(cnv, text);
    benchmark::DoNotOptimize(result);
  }
}

template <class F>
void field(benchmark::State& state, const char* utf8, F member) {
  repeat(state, utf8, [&](DataCnv& cnv, const KelWstring& text) {
    return member(cnv, text.characters(), static_cast<int>(text.length()), DataCnv::US_DECIMAL.characters(),
                  eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), eTrimSpaceBoth,
                  eJustifyRight, static_cast<unsigned short>(' '));
  });
}

void icuParse(benchmark::State& state, const char* utf8) {
  repeat(state, utf8, [](DataCnv& cnv, const KelWstring& text) {
    const icu::UnicodeString units(oxr::toIcu(text.characters()), static_cast<std::int32_t>(text.length()));
    icu::Formattable number;
    UErrorCode status = U_ZERO_ERROR;
    static_cast<const icu::NumberFormat*>(cnv.getDecimalFormatter())->parse(units, number, status);
    return number.getDouble(status);
  });
}
void doubleField(benchmark::State& state, const char* utf8) {
  field(state, utf8, [](DataCnv& cnv, auto text, int length, auto point, auto... rest) {
    return cnv.StrToDbl(text, length, false, 2, point, rest..., true);
  });
}
void plainDouble(benchmark::State& state, const char* utf8) {
  repeat(state, utf8, [](DataCnv& cnv, const KelWstring& text) {
    return cnv.StrToDbl(text.characters(), static_cast<int>(text.length()));
  });
}
void canonicalDouble(benchmark::State& state, const char* utf8) {
  repeat(state, utf8, [](DataCnv& cnv, const KelWstring& text) { return cnv.PWFStringTodouble(text); });
}
void doubleFromChars(benchmark::State& state, const char* utf8) {
  repeat(state, utf8, [](DataCnv&, const KelWstring& text) { return narrowed<double>(text); });
}
BENCHMARK_CAPTURE(icuParse, , "1234567890.12")->Name("StrToDbl/ICU parse, 12 digits");
BENCHMARK_CAPTURE(doubleField, , "1234567890.12")->Name("StrToDbl/field, 12 digits");
BENCHMARK_CAPTURE(doubleField, , "-12345678.90")->Name("StrToDbl/field, minus, 10 digits");
BENCHMARK_CAPTURE(plainDouble, , "1234567890.12")->Name("StrToDbl/plain, 12 digits");
BENCHMARK_CAPTURE(canonicalDouble, , "1234567890.12")->Name("StrToDbl/canonical, 12 digits");
BENCHMARK_CAPTURE(doubleFromChars, , "1234567890.12")->Name("StrToDbl/from_chars, 12 digits");

void decimalField(benchmark::State& state, const char* utf8) {
  field(state, utf8, [](DataCnv& cnv, auto text, int length, auto point, auto... rest) {
    return cnv.StrToDec(text, length, false, 2, point, rest..., true);
  });
}
BENCHMARK_CAPTURE(decimalField, , "1234567890.12")->Name("StrToDec/field, 12 digits");

void integerField(benchmark::State& state, const char* utf8) {
  field(state, utf8, [](DataCnv& cnv, auto text, int length, auto /*point*/, auto... rest) {
    return cnv.StrToInt64(text, length, rest..., true);
  });
}
void canonicalInteger(benchmark::State& state, const char* utf8) {
  repeat(state, utf8, [](DataCnv& cnv, const KelWstring& text) { return cnv.UStringToInt64(text); });
}
void integerFromChars(benchmark::State& state, const char* utf8) {
  repeat(state, utf8, [](DataCnv&, const KelWstring& text) { return narrowed<std::int64_t>(text); });
}
BENCHMARK_CAPTURE(integerField, , "-123456789012")->Name("StrToInt64/field, 12 digits");
BENCHMARK_CAPTURE(canonicalInteger, , "7")->Name("UStringToInt64/1 digit");
BENCHMARK_CAPTURE(canonicalInteger, , "-12345")->Name("UStringToInt64/5 digits");
BENCHMARK_CAPTURE(canonicalInteger, , "-123456789012")->Name("UStringToInt64/12 digits");
BENCHMARK_CAPTURE(canonicalInteger, , "9223372036854775807")->Name("UStringToInt64/19 digits");
BENCHMARK_CAPTURE(integerFromChars, , "7")->Name("UStringToInt64/from_chars, 1 digit");
BENCHMARK_CAPTURE(integerFromChars, , "-12345")->Name("UStringToInt64/from_chars, 5 digits");
BENCHMARK_CAPTURE(integerFromChars, , "-123456789012")->Name("UStringToInt64/from_chars, 12 digits");
BENCHMARK_CAPTURE(integerFromChars, , "9223372036854775807")->Name("UStringToInt64/from_chars, 19 digits");

// Texts of mixed length: whole numbers of up to 18 digits, amounts of up to 12.
template <class F>
void mixed(benchmark::State& state, const oxr::bench::TextTable& table, F read) {
  DataCnv cnv = converterFor();
  cnv.getDecimalFormatter();
  std::vector<KelWstring> texts;
  for (std::size_t i = 0; i < oxr::bench::kFields; ++i)
    texts.emplace_back(table[i], table.length(i));
  oxr::bench::walkFields(state, [&](std::size_t i) {
    auto result = read(cnv, texts[i]);
    benchmark::DoNotOptimize(result);
  });
}
void mixedIntegers(benchmark::State& state) {
  mixed(state, oxr::bench::decimalTexts(18, 0),
        [](DataCnv& cnv, const KelWstring& text) { return cnv.UStringToInt64(text); });
}
void mixedIntegersFromChars(benchmark::State& state) {
  mixed(state, oxr::bench::decimalTexts(18, 0),
        [](DataCnv&, const KelWstring& text) { return narrowed<std::int64_t>(text); });
}
void mixedDoubles(benchmark::State& state) {
  mixed(state, oxr::bench::decimalTexts(12, 2),
        [](DataCnv& cnv, const KelWstring& text) { return cnv.PWFStringTodouble(text); });
}
void mixedDoublesFromChars(benchmark::State& state) {
  mixed(state, oxr::bench::decimalTexts(12, 2),
        [](DataCnv&, const KelWstring& text) { return narrowed<double>(text); });
}
BENCHMARK(mixedIntegers)->Name("UStringToInt64/mixed lengths");
BENCHMARK(mixedIntegersFromChars)->Name("UStringToInt64/from_chars, mixed lengths");
BENCHMARK(mixedDoubles)->Name("StrToDbl/canonical, mixed lengths");
BENCHMARK(mixedDoublesFromChars)->Name("StrToDbl/from_chars, mixed lengths");

}  // namespace
