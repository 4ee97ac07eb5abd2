#include <benchmark/benchmark.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "kelwstringconvertor.hpp"

// Durations as text: the library, and what a good engineer would write with the C library for text of one byte a
// character: a sscanf for each field in the order of the fields, a snprintf for each that is there.
namespace {

using oxr::bench::converterFor;

constexpr const char* kTexts[] = {"PT1M30S", "P1Y2M", "-P1DT2H3M4.5S", "-P12345DT23H59M59.123456S"};
constexpr PWFInterval kValues[] = {
    {0, 0, 90'000'000, 0}, {1, 2, 0, 0}, {0, 0, 93'784'500'000, 1}, {0, 0, 12345 * 86'400'000'000 + 86'399'123'456, 1}};

bool readByScanf(const char* text, PWFInterval& value) {
  value = {};
  if (*text == '-') {
    value._sign = 1;
    ++text;
  }
  if (*text++ != 'P') return false;
  bool isTime = false;
  while (*text != 0) {
    if (*text == 'T') {
      isTime = true;
      ++text;
      continue;
    }
    std::int64_t number = 0;
    char designator = 0;
    int taken = 0;
    if (std::sscanf(text, "%" SCNd64 "%c%n", &number, &designator, &taken) != 2) return false;
    text += taken;
    switch (designator) {
      case 'Y':
        value._years = static_cast<PWFInt32>(number);
        break;
      case 'M':
        if (isTime)
          value._microseconds += number * 60'000'000;
        else
          value._months = static_cast<PWFInt32>(number);
        break;
      case 'D':
        value._microseconds += number * 86'400'000'000;
        break;
      case 'H':
        value._microseconds += number * 3'600'000'000;
        break;
      case 'S':
        value._microseconds += number * 1'000'000;
        break;
      case '.': {
        value._microseconds += number * 1'000'000;
        char digits[8] = "000000";
        if (std::sscanf(text, "%6[0-9]%n", digits, &taken) != 1 || text[taken] != 'S') return false;
        text += taken + 1;
        for (int i = taken; i < 6; ++i)
          digits[i] = '0';
        value._microseconds += std::strtol(digits, nullptr, 10);
        break;
      }
      default:
        return false;
    }
  }
  return true;
}

void readScanf(benchmark::State& state) {
  const char* text = kTexts[state.range(0)];
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    PWFInterval value;
    bool good = readByScanf(text, value);
    benchmark::DoNotOptimize(good);
    benchmark::DoNotOptimize(value);
  }
  state.SetLabel(text);
}
BENCHMARK(readScanf)->Name("StrToInterval/sscanf")->DenseRange(0, 3);

void readInterval(benchmark::State& state) {
  const KelWstring text = oxr::fromUtf8(kTexts[state.range(0)]);
  DataCnv cnv = converterFor();
  const unsigned short* units = text.characters();
  for (auto _ : state) {
    benchmark::DoNotOptimize(units);
    PWFInterval value = cnv.StrToInterval(units, static_cast<int>(text.length()));
    benchmark::DoNotOptimize(value);
  }
  state.SetLabel(kTexts[state.range(0)]);
}
BENCHMARK(readInterval)->Name("StrToInterval/library")->DenseRange(0, 3);

// Years, months, days, hours, minutes and seconds, in this order, where they are not 0.
int writeByPrintf(const PWFInterval& value, char* out) {
  constexpr int kRoom = 64;
  int length = std::snprintf(out, kRoom, value._sign != 0 ? "-P" : "P");
  const auto field = [&](long number, const char* format) {
    if (number != 0) length += std::snprintf(out + length, static_cast<std::size_t>(kRoom - length), format, number);
  };
  const std::int64_t all = value._microseconds;
  field(value._years, "%ldY");
  field(value._months, "%ldM");
  field(all / 86'400'000'000, "%ldD");
  if (all % 86'400'000'000 != 0) out[length++] = 'T';
  field(all / 3'600'000'000 % 24, "%ldH");
  field(all / 60'000'000 % 60, "%ldM");
  const long seconds = all / 1'000'000 % 60, fraction = all % 1'000'000;
  if (fraction == 0) {
    field(seconds, "%ldS");
  } else {
    length += std::snprintf(out + length, static_cast<std::size_t>(kRoom - length), "%ld.%06ld", seconds, fraction);
    while (out[length - 1] == '0')
      --length;
    out[length++] = 'S';
  }
  return length;
}

void writePrintf(benchmark::State& state) {
  PWFInterval value = kValues[state.range(0)];
  char out[64];
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    int length = writeByPrintf(value, out);
    benchmark::DoNotOptimize(length);
    benchmark::ClobberMemory();
  }
  state.SetLabel(kTexts[state.range(0)]);
}
BENCHMARK(writePrintf)->Name("StrFromInterval/snprintf")->DenseRange(0, 3);

void writeInterval(benchmark::State& state) {
  PWFInterval value = kValues[state.range(0)];
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    const PWFData text = cnv.StrFromInterval(value);
    benchmark::DoNotOptimize(text.getDataValue());
  }
  state.SetLabel(kTexts[state.range(0)]);
}
BENCHMARK(writeInterval)->Name("StrFromInterval/library")->DenseRange(0, 3);

}  // namespace
