#include <benchmark/benchmark.h>

#include <array>
#include <string_view>
#include <vector>

#include "core/hextext.hpp"
#include "dataconv.hpp"
#include "harness/converter.hpp"

// Hexadecimal text of bytes: the loops alone, the exported members, which allocate the result, and the loops over a
// table that a good engineer would write.
namespace {

using oxr::bench::converterFor;

std::vector<unsigned char> bytesOf(const benchmark::State& state) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<unsigned char>(i * 2654435761u >> 13);
  return bytes;
}

// With a blank after each byte where the second argument is 1.
std::vector<unsigned short> textOf(const benchmark::State& state, bool isSpaced = false) {
  const auto bytes = bytesOf(state);
  std::vector<unsigned short> text(2 * bytes.size());
  oxr::core::writeHex(bytes, text.data());
  if (!isSpaced) return text;
  std::vector<unsigned short> spaced;
  for (std::size_t i = 0; i < text.size(); i += 2)
    spaced.insert(spaced.end(), {text[i], text[i + 1], ' '});
  return spaced;
}

void setRate(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void writePlain(benchmark::State& state) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto bytes = bytesOf(state);
  std::vector<unsigned short> text(2 * bytes.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      text[2 * i] = static_cast<unsigned char>(kDigits[bytes[i] >> 4]);
      text[2 * i + 1] = static_cast<unsigned char>(kDigits[bytes[i] & 15]);
    }
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(writePlain)->Name("StrFromBin/plain loop (bytes)")->Arg(16)->Arg(65536);

void writeCore(benchmark::State& state) {
  const auto bytes = bytesOf(state);
  std::vector<unsigned short> text(2 * bytes.size());
  for (auto _ : state) {
    oxr::core::writeHex(bytes, text.data());
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(writeCore)->Name("StrFromBin/core (bytes)")->Arg(16)->Arg(65536);

void writeMember(benchmark::State& state) {
  const auto bytes = bytesOf(state);
  const PWFData value(static_cast<const void*>(bytes.data()), static_cast<int>(bytes.size()), BINARY, REFERENCE);
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    const PWFData text = cnv.StrFromBin(value);
    benchmark::DoNotOptimize(text.getDataValue());
  }
  setRate(state);
}
BENCHMARK(writeMember)->Name("StrFromBin/library (bytes)")->Arg(16)->Arg(65536);

// Of digits only.
void readPlain(benchmark::State& state) {
  static constexpr auto kValues = [] {
    std::array<signed char, 256> values{};
    values.fill(-1);
    for (int i = 0; i < 16; ++i)
      values[static_cast<unsigned char>("0123456789abcdef"[i])] =
          values[static_cast<unsigned char>("0123456789ABCDEF"[i])] = static_cast<signed char>(i);
    return values;
  }();
  const auto text = textOf(state);
  std::vector<unsigned char> bytes(text.size() / 2);
  for (auto _ : state) {
    bool good = true;
    for (std::size_t i = 0; good && i < bytes.size(); ++i) {
      const unsigned first = text[2 * i], second = text[2 * i + 1];
      const int high = first < 256 ? kValues[first] : -1, low = second < 256 ? kValues[second] : -1;
      good = (high | low) >= 0;
      bytes[i] = static_cast<unsigned char>(high * 16 + low);
    }
    benchmark::DoNotOptimize(good);
    benchmark::DoNotOptimize(bytes.data());
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(readPlain)->Name("StrToBin/plain loop (bytes)")->Arg(16)->Arg(65536);

void readCore(benchmark::State& state) {
  const auto text = textOf(state, state.range(1) != 0);
  std::vector<unsigned char> bytes(text.size() / 2 + 1);
  for (auto _ : state) {
    auto reading = oxr::core::readHex({text.data(), text.size()}, bytes.data());
    benchmark::DoNotOptimize(reading);
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(readCore)->Name("StrToBin/core (bytes, spaced)")->Args({16, 0})->Args({65536, 0})->Args({65536, 1});

void readMember(benchmark::State& state) {
  const auto text = textOf(state);
  DataCnv cnv = converterFor();
  for (auto _ : state) {
    const PWFData value = cnv.StrToBin(text.data(), static_cast<int>(text.size()));
    benchmark::DoNotOptimize(value.getDataValue());
  }
  setRate(state);
}
BENCHMARK(readMember)->Name("StrToBin/library (bytes)")->Arg(16)->Arg(65536);

}  // namespace
