#include "records/fields/writer.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include "kelwstringconvertor.hpp"
#include "records/counted.hpp"
#include "records/fields/converter.hpp"
#include "records/fields/datepattern.hpp"
#include "records/fields/editedpicture.hpp"
#include "records/fields/hexfloat.hpp"

// Each kind of field goes to the operation of DataCnv that writes it. The operations cut what does not fit, drop the
// sign of an unsigned field, or say too little about it; so a number is looked at before, as text.

namespace oxr::rec {

namespace {

__extension__ typedef unsigned __int128 Wide;

constexpr std::uint32_t kWordBytes = 8;

bool isSeparate(ESign sign) {
  return sign == eSignLeadingSeparate || sign == eSignTrailingSeparate;
}

std::string shown(UnitView text) {
  constexpr std::size_t kShown = 50;
  return toUtf8(text.substr(0, kShown)) + (text.size() > kShown ? "..." : "");
}

// Where the largest number of a binary field ends, as a magnitude.
Wide limitOf(std::uint32_t size, bool isSigned, bool isNegative) {
  const unsigned bits = 8 * size - (isSigned ? 1 : 0);
  const Wide end = bits == 128 ? 0 : static_cast<Wide>(1) << bits;
  return isNegative && isSigned ? end : end - 1;
}

// The stored digits as a number, and whether they are too many for one.
std::pair<Wide, bool> magnitudeOf(const DecimalText& number, int scale) {
  constexpr int kDigitsOfWord = 19;
  std::uint64_t word = 0;
  if (static_cast<int>(number.whole.size()) + scale <= kDigitsOfWord) {
    forEachStoredDigit(number, scale, [&](unsigned digit) { word = 10 * word + digit; });
    return {word, false};
  }
  Wide wide = 0;
  bool isTooLarge = false;
  forEachStoredDigit(number, scale, [&](unsigned digit) {
    isTooLarge |= __builtin_mul_overflow(wide, static_cast<unsigned>(10), &wide);
    isTooLarge |= __builtin_add_overflow(wide, digit, &wide);
  });
  return {wide, isTooLarge};
}

// Moves the sign of a packed field from its last half byte to its first.
void putSignFirst(unsigned char* bytes, std::uint32_t size) {
  const unsigned char sign = bytes[size - 1] & 0x0F;
  for (std::uint32_t at = size; at-- > 0;)
    bytes[at] = static_cast<unsigned char>((bytes[at] >> 4) | ((at == 0 ? sign : bytes[at - 1] & 0x0F) << 4));
}

double doubleIn(Kind kind, FloatForm form, const std::string& text) {
  const char* const end = text.data() + text.size();
  double wide = 0;
  const auto read = std::from_chars(text.data(), end, wide);
  if (read.ec == std::errc::result_out_of_range) throw FieldRefused(text + " is too large or too small for a float");
  if (read.ec != std::errc() || read.ptr != end || !std::isfinite(wide))
    throw FieldRefused('"' + text + "\" is no number");
  // Below its normal numbers a float has fewer digits, which a hexadecimal one has not.
  float narrow = 0;
  const bool isNarrow = kind == Kind::shortFloat && std::from_chars(text.data(), end, narrow).ec == std::errc() &&
                        (!isHexadecimal(form) || narrow == 0 || std::isnormal(narrow));
  return isNarrow ? double{narrow} : wide;
}

}  // namespace

FieldWriter::FieldWriter(const PhysicalForm& form)
    : form_(form),
      cnv_(form.ccsid, form.integerEndian, eEndianBig, floatFormat(form.floats), kCenturyWindow, nullptr, false,
           nullptr, 0, true, form.plus != 0 ? static_cast<char>(form.plus) : kPositivePackedSign, false,
           eMessageStandardDefault, nullptr),
      text_(cnv_, form.ccsid, FieldTextWriter::Part::whole) {
  if (form.date.empty()) return;
  datePattern_ = fromUtf8(form.date);
  isoPattern_ = fromUtf8(readDatePattern(form.date).iso);
}

void FieldWriter::write(const Step& step, const PWFData& value, unsigned char* bytes) {
  if (!form_.date.empty()) return date(step, value, bytes);
  if (step.edited != nullptr) return edited(step, value, bytes);
  plain(step, value, bytes);
}

void FieldWriter::plain(const Step& step, const PWFData& value, unsigned char* bytes) {
  switch (step.kind) {
    case Kind::external:
      return external(step, value, bytes);
    case Kind::packed:
      return packed(step, value, bytes);
    case Kind::unsignedPacked:
      return unsignedPacked(step, value, bytes);
    case Kind::binary:
    case Kind::nativeBinary:
      return binary(step, value, bytes);
    case Kind::shortFloat:
    case Kind::longFloat:
      return floating(step, value, bytes);
    default:
      break;
  }
  if (value.getDataLogicalType() != STRING) throw FieldRefused("a text is wanted, in quotes");
  textOf(step.kind).write(value.getPWFStringValue(), step.isJustifiedRight, bytes, step.size);
}

bool FieldWriter::writeNull(const Step& step, unsigned char* bytes) {
  const bool isNumber = step.kind == Kind::external || step.kind == Kind::packed || step.edited != nullptr;
  if (!isNumber && form_.date.empty()) return false;
  const auto isNull = [this](EmptyNumber meaning) {
    return meaning == EmptyNumber::isNull || (meaning == EmptyNumber::isZero && !form_.date.empty());  // as it is read
  };
  const bool areBlanksZero = form_.date.empty() && FieldConverter::showsZeroAsBlanks(step);
  if (isNull(form_.blankNumbers) && !areBlanksZero)
    text_.fillWithBlanks(bytes, step.size);
  else if (isNull(form_.lowValues))
    std::memset(bytes, 0, step.size);
  else
    return false;
  return true;
}

FieldWriter::Number FieldWriter::numberOf(const PWFData& value) {
  UnitView text;
  switch (value.getDataLogicalType()) {
    case DECIMAL:
      text = {value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())};
      break;
    case STRING:
      text = value.getPWFStringValue().view();
      break;
    case INTEGER: {
      char digits[20];
      const char* const end = std::to_chars(digits, digits + sizeof digits, value.getInt64Value()).ptr;
      scratch_.assign(static_cast<const char*>(digits), end);
      text = scratch_;
      break;
    }
    case FLOAT: {
      KelWstring digits;
      cnv_.doubleToUString(value.getDoubleValue(), digits, false);
      scratch_.assign(digits.view());
      text = scratch_;
      break;
    }
    default:
      throw FieldRefused("a number is wanted");
  }
  Number number;
  if (!readDecimal(text, number.parts)) {
    const auto plain = withoutExponent(text);
    if (!plain) throw FieldRefused('"' + shown(text) + "\" is no number");
    scratch_ = *plain;
    text = scratch_;
    readDecimal(text, number.parts);
  }
  number.text = text.data();
  return number;
}

