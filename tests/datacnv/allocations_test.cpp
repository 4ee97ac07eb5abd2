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

TEST(Allocations, FieldsOfShortTextMakeNone) {
  DataCnv converter = converterFor(37);
  const unsigned char packed[] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x5D};
  unsigned char target[8];
  const unsigned char zoned[] = {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xD9};
  const KelWstring text = u"-1234567.89"_k;
  for (const int size : {1, 3, 8})
    EXPECT_EQ(allocationsOf([&] { converter.PckdDecToDec(packed + 8 - size, size, 0, eSignTrailingIncluded); }), 0u);
  EXPECT_EQ(allocationsOf([&] { converter.PckdDecFromDec(text.characters(), target, 8, 2, eSignTrailingIncluded); }),
            0u);
  EXPECT_EQ(allocationsOf([&] {
              converter.ExtDecToDec(zoned, 10, 2, eSignTrailingIncluded, eJustifyRight, '0', true, false, nullptr,
                                    nullptr);
            }),
            0u);
  EXPECT_EQ(allocationsOf([&] { converter.RawCharsToPWFData(reinterpret_cast<const char*>(zoned), 10); }), 0u);
  EXPECT_EQ(allocationsOf([&] { converter.IntToInt64(packed, 8, eSignLeadingIncluded); }), 0u);
}

TEST(Allocations, NumbersOfShortTextMakeNone) {
  const KelWstring text = u"**1234567890,12-"_k, integer = u"-12345678"_k, plain = u"-1234567890.1234"_k,
                   point = u","_k;
  const unsigned short *const minus = DataCnv::US_MINUS.characters(), *const plus = DataCnv::US_PLUS.characters();
  for (const bool isStrict : {false, true}) {
    DataCnv converter = converterFor(37, eEndianBig, eEndianBig, eFloatIeeeBig, isStrict);
    const auto field = [&](bool padIsUnicode, auto read) {
      return allocationsOf([&] {
        read(text.characters(), 16, false, 2, point.characters(), eSignTrailingSeparate, minus, plus, eTrimPadding,
             eJustifyRight, static_cast<unsigned short>(padIsUnicode ? '*' : 0x5C), padIsUnicode);
      });
    };
    for (const bool padIsUnicode : {false, true}) {  // a pad in the code page keeps a field from the quick way
      EXPECT_EQ(field(padIsUnicode, [&](auto... a) { converter.StrToDbl(a...); }), 0u);
      EXPECT_EQ(field(padIsUnicode, [&](auto... a) { converter.StrToDec(a...); }), 0u);
      EXPECT_EQ(allocationsOf([&] {
                  converter.StrToInt64(integer.characters(), 9, eSignLeadingSeparate, minus, plus, eTrimPadding,
                                       eJustifyRight, 0x5C, padIsUnicode);
                }),
                0u);
    }
    EXPECT_EQ(allocationsOf([&] { converter.StrToDbl(plain.characters(), 16); }), 0u);
    EXPECT_EQ(allocationsOf([&] { converter.PWFStringTodouble(plain); }), 0u);
    EXPECT_EQ(allocationsOf([&] { converter.UStringToInt64(integer); }), 0u);
  }
}

TEST(Allocations, PackedAndLogFieldsAsNumbersAndTextMakeNone) {
  DataCnv converter = converterFor(819);
  const unsigned char field[] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x5D};
  unsigned char target[8];
  int written = 0;
  PWFData number(u"-123456789012345"_k.characters(), DECIMAL), digits(u"123456789012345A1234"_k);
  const auto none = [](auto call) { EXPECT_EQ(allocationsOf(call), 0u); };
  none([&] { converter.PckdDecToDbl(field, 8, 2, eSignTrailingIncluded); });
  none([&] { converter.PckdDecToPWFInt64(field, 8, 2, eSignTrailingIncluded); });
  none([&] { converter.PckdDecToInt32(field + 4, 4, 0, eSignTrailingIncluded); });
  none([&] { converter.PckdDecFromDbl(-12345678.25, target, 8, 2, eSignTrailingIncluded); });
  none([&] { converter.PckdDecFromPWFInt64(-123456789012, target, 8, 2, eSignTrailingIncluded); });
  none([&] { converter.PckdDecFromInt32(-12345678, target, 8, -2, eSignNone); });
  none([&] { converter.TLOGPckdStrToStr(field, 8, eEndianBig); });
  none([&] {
    KelBufferedWstring<16u> text;
    converter.TLOGFLPckdDecToDec(field, text, 7, eEndianLittle, eTrimPadding, eJustifyLeft, 15, false);
  });
  none([&] { converter.TLOGPWFDataToPckdDecimal(number, target, 8, eEndianBig, false, written); });
  none([&] { converter.TLOGPWFDataToPckdStr(digits, target, 8, eEndianBig); });
}

TEST(Allocations, NumbersWrittenShortMakeNone) {
  DataCnv converter = converterFor(37);
  const KelWstring decimal = u"-1234567.89"_k, point = u","_k;
  const unsigned short *const minus = DataCnv::US_MINUS.characters(), *const plus = DataCnv::US_PLUS.characters();
  KelBufferedWstring<16u> text;
  KelBufferedWstring<16u> shownText;
  unsigned short units[16];
  unsigned char zoned[11];
  int size = sizeof zoned;
  for (const bool padIsUnicode : {false, true}) {  // a pad in the code page keeps a zoned field from the quick way
    const auto pad = static_cast<unsigned short>(padIsUnicode ? '*' : 0x5C);
    const auto none = [&](auto write) {
      EXPECT_EQ(allocationsOf([&] {
                  int length = 16;
                  write(length, eSignTrailingSeparate, minus, plus, true, eJustifyRight, pad, padIsUnicode);
                }),
                0u);
    };
    none([&](int& length, auto... look) { converter.StrFromInt64(-123456, units, length, look...); });
    none([&](int& length, auto... look) { converter.StrFromInt64(-123456, shownText, length, look...); });
    none([&](int& length, auto... look) {
      converter.StrFromDbl(-1234.56, units, length, false, 2, point.characters(), look...);
    });
    none([&](int& length, auto... look) {
      converter.StrFromDec(decimal.characters(), units, length, false, 2, point.characters(), look..., true);
    });
    const auto noneZoned = [&](auto call) {
      const unsigned short* const noTable = nullptr;
      EXPECT_EQ(allocationsOf(
                    [&] { call(eSignTrailingIncluded, eJustifyRight, pad, padIsUnicode, false, noTable, noTable); }),
                0u);
    };
    noneZoned([&](auto... form) { converter.ExtDecFromDec(decimal.characters(), zoned, size, 2, form...); });
    noneZoned([&](auto... form) { converter.ExtDecToDec(zoned, size, 2, form...); });
    noneZoned([&](auto... form) { converter.ExtDecToDbl(zoned, size, 2, form...); });
    noneZoned([&](auto... form) { converter.ExtDecToInt64(zoned, size, form...); });
    noneZoned([&](auto... form) { converter.ExtDecFromDbl(-1234.56, zoned, size, 2, form...); });
    noneZoned([&](auto... form) { converter.ExtDecFromInt64(-123456, zoned, size, form...); });
  }
}

TEST(Allocations, LongTextMakesItsOneBlock) {
  DataCnv converter = converterFor(37);
  const unsigned char packed[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x1C};
  EXPECT_EQ(allocationsOf([&] { converter.PckdDecToDec(packed, 16, 0, eSignNone); }), 1u);
}

}  // namespace
}  // namespace oxr::test
