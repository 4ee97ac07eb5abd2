#include "datacnv/externalcodes.hpp"

#include <algorithm>
#include <iterator>

#include "codepage/codepage.hpp"

namespace oxr {

namespace {

constexpr unsigned short kCharacters[] = {'+', '-', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
constexpr int kCount = std::size(kCharacters);
constexpr int kRoom = 4 * kCount;  // no code page makes more of them

// Whether the bytes of the digits 0 to 9 follow each other.
bool areInOrder(const unsigned char* digits) {
  const unsigned char* const end = digits + 10;
  return std::adjacent_find(digits, end, [](int digit, int next) { return next != digit + 1; }) == end;
}

// Whether the digits share their upper half byte and are what the code page reads there.
bool haveDigitZone(unsigned char zero, const core::SingleByteTable* page) {
  if (page == nullptr || zero % 16 != 0) return false;
  for (unsigned digit = 0; digit <= 9; ++digit)
    if ((*page)[zero + digit] != '0' + digit) return false;
  return true;
}

bool holdsBytes(const DataCnv& cnv) {
  const CPUnicodeConverter* const page = DataCnvParts::converterIfMade(cnv);
  return page != nullptr && CodePage::holdsBytes(*page);
}

}  // namespace

void lookUpDigitCodes(DataCnv& cnv) {
  if (holdsBytes(cnv)) return;
  ExternalCodes& codes = DataCnvParts::externalCodes(cnv);
  unsigned char bytes[kRoom] = {};
  int size = kRoom;
  const UErrorCode status = cnv.fromUnicodeString(KelBufferedWstring<16u>(kCharacters, kCount), bytes, size);
  // A character that another code page would make of its bytes, or two of them, is not a byte of its own.
  codes.areBytes =
      U_SUCCESS(status) && size == kCount && cnv.getConverter()->getMinBytesPerChar() == 1 && areInOrder(bytes + 2);
  codes.plus = bytes[0];
  codes.minus = bytes[1];
  codes.zero = bytes[2];
  codes.haveDigitZone = codes.areBytes && haveDigitZone(codes.zero, CodePage::byteTable(*cnv.getConverter()));
  codes.areKnown = true;
}

void lookUpPadCode(DataCnv& cnv, unsigned short padChar) {
  if (holdsBytes(cnv)) return;
  unsigned char bytes[kRoom] = {};
  int size = kRoom;
  const bool areBytes = externalCodes(cnv).areBytes;
  ExternalCodes& codes = DataCnvParts::externalCodes(cnv);
  codes.padIsByte =
      areBytes && U_SUCCESS(cnv.fromUnicodeString(KelBufferedWstring<16u>(&padChar, 1), bytes, size)) && size == 1;
  codes.pad = bytes[0];
  codes.padChar = padChar;
}

}  // namespace oxr