// The number, if it fits `digits` digits with the places of the step and the sign that it has.
FieldWriter::Number FieldWriter::fitting(const Step& step, const PWFData& value, std::size_t digits) {
  const Number number = numberOf(value);
  const StoredDigits stored = storedDigits(number.parts, step.scale);
  if (stored.losesPlaces)
    throw FieldRefused(
        step.scale < 0
            ? shown(number.text) + " is no multiple of 1" + std::string(static_cast<std::size_t>(-step.scale), '0')
            : shown(number.text) + " has more decimal places than the field's " + std::to_string(step.scale));
  if (stored.count > digits)
    throw FieldRefused(shown(number.text) + " needs " + counted(stored.count, "digit") + ", and the field has " +
                       std::to_string(digits));
  if (number.parts.isNegative && step.sign == eSignNone)
    throw FieldRefused(shown(number.text) + " is negative, and the field has no sign");
  return number;
}

void FieldWriter::external(const Step& step, const PWFData& value, unsigned char* bytes) {
  const std::size_t digits = step.size - (isSeparate(step.sign) ? 1 : 0);
  const Number number = fitting(step, value, digits);
  const bool isZero = number.parts.isZero;
  if (isZero && step.isBlankWhenZero) return text_.fillWithBlanks(bytes, step.size);
  // Zero has no places to move, and would lose its sign with its digit.
  const int scale = isZero ? 0 : step.scale;
  int size = static_cast<int>(step.size);
  cnv_.ExtDecFromDec(number.text, bytes, size, scale, step.sign, eJustifyRight, '0', true, form_.hasLetterSigns,
                     nullptr, nullptr);
  const bool isIncluded = step.sign == eSignLeadingIncluded || step.sign == eSignTrailingIncluded;
  // No other zone than these two is read as a plus.
  if ((form_.plus != 0xC && form_.plus != 0xF) || !isIncluded || number.parts.isNegative || !cnv_.IsCcsidEBCDIC())
    return;
  unsigned char& carrier = bytes[step.sign == eSignLeadingIncluded ? 0 : step.size - 1];
  carrier = static_cast<unsigned char>(form_.plus << 4 | (carrier & 0x0F));
}

