#include <algorithm>
#include <memory>
#include <numeric>

#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"
#include "records/fields/converter.hpp"

// What FieldConverter does with fields that are not good at the first look: a closer one, with the bytes of the code
// page at hand.

namespace oxr::rec {

namespace {

// Whether a text is what a decimal ought to be. The library also lets grouping commas pass (test
// Decode.ReadsEachKindOfField).
bool isPlainDecimal(UnitView text, bool maySayMinus) {
  std::size_t at = maySayMinus && !text.empty() && text[0] == '-' ? 1 : 0;
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

// The same grammar for characters of several bytes: they are looked at as bytes of their own. A sign that shares a byte
// with a digit has no meaning among them.
bool isOddNumber(UnitView text, const Step& step) {
  const bool isIncluded = step.sign == eSignLeadingIncluded || step.sign == eSignTrailingIncluded;
  const auto isAscii = [](unsigned short unit) { return unit < 0x80; };
  if (text.empty() || isIncluded || !std::all_of(text.begin(), text.end(), isAscii)) return false;
  PageBytes page;
  std::iota(page.units.begin(), page.units.end(), static_cast<unsigned short>(0));
  const std::vector<unsigned char> bytes(text.begin(), text.end());
  return static_cast<bool>(externalFault(bytes, {step.sign, step.isBlankWhenZero, false}, page));
}

constexpr char kCharacters[] = "0123456789+- ";
constexpr int kCount = sizeof kCharacters - 1;
constexpr std::uint16_t kEbcdicZones = 1U << 0xC | 1U << 0xD | 1U << 0xF;
constexpr std::uint16_t kAsciiZones = 1U << 3 | 1U << 7;

// Whether the digits share their upper half byte and follow each other.
bool areDigitsInOrder(const unsigned char* bytes) {
  for (int digit = 0; digit < 10; ++digit)
    if (bytes[digit] != bytes[0] + digit) return false;
  return bytes[0] % 16 == 0;
}

}  // namespace

// Where a character takes two bytes or more, none of this is a byte.
void FieldConverter::lookUpBytes() {
  const CPUnicodeConverter& converter = *cnv_.getConverter();
  if (converter.getMinBytesPerChar() != 1) return;
  unsigned char bytes[4 * kCount] = {};
  int size = sizeof bytes;
  cnv_.fromUnicodeString(fromUtf8(kCharacters), bytes, size);
  if (size != kCount) return;
  fillBlank_ = bytes[kCount - 1];
  if (converter.getMaxBytesPerChar() == 1) blank_ = fillBlank_;
  if (!areDigitsInOrder(bytes)) return;
  const bool isEbcdic = cnv_.IsCcsidEBCDIC();
  digits_ = {bytes[0], bytes[10], bytes[11],
             isEbcdic               ? kEbcdicZones
             : form_.hasLetterSigns ? std::uint16_t{}
                                    : kAsciiZones};
}

const PageBytes& FieldConverter::page() {
  if (page_) return *page_;
  const CPUnicodeConverter& converter = *cnv_.getConverter();
  auto made = std::make_unique<PageBytes>();
  made->blank = fillBlank_;
  made->isWide = converter.getMinBytesPerChar() != 1;
  made->isEbcdic = cnv_.IsCcsidEBCDIC();
  made->hasDoubleBytes = converter.getMaxBytesPerChar() > 1;
  made->units.fill(PageBytes::kUnknown);
  for (unsigned byte = 0; byte < made->units.size() && !made->isWide; ++byte) {
    constexpr unsigned short kReplacement = 0xFFFD;
    const char character = static_cast<char>(byte);
    const PWFData value = cnv_.RawCharsToPWFData(&character, 1);
    const UnitView text = value.getPWFStringValue().view();
    // In mixed EBCDIC pages only what stands between shifts is a part of a character.
    const bool isPart =
        made->hasDoubleBytes && ((byte >= 0x80 && !made->isEbcdic) || text == UnitView(&kReplacement, 1));
    if (text.size() == 1 && !isPart) made->units[byte] = text[0];
  }
  page_ = std::move(made);
  return *page_;
}

// What the library refuses it refuses itself, so that its number is told.
PWFData FieldConverter::oddExternal(const Step& step, const unsigned char* bytes, std::uint32_t size) {
  constexpr char kRefused[] = "no number of digits";
  const FaultReason reason =
      externalFault({bytes, size}, {step.sign, step.isBlankWhenZero, form_.hasLetterSigns}, page());
  if (reason && reason.message == 0) throw FieldRefused(kRefused);
  PWFData value = decimalOf(step, bytes, size);
  const UnitView digits(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength()));
  const bool isOdd = page().isWide && isOddNumber(text(bytes, size).getPWFStringValue().view(), step);
  if (isOdd || !isPlainDecimal(digits, step.sign != eSignNone)) throw FieldRefused(kRefused);
  return value;
}

PWFData FieldConverter::padded(const Step& step, const unsigned char* bytes) {
  const std::span<const unsigned char> field(bytes, step.size);
  const Unpadded inner = withoutPadding(field, step.sign, fillBlank_);
  if (page().isWide) return external(step, bytes, step.size);
  if (inner.end - inner.begin == step.size && inner.digits == inner.begin + 1) return external(step, bytes, step.size);
  if (inner.begin == inner.end) return external(step, bytes, step.size);
  work_ = inner.bytes(field);
  return external(step, work_.data(), static_cast<std::uint32_t>(work_.size()));
}

bool FieldConverter::isNegative(const Step& step, const KelWstring& dateText) {
  return null(step).getDataLogicalType() != STRING && dateText.length() != 0 && dateText[0] == '-';
}

FaultReason FieldConverter::dateFaultOf(const Step& step, const unsigned char* bytes) {
  try {
    const KelWstring text = dateText(step, bytes);
    const FaultReason reason =
        isNegative(step, text) ? FaultReason{.code = FaultCode::negativeDate} : dateFault(form_.date, text.view());
    return orEmpty(reason, {bytes, step.size}, fillBlank_);
  } catch (const KelRecoverableException&) {
  } catch (const FieldRefused&) {
  }
  return {};
}

FaultReason FieldConverter::diagnose(const Step& step, const unsigned char* bytes) {
  if (isSpecial_ && empty(step, bytes)) return {};
  FaultReason reason = rec::diagnose(step, form_, page(), {bytes, step.size});
  if (!reason && !form_.date.empty()) return dateFaultOf(step, bytes);
  return reason;
}

FaultReason FieldConverter::refusal(const Step& step, const unsigned char* bytes, int message, std::string said) {
  constexpr int kUnreadableDate = 5540;
  if (!form_.date.empty() && message == kUnreadableDate)
    return {.code = FaultCode::dateText,
            .message = message,
            .detail = quotedText(dateText(step, bytes).view()) + ", and its pattern is " + form_.date};
  const bool hasText = step.kind == Kind::external || step.kind == Kind::edited;
  if (hasText && static_cast<int>(step.size) >= cnv_.getConverter()->getMinBytesPerChar())
    return {.code = FaultCode::numberText,
            .message = message,
            .detail = quotedText(text(bytes, step.size).getPWFStringValue().view())};
  return {.code = FaultCode::library, .message = message, .detail = std::move(said)};
}

bool meanTheSame(const Step& step, const PWFData& a, const PWFData& b) {
  if (a.isNull() || b.isNull()) return a.isNull() && b.isNull();
  if (a.getDataLogicalType() != STRING || b.getDataLogicalType() != STRING) return a == b;
  const UnitView blanks = step.kind == Kind::dbcs ? kDoubleBlanks : kDoubleBlanks + 1;
  const auto trimmed = [&](UnitView text) {
    text = text.substr(0, text.find_last_not_of(blanks) + 1);
    if (step.isJustifiedRight) text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text;
  };
  return trimmed(a.getPWFStringValue().view()) == trimmed(b.getPWFStringValue().view());
}

}  // namespace oxr::rec
