#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <string>
#include <vector>

#include "growingbytebuffer.hpp"
#include "kelunits.hpp"
#include "textbffr.hpp"

// Appending texts to a message, against what a user would write instead: a kept ICU converter and a vector that grows.

namespace {

constexpr int kEbcdic = 37;
constexpr int kMebibyte = 1 << 20;

// Letters and digits; a character of three bytes in UTF-8 among each eight for the CCSID -1208.
std::vector<unsigned short> textOf(std::int64_t ccsid, std::int64_t length) {
  std::vector<unsigned short> text(static_cast<std::size_t>(length));
  for (std::size_t i = 0; i < text.size(); ++i)
    text[i] = ccsid < 0 && i % 8 == 3 ? 0x20AC : static_cast<unsigned short>((i % 3 != 0 ? 'A' : '0') + i % 10);
  return text;
}

int pageOf(std::int64_t ccsid) {
  return static_cast<int>(ccsid < 0 ? -ccsid : ccsid);
}

void appended(benchmark::State& state) {
  const auto text = textOf(state.range(0), state.range(1));
  oxr::GrowingByteBuffer message;
  TextBufferWriter writer(&message, pageOf(state.range(0)), eEndianBig);
  const std::int64_t texts = kMebibyte / (3 * state.range(1));
  std::int64_t left = texts;
  for (auto _ : state) {
    if (--left == 0) {
      message.setLength(0);
      left = texts;
    }
    writer.appendStr(text.data(), static_cast<int>(text.size()));
    benchmark::ClobberMemory();
  }
}

void appendedByIcu(benchmark::State& state) {
  const auto text = textOf(state.range(0), state.range(1));
  const int ccsid = pageOf(state.range(0));
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer page(ucnv_open(ccsid == 1200      ? "UTF-16BE"
                                                   : ccsid == kEbcdic ? "ibm-37"
                                                                      : ("ibm-" + std::to_string(ccsid)).c_str(),
                                                   &status));
  ucnv_setFromUCallBack(page.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  std::vector<char> message(kMebibyte + 1024);
  std::size_t length = 0;
  const std::int64_t texts = kMebibyte / (3 * state.range(1));
  std::int64_t left = texts;
  for (auto _ : state) {
    if (--left == 0) {
      length = 0;
      left = texts;
    }
    const char16_t* source = oxr::toIcu(text.data());
    char* target = message.data() + length;
    ucnv_fromUnicode(page.getAlias(), &target, message.data() + message.size(), &source, source + text.size(), nullptr,
                     true, &status);
    length = static_cast<std::size_t>(target - message.data());
    benchmark::ClobberMemory();
  }
}

const std::vector<std::vector<std::int64_t>> kCases = {{kEbcdic, 1208, -1208, 1200, 930}, {16, 32, 64}};
BENCHMARK(appended)->Name("appendStr/library (CCSID, units)")->ArgsProduct(kCases);
BENCHMARK(appendedByIcu)->Name("appendStr/ICU alone (CCSID, units)")->ArgsProduct(kCases);

}  // namespace