void FieldWriter::packed(const Step& step, const PWFData& value, unsigned char* bytes) {
  const Number number = fitting(step, value, 2 * std::size_t{step.size} - 1);
  const int scale = number.parts.isZero ? 0 : step.scale;
  cnv_.PckdDecFromDec(number.text, bytes, static_cast<int>(step.size), scale, step.sign);
  if (form_.plus != 0 && step.sign == eSignNone)
    bytes[step.size - 1] = static_cast<unsigned char>((bytes[step.size - 1] & 0xF0) | form_.plus);
  if (form_.packedSign == SignEnd::leading) putSignFirst(bytes, step.size);
}

// The number as its picture shows it.
void FieldWriter::edited(const Step& step, const PWFData& value, unsigned char* bytes) {
  if (step.sign != eSignNone) return withIncludedSign(step, value, bytes);
  const EditedPicture& picture = *step.edited;
  Step fit = step;
  if (picture.isSigned()) fit.sign = eSignLeadingIncluded;
  const Number number = fitting(fit, value, picture.digits());
  std::string digits(picture.digits(), '0');
  forEachStoredDigit(number.parts, step.scale, [&digits](unsigned digit) {
    digits.erase(0, 1);
    digits += static_cast<char>('0' + digit);
  });
  const std::string text = picture.edit(digits, number.parts.isNegative, form_.hasEditedPlus ? '+' : ' ');
  text_.write(fromUtf8(text), false, bytes, step.size);
}

// A DISPLAY number with a point, or another character of the picture, between its digits.
void FieldWriter::withIncludedSign(const Step& step, const PWFData& value, unsigned char* bytes) {
  const std::string& symbols = step.edited->symbols();
  if (symbols.find_first_not_of("9.") != std::string::npos || symbols.size() != step.size)
    throw FieldRefused("a picture with an S and other symbols than 9 and a point cannot be written");
  Step number = step;
  number.kind = Kind::external;
  number.size = static_cast<std::uint32_t>(step.edited->digits());
  std::vector<unsigned char> digits(number.size);
  external(number, value, digits.data());
  text_.write(fromUtf8(symbols), false, bytes, step.size);
  std::size_t next = 0;
  for (std::size_t i = 0; i < symbols.size(); ++i)
    if (symbols[i] == '9') bytes[i] = digits[next++];
}

// The date by the field's pattern: as text, or as the digits of a number. What the pattern has no place for is refused.
void FieldWriter::date(const Step& step, const PWFData& value, unsigned char* bytes) {
  if (value.getDataLogicalType() != STRING) throw FieldRefused("a date is wanted, in quotes");
  const KelWstring& given = value.getPWFStringValue();
  const auto inForm = [this](const KelWstring& text, const KelWstring& from, const KelWstring& to) {
    const PWFDateTime date = cnv_.StrToDateTime(text.characters(), from.characters(), static_cast<int>(text.length()));
    return cnv_.StrFromDateTime(date, to.characters(), nullptr);
  };
  const PWFData text = inForm(given, isoPattern_, datePattern_);
  const PWFData back = inForm(text.getPWFStringValue(), datePattern_, isoPattern_);
  if (!(back.getPWFStringValue() == given))
    throw FieldRefused(shown(given.view()) + " is none of the dates that " + form_.date + " has: it reads as " +
                       toUtf8(back.getPWFStringValue()));
  Step whole = step;
  whole.scale = 0;
  whole.isBlankWhenZero = false;
  plain(whole, text, bytes);
}

// The digits of a packed number that is a byte longer, without its first half byte, which is zero, and its last.
void FieldWriter::unsignedPacked(const Step& step, const PWFData& value, unsigned char* bytes) {
  const Number number = fitting(step, value, 2 * std::size_t{step.size});
  const int scale = number.parts.isZero ? 0 : step.scale;
  std::vector<unsigned char> packed(std::size_t{step.size} + 1);
  cnv_.PckdDecFromDec(number.text, packed.data(), static_cast<int>(packed.size()), scale, eSignNone);
  for (std::size_t i = 0; i < step.size; ++i)
    bytes[i] = static_cast<unsigned char>(packed[i] << 4 | packed[i + 1] >> 4);
}

