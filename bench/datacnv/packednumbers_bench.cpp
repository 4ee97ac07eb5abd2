#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/numbers.hpp"

// Packed fields of 4, 8 and 10 bytes as machine numbers: the library, and the plain loop that a good engineer would
// write for the same bytes.
namespace {

using oxr::bench::converterFor;
using oxr::bench::decimals;
using oxr::bench::walkFields;

// A number of up to 18 digits fits 64 bits.
constexpr std::size_t kMostDigits = 18;

oxr::bench::FieldTable packedFields(std::size_t size) {
  return oxr::bench::packedFields(size, std::min(2 * size - 1, kMostDigits));
}

// False for a bad field.
bool plainNumber(const unsigned char* field, std::size_t size, long& number) {
  long value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const int high = field[i] >> 4;
    const int low = field[i] & 15;
    if (high > 9 || (i + 1 < size && low > 9)) return false;
    value = value * 10 + high;
    if (i + 1 < size) value = value * 10 + low;
  }
  const int sign = field[size - 1] & 15;
  number = sign == 0x0D ? -value : value;
  return sign > 9;
}

void plainLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto fields = packedFields(size);
  walkFields(state, [&](std::size_t i) {
    long number = 0;
    bool good = plainNumber(fields[i], size, number);
    benchmark::DoNotOptimize(good);
    benchmark::DoNotOptimize(number);
  });
}
BENCHMARK(plainLoop)->Name("PckdDecToPWFInt64/plain loop")->Arg(4)->Arg(8)->Arg(10);

template <auto Member>
void readNumber(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  const int scale = static_cast<int>(state.range(1));
  const auto fields = packedFields(static_cast<std::size_t>(size));
  DataCnv cnv = converterFor();
  cnv.getDecimalFormatter();  // the first one of the process takes its time
  walkFields(state, [&](std::size_t i) {
    auto number = (cnv.*Member)(fields[i], size, scale, eSignLeadingIncluded);
    benchmark::DoNotOptimize(number);
  });
}
BENCHMARK(readNumber<&DataCnv::PckdDecToInt32>)
    ->Name("PckdDecToInt32/library (size, scale)")
    ->ArgsProduct({{4}, {0, 2}});
BENCHMARK(readNumber<&DataCnv::PckdDecToPWFInt64>)
    ->Name("PckdDecToPWFInt64/library (size, scale)")
    ->ArgsProduct({{4, 8, 10}, {0, 2}});
BENCHMARK(readNumber<&DataCnv::PckdDecToDbl>)
    ->Name("PckdDecToDbl/library (size, scale)")
    ->ArgsProduct({{4, 8, 10}, {0, 2}});

// Numbers of up to 6 digits, which every field here has room for.
template <class Number>
std::vector<Number> smallNumbers() {
  std::vector<Number> numbers;
  for (const auto& [digits, negative] : decimals(6))
    numbers.push_back(static_cast<Number>(std::stoi((negative ? "-" : "") + digits)));
  return numbers;
}

void plainWriteLoop(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto numbers = smallNumbers<long>();
  unsigned char field[10];
  walkFields(state, [&](std::size_t i) {
    const long number = numbers[i];
    long rest = number < 0 ? -number : number;
    field[size - 1] = static_cast<unsigned char>(rest % 10 << 4 | (number < 0 ? 0x0D : 0x0C));
    rest /= 10;
    for (std::size_t byte = size - 1; byte-- != 0; rest /= 100)
      field[byte] = static_cast<unsigned char>(rest / 10 % 10 << 4 | rest % 10);
    benchmark::DoNotOptimize(field);
  });
}
BENCHMARK(plainWriteLoop)->Name("PckdDecFromPWFInt64/plain loop")->Arg(4)->Arg(8)->Arg(10);

template <auto Member, class Number>
void writeNumber(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  constexpr bool kIsDouble = std::is_same_v<Number, double>;
  auto numbers = smallNumbers<Number>();
  if constexpr (kIsDouble)
    for (Number& number : numbers)
      number /= 100;
  unsigned char field[10];
  DataCnv cnv = converterFor();
  walkFields(state, [&](std::size_t i) {
    (cnv.*Member)(numbers[i], field, size, kIsDouble ? 2 : 0, eSignLeadingIncluded);
    benchmark::DoNotOptimize(field);
  });
}
BENCHMARK(writeNumber<&DataCnv::PckdDecFromInt32, PWFInt32>)->Name("PckdDecFromInt32/library")->Arg(4);
BENCHMARK(writeNumber<&DataCnv::PckdDecFromPWFInt64, PWFInt64>)
    ->Name("PckdDecFromPWFInt64/library")
    ->Arg(4)
    ->Arg(8)
    ->Arg(10);
BENCHMARK(writeNumber<&DataCnv::PckdDecFromDbl, double>)->Name("PckdDecFromDbl/library")->Arg(4)->Arg(8);

}  // namespace
