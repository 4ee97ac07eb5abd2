// What the path of a field takes from the heap. The whole test program counts its allocations here.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/text.hpp"

namespace {

thread_local unsigned allocations = 0;

void* counted(std::size_t size) {
  ++allocations;
  if (void* const block = std::malloc(size != 0 ? size : 1)) return block;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
  return counted(size);
}
void* operator new[](std::size_t size) {
  return counted(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

namespace oxr::test {
namespace {

// Of the second call: the first one may fill caches.
template <class F>
unsigned allocationsOf(F call) {
  call();
  const unsigned before = allocations;
  call();
  return allocations - before;
}

template <class F>
void expectNone(F call, int line = __builtin_LINE()) {
  EXPECT_EQ(allocationsOf(call), 0u) << "the call in line " << line;
}

const unsigned short* const kNoTable = nullptr;

TEST(Allocations, BinaryAndPackedFieldsMakeNone) {
  DataCnv converter = converterFor(819);
  const unsigned char field[] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x5D};
  unsigned char target[8];
  int written = 0;
  PWFData number(u"-123456789012345"_k.characters(), DECIMAL), digits(u"123456789012345A1234"_k);
  const KelWstring decimal = u"-1234567.89"_k;
  const ESign sign = eSignTrailingIncluded;
  for (const int size : {1, 3, 8})
    expectNone([&] { converter.PckdDecToDec(field + 8 - size, size, 0, sign); });
  expectNone([&] { converter.PckdDecFromDec(decimal.characters(), target, 8, 2, sign); });
  expectNone([&] { converter.PckdDecToDbl(field, 8, 2, sign); });
  expectNone([&] { converter.PckdDecToPWFInt64(field, 8, 2, sign); });
  expectNone([&] { converter.PckdDecToInt32(field + 4, 4, 0, sign); });
  expectNone([&] { converter.PckdDecFromDbl(-12345678.25, target, 8, 2, sign); });
  expectNone([&] { converter.PckdDecFromPWFInt64(-123456789012, target, 8, 2, sign); });
  expectNone([&] { converter.PckdDecFromInt32(-12345678, target, 8, -2, eSignNone); });
  expectNone([&] { converter.IntToInt64(field, 8, eSignLeadingIncluded); });
  expectNone([&] { converter.TLOGPckdStrToStr(field, 8, eEndianBig); });
  expectNone([&] {
    KelBufferedWstring<16u> text;
    converter.TLOGFLPckdDecToDec(field, text, 7, eEndianLittle, eTrimPadding, eJustifyLeft, 15, false);
  });
  expectNone([&] { converter.TLOGPWFDataToPckdDecimal(number, target, 8, eEndianBig, false, written); });
  expectNone([&] { converter.TLOGPWFDataToPckdStr(digits, target, 8, eEndianBig); });
  const unsigned char packed[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x1C};
  EXPECT_EQ(allocationsOf([&] { converter.PckdDecToDec(packed, 16, 0, eSignNone); }), 1u) << "the long text's block";
}

// A pad in the code page keeps a field from the fast ways.
TEST(Allocations, TextAndExternalFieldsMakeNone) {
  const KelWstring text = u"**1234567890,12-"_k, integer = u"-12345678"_k, plain = u"-1234567890.1234"_k,
                   decimal = u"-1234567.89"_k, point = u","_k;
  const unsigned short *const minus = DataCnv::US_MINUS.characters(), *const plus = DataCnv::US_PLUS.characters();
  KelBufferedWstring<16u> shownText;
  unsigned short units[16];
  unsigned char external[11] = {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9, 0xD9};
  int size = sizeof external;
  for (const int settings : {0, 1, 2, 3}) {
    const bool isStrict = settings % 2 != 0, padIsUnicode = settings / 2 != 0;
    const auto pad = static_cast<unsigned short>(padIsUnicode ? '*' : 0x5C);
    DataCnv cnv = converterFor(37, eEndianBig, eEndianBig, eFloatIeeeBig, isStrict);
    const auto read = [&](auto call, int line = __builtin_LINE()) {
      expectNone(
          [&] {
            call(text.characters(), 16, false, 2, point.characters(), eSignTrailingSeparate, minus, plus, eTrimPadding,
                 eJustifyRight, pad, padIsUnicode);
          },
          line);
    };
    read([&](auto... a) { cnv.StrToDbl(a...); });
    read([&](auto... a) { cnv.StrToDec(a...); });
    expectNone([&] {
      cnv.StrToInt64(integer.characters(), 9, eSignLeadingSeparate, minus, plus, eTrimPadding, eJustifyRight, pad,
                     padIsUnicode);
    });
    expectNone([&] { cnv.StrToDbl(plain.characters(), 16); });
    expectNone([&] { cnv.PWFStringTodouble(plain); });
    expectNone([&] { cnv.UStringToInt64(integer); });
    expectNone([&] { cnv.RawCharsToPWFData(reinterpret_cast<const char*>(external), 10); });

    const auto write = [&](auto call, int line = __builtin_LINE()) {
      expectNone(
          [&] {
            int length = 16;
            call(length, eSignTrailingSeparate, minus, plus, true, eJustifyRight, pad, padIsUnicode);
          },
          line);
    };
    write([&](int& length, auto... look) { cnv.StrFromInt64(-123456, units, length, look...); });
    write([&](int& length, auto... look) { cnv.StrFromInt64(-123456, shownText, length, look...); });
    write([&](int& length, auto... look) {
      cnv.StrFromDbl(-1234.56, units, length, false, 2, point.characters(), look...);
    });
    write([&](int& length, auto... look) {
      cnv.StrFromDec(decimal.characters(), units, length, false, 2, point.characters(), look..., true);
    });

    const auto convert = [&](auto call, int line = __builtin_LINE()) {
      expectNone([&] { call(eSignTrailingIncluded, eJustifyRight, pad, padIsUnicode, false, kNoTable, kNoTable); },
                 line);
    };
    convert([&](auto... form) { cnv.ExtDecFromDec(decimal.characters(), external, size, 2, form...); });
    convert([&](auto... form) { cnv.ExtDecToDec(external, size, 2, form...); });
    convert([&](auto... form) { cnv.ExtDecToDbl(external, size, 2, form...); });
    convert([&](auto... form) { cnv.ExtDecToInt64(external, size, form...); });
    convert([&](auto... form) { cnv.ExtDecFromDbl(-1234.56, external, size, 2, form...); });
    convert([&](auto... form) { cnv.ExtDecFromInt64(-123456, external, size, form...); });
  }
}

TEST(Allocations, DateTimesDurationsAndComparisonsMakeNone) {
  DataCnv cnv = converterFor(37);
  const KelWstring text = u"2001-02-03T04:05:06.789+01:00"_k, pattern = u"yyyy-MM-dd'T'HH:mm:ss.SSSZZZ"_k,
                   time = u"HH:mm:ss.SSSZZZ"_k, iso = u"I"_k, fields = u"yyyyMMddHHmmss"_k,
                   epoch = u"2001-02-03T04:05+06:00"_k, duration = u"-P1DT2H3M4.5S"_k;
  const PWFData decimal(u"-1234567.8900"_k.characters(), DECIMAL), other(u"-01234567.89"_k.characters(), DECIMAL);
  expectNone([&] { cnv.StrFromInterval(cnv.StrToInterval(duration.characters(), -1)); });
  expectNone([&] { EXPECT_TRUE(decimal == other); });
  unsigned char bytes[14] = {};
  PWFDateTime value = cnv.StrToDateTime(text.characters(), pattern.characters(), -1);
  for (const KelWstring& each : {pattern, iso})
    expectNone([&] { cnv.StrToDateTime(text.characters(), each.characters(), 29); });
  expectNone([&] { cnv.BinaryFromDateTime(value, bytes, sizeof bytes, fields.characters()); });
  expectNone([&] { cnv.BinaryToDateTime(bytes, sizeof bytes, fields.characters()); });
  expectNone([&] { cnv.MilliSecondsToDateTime(1, epoch.characters()); });
  expectNone([&] { cnv.MilliSecondsFromDateTime(value, epoch.characters()); });
  expectNone([&] { cnv.StrFromDateTime(value, DataCnv::DATE_PATTERN.characters(), nullptr); });
  const auto written = [&] { cnv.StrFromDateTime(value, pattern.characters(), nullptr); };
  EXPECT_EQ(allocationsOf(written), 1u) << "the long text's block";
  EXPECT_EQ(allocationsOf([&] { cnv.StrToDateTime(text.characters() + 11, time.characters(), 18), written(); }), 1u)
      << "patterns that take turns are kept";
}

}  // namespace
}  // namespace oxr::test
