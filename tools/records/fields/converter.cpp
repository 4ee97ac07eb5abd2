#include "records/fields/converter.hpp"

#include <charconv>
#include <cstring>
#include <limits>

#include "kelwstringconvertor.hpp"

// Each kind of field goes to the operation of DataCnv that reads it. What is done beside that is said where it is done:
// blanks that would be trimmed later are left out before they cost anything, and values that the library lets pass are
// refused where a picture does not allow them.

namespace oxr::rec {

namespace {

constexpr EFloatFmt kFloatFormat = eFloatHexadecimal;  // no float is read
constexpr int kCenturyWindow = 53;
constexpr char kPositivePackedSign = 12;

// Whether a text is what a decimal ought to be. The library also lets grouping commas pass (test
// Decode.ReadsEachKindOfField).
bool isPlainDecimal(UnitView text) {
  std::size_t at = !text.empty() && text[0] == '-' ? 1 : 0;
  bool hasDigit = false;
  bool hasPoint = false;
  for (; at < text.size(); ++at) {
    const bool isDigit = text[at] >= '0' && text[at] <= '9';
    if (!isDigit && (text[at] != '.' || hasPoint)) return false;
    hasDigit |= isDigit;
    hasPoint |= !isDigit;
  }
  return hasDigit;
}

// The size without the trailing bytes that equal `byte`.
std::uint32_t withoutTrailing(unsigned char byte, const unsigned char* bytes, std::uint32_t size) {
  const std::uint64_t eight = 0x0101010101010101U * byte;
  while (size >= sizeof eight && std::memcmp(bytes + size - sizeof eight, &eight, sizeof eight) == 0)
    size -= sizeof eight;
  while (size != 0 && bytes[size - 1] == byte)
    --size;
  return size;
}

}  // namespace

FieldConverter::FieldConverter(const PhysicalForm& form)
    : hasLetterSigns_(form.hasLetterSigns),
      cnv_(form.ccsid, form.integerEndian, eEndianBig, kFloatFormat, kCenturyWindow, nullptr, false, nullptr, 0, true,
           kPositivePackedSign, false, eMessageStandardDefault, nullptr) {
  const CPUnicodeConverter& converter = *cnv_.getConverter();
  if (converter.getMinBytesPerChar() != 1 || converter.getMaxBytesPerChar() != 1) return;
  constexpr unsigned short kBlank = ' ';
  int size = 1;
  cnv_.fromUnicodeString(KelWstring(&kBlank, 1), &blank_, size);
}

PWFData FieldConverter::convert(const Step& step, const unsigned char* bytes) {
  switch (step.kind) {
    case Kind::external:
      return external(step, bytes);
    case Kind::packed:
      return packed(step, bytes);
    case Kind::binary:
    case Kind::nativeBinary:
      return binary(step, bytes);
    default:
      return text(bytes, step.size);
  }
}

PWFData FieldConverter::null(const Step& step) {
  switch (step.kind) {
    case Kind::external:
    case Kind::packed:
      return PWFData(DECIMAL);
    case Kind::binary:
    case Kind::nativeBinary:
      return PWFData(INTEGER);
    default:
      return PWFData(STRING);
  }
}

// Four blanks of five in a file stand at the end of a field: without them most texts are short enough to stay inside
// their value.
PWFData FieldConverter::text(const unsigned char* bytes, std::uint32_t size) {
  if (blank_ != 0) {
    size = withoutTrailing(blank_, bytes, size);
    if (size == 0) return PWFData(KelWstring());
  }
  return cnv_.RawCharsToPWFData(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
}

// Nothing is trimmed, so blanks are no digits; a field that may be blank for zero loses its leading blanks.
PWFData FieldConverter::external(const Step& step, const unsigned char* bytes) {
  PWFData value = cnv_.ExtDecToDec(bytes, static_cast<int>(step.size), step.scale, step.sign,
                                   step.isBlankWhenZero ? eJustifyRight : eJustifyNone, ' ', true, hasLetterSigns_,
                                   nullptr, nullptr);
  const UnitView text(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength()));
  if (!isPlainDecimal(text)) throw FieldRefused("\"" + toUtf8(text) + "\" is no number of digits");
  return value;
}

PWFData FieldConverter::packed(const Step& step, const unsigned char* bytes) {
  const auto size = static_cast<int>(step.size);
  if (step.scale < 2 * size - 1) return cnv_.PckdDecToDec(bytes, size, step.scale, step.sign);
  // As many places as digits, or more: the conversion would put the point, or zeros, before a minus. So the point
  // is placed while the minus is away.
  const PWFData digits = cnv_.PckdDecToDec(bytes, size, 0, step.sign);
  UnitView text(digits.getDecimalValue(), static_cast<std::size_t>(digits.getDecimalLength()));
  const bool isNegative = text[0] == '-';
  if (isNegative) text.remove_prefix(1);
  KelBufferedWstring<16u> shifted(text);
  cnv_.adjustDecimalForString(shifted, step.scale);
  if (isNegative) shifted.insertInternal(0, DataCnv::US_MINUS.characters(), 1, 0);
  return PWFData(shifted.characters(), DECIMAL);
}

PWFData FieldConverter::binary(const Step& step, const unsigned char* bytes) {
  const auto size = static_cast<int>(step.size);
  if (step.sign == eSignNone) {
    const PWFUInt64 value = cnv_.UIntToUInt64(bytes, size);
    if (step.scale != 0 || value > static_cast<PWFUInt64>(std::numeric_limits<PWFInt64>::max()))
      return scaled(value, false, step.scale);
    return PWFData(static_cast<PWFInt64>(value), false);
  }
  const PWFInt64 value = cnv_.IntToInt64(bytes, size, step.sign);
  if (step.scale == 0) return PWFData(value, false);
  const auto bits = static_cast<std::uint64_t>(value);
  return scaled(value < 0 ? std::uint64_t{0} - bits : bits, value < 0, step.scale);
}

PWFData FieldConverter::scaled(std::uint64_t magnitude, bool isNegative, int scale) {
  char digits[20];
  const char* const end = std::to_chars(digits, digits + sizeof digits, magnitude).ptr;
  KelBufferedWstring<16u> text;
  unsigned short* units = text.resizeForOverwrite(static_cast<unsigned>(end - digits));
  for (const char* digit = digits; digit != end; ++digit)
    *units++ = static_cast<unsigned char>(*digit);
  cnv_.adjustDecimalForString(text, scale);
  if (isNegative) text.insertInternal(0, DataCnv::US_MINUS.characters(), 1, 0);
  return PWFData(text.characters(), DECIMAL);
}

}  // namespace oxr::rec