void FieldWriter::binary(const Step& step, const PWFData& value, unsigned char* bytes) {
  constexpr std::size_t kMostDigits = 39;  // of 16 bytes: they fit 128 bits if the last one does
  const Number number = fitting(step, value, kMostDigits);
  const auto [magnitude, isTooLarge] = magnitudeOf(number.parts, step.scale);
  const bool isSigned = step.sign != eSignNone;
  const bool isNegative = number.parts.isNegative && isSigned;
  if (isTooLarge || magnitude > limitOf(step.size, isSigned, isNegative))
    throw FieldRefused(shown(number.text) + " is too large for the field's " + counted(step.size, "byte"));
  const Wide bits = isNegative ? -magnitude : magnitude;
  if (step.size > kWordBytes)
    return wideBinary(step, static_cast<std::uint64_t>(bits >> 64), static_cast<std::uint64_t>(bits), bytes);
  // As bits of a signed number, since an unsigned one may pass that range.
  const unsigned spare = 64 - 8 * step.size;
  const auto word = static_cast<std::int64_t>(static_cast<std::uint64_t>(bits) << spare) >> spare;
  if ((step.size & (step.size - 1)) == 0)
    return cnv_.IntFromInt64(word, bytes, static_cast<int>(step.size), eSignLeadingIncluded);
  // A size that the conversion does not have: the lower bytes of a word.
  unsigned char whole[kWordBytes];
  cnv_.IntFromInt64(word, whole, kWordBytes, eSignLeadingIncluded);
  std::memcpy(bytes, form_.integerEndian == eEndianLittle ? whole : whole + kWordBytes - step.size, step.size);
}

// A wide number is two words, of the upper of which the field has the lower bytes.
void FieldWriter::wideBinary(const Step& step, std::uint64_t upper, std::uint64_t lower, unsigned char* bytes) {
  const std::uint32_t kept = step.size - kWordBytes;
  const bool isLittle = form_.integerEndian == eEndianLittle;
  unsigned char word[kWordBytes];
  cnv_.IntFromInt64(static_cast<std::int64_t>(upper), word, kWordBytes, eSignLeadingIncluded);
  std::memcpy(isLittle ? bytes + kWordBytes : bytes, isLittle ? word : word + kWordBytes - kept, kept);
  cnv_.IntFromInt64(static_cast<std::int64_t>(lower), isLittle ? bytes : bytes + kept, kWordBytes,
                    eSignLeadingIncluded);
}

// The shortest digits of a float are those of no double: they are read as what the field holds.
double FieldWriter::doubleOf(const Step& step, const PWFData& value) {
  const ELogicalType type = value.getDataLogicalType();
  if (type == FLOAT) return value.getDoubleValue();
  if (type != STRING && type != DECIMAL)
    return doubleIn(step.kind, form_.floats, toUtf8(UnitView(numberOf(value).text)));
  return doubleIn(step.kind, form_.floats, toUtf8(UnitView(static_cast<const unsigned short*>(value.getDataValue()))));
}

void FieldWriter::floating(const Step& step, const PWFData& value, unsigned char* bytes) {
  constexpr double kNearly = 0x1p-20;  // a hexadecimal fraction of four bytes keeps more bits than that
  const double number = doubleOf(step, value);
  // A short hexadecimal float is a long one that ends with zeros, and has the range of one.
  const bool isShortHex = isHexadecimal(form_.floats) && step.size < sizeof(LongFloat);
  const auto isNearly = [&](const LongFloat& written) {
    const double back = cnv_.FltToDbl(written.data(), static_cast<int>(isShortHex ? sizeof written : step.size));
    return std::abs(back - number) <= std::abs(number) * kNearly;
  };
  LongFloat written{};
  cnv_.FltFromDbl(number, written.data(), static_cast<int>(step.size));
  if (isShortHex) {
    LongFloat whole{};
    cnv_.FltFromDbl(number, whole.data(), sizeof whole);
    const bool isExact =
        std::all_of(whole.begin() + step.size, whole.end(), [](unsigned char byte) { return byte == 0; });
    std::fill(whole.begin() + step.size, whole.end(), static_cast<unsigned char>(0));
    if (isExact || !isNearly(written)) written = whole;
  }
  if (!isNearly(written)) throw FieldRefused("the number is too large or too small for the field's float");
  if (form_.floats == FloatForm::hexLittle) std::reverse(written.begin(), written.begin() + step.size);
  std::memcpy(bytes, written.data(), step.size);
}

FieldTextWriter& FieldWriter::textOf(Kind kind) {
  if (kind == Kind::dbcs) {
    if (!doubleByte_) doubleByte_.emplace(cnv_, form_.ccsid, FieldTextWriter::Part::doubleByte);
    return *doubleByte_;
  }
  if (kind != Kind::national) return text_;
  if (!national_) {
    nationalCnv_.emplace(form_.nationalCcsid, form_.integerEndian, eEndianBig, eFloatIeeeBig, kCenturyWindow, nullptr,
                         false, nullptr, 0, true, kPositivePackedSign, false, eMessageStandardDefault, nullptr);
    national_.emplace(*nationalCnv_, form_.nationalCcsid, FieldTextWriter::Part::whole);
  }
  return *national_;
}

}  // namespace oxr::rec
