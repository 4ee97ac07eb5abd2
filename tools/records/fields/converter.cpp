#include "records/fields/converter.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "kelwstringconvertor.hpp"
#include "records/fields/datepattern.hpp"
#include "records/fields/editedpicture.hpp"
#include "records/fields/hexfloat.hpp"
#include "records/fields/numbers.hpp"

// Each kind of field goes to the operation of DataCnv that reads it. What is done beside that is said where it is done:
// blanks that would be trimmed later are left out before they cost anything, and values that the library lets pass are
// refused where a picture does not allow them.

namespace oxr::rec {

namespace {

bool asksForMore(const PhysicalForm& form) {
  return form.blankNumbers != EmptyNumber::isError || form.lowValues != EmptyNumber::isError || form.lenientNumbers ||
         form.editedAsNumber || form.packedSign == SignEnd::leading || !form.date.empty();
}

}  // namespace

EFloatFmt floatFormat(FloatForm form) {
  switch (form) {
    case FloatForm::ieeeBig:
      return eFloatIeeeBig;
    case FloatForm::ieeeLittle:
      return eFloatIeeeLittle;
    default:
      return eFloatHexadecimal;
  }
}

FieldConverter::FieldConverter(const PhysicalForm& form)
    : form_(form),
      isSpecial_(asksForMore(form)),
      cnv_(form.ccsid, form.integerEndian, eEndianBig, floatFormat(form.floats), kCenturyWindow, nullptr, false,
           nullptr, 0, false, kPositivePackedSign, false, eMessageStandardDefault, nullptr) {
  lookUpBytes();
  if (form.date.empty()) return;
  const DatePattern pattern = readDatePattern(form.date);
  datePattern_ = fromUtf8(form.date);
  isoPattern_ = fromUtf8(pattern.iso);
  dateDigits_ = pattern.digits;
}

PWFData FieldConverter::other(const Step& step, const unsigned char* bytes, std::uint32_t size) {
  switch (step.kind) {
    case Kind::unsignedPacked:
      return unsignedPacked(step, bytes, size);
    case Kind::shortFloat:
    case Kind::longFloat:
      return real(step, bytes, size);
    case Kind::national:
      return national(bytes, size);
    case Kind::dbcs:
      return doubleBytes(bytes, size);
    default:
      return text(bytes, size);
  }
}

PWFData FieldConverter::special(const Step& step, const unsigned char* bytes) {
  if (auto value = empty(step, bytes)) return *std::move(value);
  if (!form_.date.empty()) return date(step, bytes);
  if (step.kind == Kind::edited && form_.editedAsNumber) return edited(step, bytes);
  if (step.kind == Kind::external && form_.lenientNumbers) return padded(step, bytes);
  if (step.kind == Kind::packed && form_.packedSign == SignEnd::leading) return packedWithLeadingSign(step, bytes);
  return plain(step, bytes, step.size);
}

bool FieldConverter::showsZeroAsBlanks(const Step& step) {
  if (step.sign != eSignNone) return false;
  return step.kind == Kind::external ? step.isBlankWhenZero
                                     : step.edited != nullptr && step.edited->showsZeroAsBlanks();
}

// What a field means that the form says to hold no number. A date is never zero, and blanks that show a zero by
// themselves are one whatever the form says.
std::optional<PWFData> FieldConverter::empty(const Step& step, const unsigned char* bytes) {
  const bool isDate = !form_.date.empty();
  const bool isNumber =
      step.kind == Kind::external || step.kind == Kind::packed || (step.kind == Kind::edited && form_.editedAsNumber);
  if (!isDate && !isNumber) return std::nullopt;
  const unsigned char first = bytes[0];
  if ((first != 0 && first != fillBlank_) || !std::all_of(bytes, bytes + step.size, [&](auto b) { return b == first; }))
    return std::nullopt;
  if (first != 0 && showsZeroAsBlanks(step) && !isDate) return std::nullopt;
  const EmptyNumber meaning = first == 0 ? form_.lowValues : form_.blankNumbers;
  if (meaning == EmptyNumber::isError) return std::nullopt;
  if (isDate) return PWFData(STRING);
  return meaning == EmptyNumber::isNull ? PWFData(DECIMAL) : scaled(std::string_view("0"), false, step.scale);
}

PWFData FieldConverter::null(const Step& step) {
  switch (step.kind) {
    case Kind::external:
    case Kind::packed:
    case Kind::unsignedPacked:
      return PWFData(DECIMAL);
    case Kind::binary:
    case Kind::nativeBinary:
      return PWFData(INTEGER);
    case Kind::shortFloat:
    case Kind::longFloat:
      return PWFData(FLOAT);
    default:
      return PWFData(STRING);
  }
}

PWFData FieldConverter::national(const unsigned char* bytes, std::uint32_t size) {
  if (!national_)
    national_.emplace(form_.nationalCcsid, form_.integerEndian, eEndianBig, floatFormat(form_.floats), kCenturyWindow,
                      nullptr, false, nullptr, 0, false, kPositivePackedSign, false, eMessageStandardDefault, nullptr);
  return national_->RawCharsToPWFData(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
}

// The double-byte characters of an EBCDIC page have meaning between shifts only; other pages tell them by themselves.
// They are padded with a blank of their own, which is no more a part of the value than any other.
PWFData FieldConverter::doubleBytes(const unsigned char* bytes, std::uint32_t size) {
  constexpr unsigned char kShiftOut = 0x0E;
  constexpr unsigned char kShiftIn = 0x0F;
  if (cnv_.getConverter()->getMaxBytesPerChar() == 1)
    throw FieldRefused("code page " + std::to_string(form_.ccsid) + " has no double-byte characters");
  work_.assign(bytes, bytes + size);
  if (cnv_.IsCcsidEBCDIC()) {
    work_.insert(work_.begin(), kShiftOut);
    work_.push_back(kShiftIn);
  }
  PWFData value = cnv_.RawCharsToPWFData(reinterpret_cast<const char*>(work_.data()), static_cast<int>(work_.size()));
  const UnitView text = value.getPWFStringValue().view();
  const std::size_t used = text.find_last_not_of(kDoubleBlanks) + 1;
  return used == text.size() ? value : PWFData(KelWstring(text.substr(0, used)));
}

// As many places as digits, or more: the conversion would put the point, or zeros, before a minus. So the point is
// placed while the minus is away.
PWFData FieldConverter::packedPlaces(const Step& step, const unsigned char* bytes, int size) {
  const PWFData digits = cnv_.PckdDecToDec(bytes, size, 0, step.sign);
  UnitView text(digits.getDecimalValue(), static_cast<std::size_t>(digits.getDecimalLength()));
  const bool isNegative = text[0] == '-';
  if (isNegative) text.remove_prefix(1);
  return scaled(toUtf8(text), isNegative, step.scale);
}

// Moves the first half byte behind the last one.
PWFData FieldConverter::packedWithLeadingSign(const Step& step, const unsigned char* bytes) {
  work_.resize(step.size);
  for (std::uint32_t i = 0; i < step.size; ++i) {
    const unsigned next = i + 1 < step.size ? bytes[i + 1] : bytes[0];
    work_[i] = static_cast<unsigned char>(bytes[i] << 4 | next >> 4);
  }
  return packed(step, work_.data(), step.size);
}

PWFData FieldConverter::unsignedPacked(const Step& step, const unsigned char* bytes, std::uint32_t size) {
  KelWstring digits;
  cnv_.TLOGPckdStrToStr(bytes, digits, static_cast<int>(size), eEndianBig);
  const std::string text = toUtf8(digits.view());
  if (text.find_first_not_of("0123456789") != std::string::npos)
    throw FieldRefused("not a packed number without a sign");
  return scaled(text, false, step.scale);
}

// With decimal places, or of another size.
PWFData FieldConverter::otherBinary(const Step& step, const unsigned char* bytes, std::uint32_t length) {
  if (!isIntegerSize(length)) return wideBinary(step, bytes, length);
  const auto size = static_cast<int>(length);
  if (step.sign == eSignNone) return scaled(cnv_.UIntToUInt64(bytes, size), false, step.scale);
  const PWFInt64 value = cnv_.IntToInt64(bytes, size, step.sign);
  const auto bits = static_cast<std::uint64_t>(value);
  return scaled(value < 0 ? std::uint64_t{0} - bits : bits, value < 0, step.scale);
}

PWFData FieldConverter::wideBinary(const Step& step, const unsigned char* bytes, std::uint32_t size) {
  const WideInteger number = readWideInteger({bytes, size}, form_.integerEndian, step.sign != eSignNone);
  const PWFData value = scaled(number.digits, number.isNegative, step.scale);
  if (step.scale != 0 || size > 8) return value;
  return PWFData(
      cnv_.UStringToInt64(KelWstring(value.getDecimalValue(), static_cast<unsigned>(value.getDecimalLength()))), false);
}

PWFData FieldConverter::real(const Step& step, const unsigned char* bytes, std::uint32_t size) {
  std::optional<LongFloat> hexadecimal;
  if (isHexadecimal(form_.floats)) {
    hexadecimal = normalized({bytes, size}, form_.floats == FloatForm::hexLittle);
    if (!hexadecimal) throw FieldRefused("a number too small for a fraction that begins with no zero");
    bytes = hexadecimal->data();
    size = sizeof *hexadecimal;
  }
  const double value = cnv_.FltToDbl(bytes, static_cast<int>(size));
  if (!std::isfinite(value)) throw FieldRefused(std::isnan(value) ? "not a number (NaN)" : "an infinite number");
  // Below the normal IEEE floats the digits of one are too few.
  const bool isFloat = step.kind == Kind::shortFloat && (!hexadecimal || std::isnormal(static_cast<float>(value)));
  return PWFData(isFloat ? withDigitsOfFloat(value) : value);
}

// An S among editing symbols has no character of its own: the sign shares the byte of the last digit.
PWFData FieldConverter::edited(const Step& step, const unsigned char* bytes) {
  if (step.sign != eSignNone) {
    const auto width = static_cast<std::uint32_t>(cnv_.getConverter()->getMinBytesPerChar());
    const unsigned char* const end = bytes + step.size / width * width;
    const unsigned char* point = bytes;
    while (point != end && text(point, width).getPWFStringValue().view() != DataCnv::US_DECIMAL.view())
      point += width;
    work_.assign(bytes, point);
    if (point != end) work_.insert(work_.end(), point + width, end);
    if (work_.empty()) throw FieldRefused("an edited number without a digit");
    Step digits = step;
    digits.scale = static_cast<std::int16_t>(point == end ? step.scale : (end - point) / width - 1);
    return external(digits, work_.data(), static_cast<std::uint32_t>(work_.size()));
  }
  const PWFData shown = text(bytes, step.size);
  const UnitView units = shown.getPWFStringValue().view();
  const std::optional<EditedNumber> number = step.edited->read(units);
  if (number)
    return scaled(number->digits, number->isNegative,
                  number->places ? static_cast<int>(*number->places) : int{step.scale});
  throw FieldRefused("no edited number");
}

PWFData FieldConverter::date(const Step& step, const unsigned char* bytes) {
  const KelWstring text = dateText(step, bytes);
  if (isNegative(step, text)) throw FieldRefused("a number below zero is no date");
  const PWFDateTime value =
      cnv_.StrToDateTime(text.characters(), datePattern_.characters(), static_cast<int>(text.length()));
  return cnv_.StrFromDateTime(value, isoPattern_.characters(), nullptr);
}

// The text of the field, or its number, "-" before it; without that its digits: as many as the pattern has, where only
// leading zeros are missing or too many.
KelWstring FieldConverter::dateText(const Step& step, const unsigned char* bytes) {
  Step whole = step;
  whole.scale = 0;
  const PWFData value = step.kind == Kind::packed && form_.packedSign == SignEnd::leading
                            ? packedWithLeadingSign(whole, bytes)
                            : plain(whole, bytes, step.size);
  if (value.getDataLogicalType() == STRING) {
    UnitView text = value.getPWFStringValue().view();
    while (!text.empty() && text.back() == ' ')
      text.remove_suffix(1);
    return KelWstring(text);
  }
  std::string digits;
  if (value.getDataLogicalType() == INTEGER)
    digits = std::to_string(value.getInt64Value());
  else
    digits = toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
  if (digits[0] == '-') return fromUtf8(digits);
  if (digits.size() < dateDigits_) digits.insert(0, dateDigits_ - digits.size(), '0');
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - dateDigits_));
  return fromUtf8(digits);
}

PWFData FieldConverter::scaled(std::uint64_t magnitude, bool isNegative, int scale) {
  char digits[20];
  const char* const end = std::to_chars(digits, digits + sizeof digits, magnitude).ptr;
  return scaled(std::string_view(digits, static_cast<std::size_t>(end - digits)), isNegative, scale);
}

PWFData FieldConverter::scaled(std::string_view digits, bool isNegative, int scale) {
  KelBufferedWstring<16u> text;
  unsigned short* units = text.resizeForOverwrite(static_cast<unsigned>(digits.size()));
  for (const char digit : digits)
    *units++ = static_cast<unsigned char>(digit);
  cnv_.adjustDecimalForString(text, scale);
  if (isNegative) text.insertInternal(0, DataCnv::US_MINUS.characters(), 1, 0);
  return PWFData(text.characters(), DECIMAL);
}

}  // namespace oxr::rec
