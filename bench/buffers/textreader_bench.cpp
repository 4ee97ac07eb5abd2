#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include <string>

#include "kelunits.hpp"
#include "textbffr.hpp"

// Reading text, against what a user would write instead: a kept ICU converter on the same bytes.

namespace {

constexpr int kEbcdic = 37;
constexpr int kUtf8 = 1208;
constexpr int kMebibyte = 1 << 20;

// Letters and digits.
std::string textOf(std::int64_t ccsid, std::int64_t size) {
  std::string bytes(static_cast<std::size_t>(size), ' ');
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<char>(ccsid == kEbcdic ? (i % 3 != 0 ? 0xC1 + i % 9 : 0xF0 + i % 10) : 'A' + i % 26);
  return bytes;
}

struct Message : ReadOnlyByteBuffer {
  explicit Message(std::string text) : bytes(std::move(text)) { create(bytes.data(), static_cast<int>(bytes.size())); }
  std::string bytes;
};

icu::LocalUConverterPointer pageOfIcu(std::int64_t ccsid) {
  UErrorCode status = U_ZERO_ERROR;
  return icu::LocalUConverterPointer(ucnv_open(ccsid == kEbcdic ? "ibm-37" : "UTF-8", &status));
}

// Each iteration is one character of 1 MiB.
void characters(benchmark::State& state) {
  const Message message(textOf(state.range(0), kMebibyte));
  TextBufferReader reader(&message, static_cast<int>(state.range(0)), eEndianUnset, nullptr);
  unsigned short unit = 0;
  while (state.KeepRunningBatch(kMebibyte)) {
    reader.setOffsetChars(0);
    while (reader.getCharacter(&unit, true, nullptr, -1))
      benchmark::DoNotOptimize(unit);
  }
}
BENCHMARK(characters)->Name("getCharacter/library (CCSID; 37 at most 6 ns)")->Arg(kEbcdic)->Arg(kUtf8);

void charactersByIcu(benchmark::State& state) {
  const std::string text = textOf(state.range(0), kMebibyte);
  const auto page = pageOfIcu(state.range(0));
  while (state.KeepRunningBatch(kMebibyte)) {
    for (const char* source = text.data(); source != text.data() + text.size();) {
      char16_t unit;
      char16_t* target = &unit;
      UErrorCode status = U_ZERO_ERROR;
      ucnv_toUnicode(page.getAlias(), &target, target + 1, &source, source + 1, nullptr, true, &status);
      benchmark::DoNotOptimize(unit);
    }
  }
}
BENCHMARK(charactersByIcu)->Name("getCharacter/ICU alone (CCSID)")->Arg(kEbcdic)->Arg(kUtf8);

void rangeValues(benchmark::State& state) {
  const Message message(textOf(state.range(0), state.range(1)));
  TextBufferReader reader(&message, static_cast<int>(state.range(0)), eEndianUnset, nullptr);
  for (auto _ : state) {
    PWFData value = reader.getString(0, message.getLength(), false);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(rangeValues)->Name("getString/library (CCSID, bytes)")->ArgsProduct({{kEbcdic, kUtf8}, {16, 32, 64}});

// Sections, and up to a zero with a count of -1, into a string that is emptied each time.
void sections(benchmark::State& state) {
  const int count = static_cast<int>(state.range(1));
  const Message message(textOf(state.range(0), count < 0 ? 65536 : count) + '\0');
  TextBufferReader reader(&message, static_cast<int>(state.range(0)), eEndianUnset, nullptr);
  KelWstring text;
  for (auto _ : state) {
    text.eraseInternal(0, KelWstring::npos);
    reader.getPWFStringSection(text, count, false, 0);
    benchmark::DoNotOptimize(text.characters());
  }
}
BENCHMARK(sections)
    ->Name("getPWFStringSection/library (CCSID, count; -1 up to the end of 64 KiB)")
    ->ArgsProduct({{kEbcdic, kUtf8}, {16, 32, 64, -1}});

void textByIcu(benchmark::State& state) {
  const std::string text = textOf(state.range(0), state.range(1));
  const auto page = pageOfIcu(state.range(0));
  std::u16string units(text.size(), u' ');
  for (auto _ : state) {
    char16_t* target = units.data();
    const char* source = text.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(page.getAlias(), &target, target + units.size(), &source, source + text.size(), nullptr, true,
                   &status);
    benchmark::DoNotOptimize(units.data());
  }
}
BENCHMARK(textByIcu)->Name("getString/ICU alone (CCSID, bytes)")->ArgsProduct({{kEbcdic, kUtf8}, {16, 32, 64, 65536}});

}  // namespace
