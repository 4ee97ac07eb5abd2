#include "records/fields/diagnosis.hpp"

#include <algorithm>
#include <utility>

#include "records/fields/editedpicture.hpp"
#include "records/fields/hexfloat.hpp"
#include "records/fields/numbers.hpp"

namespace oxr::rec {

namespace {

constexpr int kInvalidData = 5505;  // the library's number for bytes that are no number
constexpr unsigned kTen = 10;

bool areAll(std::span<const unsigned char> bytes, unsigned char byte) {
  return std::all_of(bytes.begin(), bytes.end(), [byte](unsigned char b) { return b == byte; });
}

// A place of half bytes, in the order of the field.
FaultReason halfByteFault(FaultCode code, std::size_t nibble, unsigned value, int message) {
  return {.code = code, .message = message, .numbers = {static_cast<std::int64_t>(nibble / 2), value}};
}

unsigned halfByteAt(std::span<const unsigned char> bytes, std::size_t nibble) {
  const unsigned byte = bytes[nibble / 2];
  return nibble % 2 == 0 ? byte >> 4 : byte & 15;
}

// Words for a number whose sign would be one in the other way to have it among digits.
FaultReason asOtherSign(FaultReason reason, std::span<const unsigned char> bytes, External external,
                        const PageBytes& page) {
  if (reason.code != FaultCode::externalSign || page.isEbcdic) return reason;
  external.hasLetterSigns = !external.hasLetterSigns;
  if (!externalFault(bytes, external, page))
    reason.code = external.hasLetterSigns ? FaultCode::letterSign : FaultCode::plainSign;
  return reason;
}

// Words for a field whose digits alone, without the padding around them, would be good. The first byte of the padding
// is what is wrong with it.
FaultReason asPadded(FaultReason reason, std::span<const unsigned char> bytes, const External& external,
                     const PageBytes& page) {
  if (!reason) return reason;
  const Unpadded inner = withoutPadding(bytes, external.sign, page.blank);
  if (inner.begin == inner.end || externalFault(inner.bytes(bytes), external, page)) return reason;
  reason.code = FaultCode::padded;
  const std::uint32_t place = inner.begin != 0 ? 0 : inner.digits != 1 ? 1 : inner.end;
  reason.numbers = {place, bytes[place], page.units[bytes[place]]};
  return reason;
}

// A field that may be padded: places are those of the field.
FaultReason paddedFault(std::span<const unsigned char> bytes, const External& external, const PageBytes& page) {
  const Unpadded inner = withoutPadding(bytes, external.sign, page.blank);
  if (inner.begin == inner.end) return externalFault(bytes, external, page);
  FaultReason reason =
      asOtherSign(externalFault(inner.bytes(bytes), external, page), inner.bytes(bytes), external, page);
  std::int64_t& place = reason.numbers[0];
  place = place == 0 ? inner.begin : place - 1 + inner.digits;
  return reason;
}

FaultReason externalField(const Step& step, const PhysicalForm& form, const PageBytes& page,
                          std::span<const unsigned char> bytes) {
  const External external{step.sign, step.isBlankWhenZero, form.hasLetterSigns};
  const bool isDate = !form.date.empty();
  if (form.lenientNumbers && !isDate) return orEmpty(paddedFault(bytes, external, page), bytes, page.blank);
  FaultReason reason = asOtherSign(externalFault(bytes, external, page), bytes, external, page);
  if (!isDate) reason = asPadded(std::move(reason), bytes, external, page);
  return orEmpty(std::move(reason), bytes, page.blank);
}

// A point among the digits, where the sign has no character of its own, takes no part in the number.
FaultReason editedDigits(const Step& step, const PhysicalForm& form, const PageBytes& page,
                         std::span<const unsigned char> bytes) {
  const auto point =
      std::find_if(bytes.begin(), bytes.end(), [&page](unsigned char byte) { return page.units[byte] == '.'; });
  std::vector<unsigned char> digits(bytes.begin(), point);
  const auto before = static_cast<std::int64_t>(digits.size());
  if (point != bytes.end()) digits.insert(digits.end(), point + 1, bytes.end());
  if (digits.empty()) return {.code = FaultCode::editedEmpty};
  const External external{step.sign, step.isBlankWhenZero, form.hasLetterSigns};
  FaultReason reason = asOtherSign(externalFault(digits, external, page), digits, external, page);
  if (reason && reason.numbers[0] >= before && point != bytes.end()) ++reason.numbers[0];
  return reason;
}

FaultReason editedFault(const Step& step, const PageBytes& page, std::span<const unsigned char> bytes) {
  std::vector<unsigned short> units(bytes.size());
  std::transform(bytes.begin(), bytes.end(), units.begin(), [&page](unsigned char byte) { return page.units[byte]; });
  const UnitView text(units.data(), units.size());
  if (text.find(PageBytes::kUnknown) != UnitView::npos) return {};
  std::size_t badAt = UnitView::npos;
  if (step.edited->read(text, &badAt)) return {};
  if (badAt == UnitView::npos) return {.code = FaultCode::editedEmpty};
  return {.code = FaultCode::editedCharacter,
          .numbers = {static_cast<std::int64_t>(badAt), bytes[badAt], units[badAt]}};
}

// What is no number in an IEEE format has an exponent that is all ones.
FaultReason floatFault(std::span<const unsigned char> bytes, FloatForm form) {
  if (isHexadecimal(form)) {
    if (normalized(bytes, form == FloatForm::hexLittle)) return {};
    return {.code = FaultCode::belowNormal};
  }
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bits = bits << 8 | bytes[form == FloatForm::ieeeBig ? i : bytes.size() - 1 - i];
  const int fraction = bytes.size() == 4 ? 23 : 52;
  const std::uint64_t exponents = bytes.size() == 4 ? 0xFF : 0x7FF;
  if ((bits >> fraction & exponents) != exponents) return {};
  const bool isInfinite = (bits & ((std::uint64_t{1} << fraction) - 1)) == 0;
  return {.code = isInfinite ? FaultCode::infinite : FaultCode::notANumber};
}

}  // namespace

FaultReason packedFault(std::span<const unsigned char> bytes, bool isSigned, SignEnd signEnd) {
  const std::size_t count = 2 * bytes.size();
  const std::size_t signAt = signEnd == SignEnd::leading ? 0 : count - 1;
  const std::size_t firstDigit = signAt == 0 ? 1 : 0;
  for (std::size_t i = firstDigit; i < firstDigit + count - 1; ++i)
    if (const unsigned value = halfByteAt(bytes, i); value >= kTen)
      return halfByteFault(FaultCode::packedDigit, i, value, kInvalidData);
  const unsigned sign = halfByteAt(bytes, signAt);
  if (sign < kTen) return halfByteFault(FaultCode::packedSign, signAt, sign, kInvalidData);
  const bool isMinus = sign == 0xB || sign == 0xD;
  return isMinus && !isSigned ? halfByteFault(FaultCode::packedMinus, signAt, sign, kInvalidData) : FaultReason{};
}

FaultReason unsignedPackedFault(std::span<const unsigned char> bytes) {
  for (std::size_t i = 0; i < 2 * bytes.size(); ++i)
    if (const unsigned value = halfByteAt(bytes, i); value >= kTen)
      return halfByteFault(FaultCode::unsignedPackedDigit, i, value, 0);
  return {};
}

FaultReason orEmpty(FaultReason reason, std::span<const unsigned char> bytes, unsigned char blank) {
  if (!reason || bytes.empty() || !(areAll(bytes, 0) || areAll(bytes, blank))) return reason;
  return {.code = bytes[0] == 0 ? FaultCode::lowValues : FaultCode::blanks, .message = reason.message};
}

FaultReason diagnose(const Step& step, const PhysicalForm& form, const PageBytes& page,
                     std::span<const unsigned char> bytes) {
  switch (step.kind) {
    case Kind::packed:
      return orEmpty(packedFault(bytes, step.sign != eSignNone, form.packedSign), bytes, page.blank);
    case Kind::unsignedPacked:
      return unsignedPackedFault(bytes);
    case Kind::external:
      return externalField(step, form, page, bytes);
    case Kind::edited:
      if (!form.editedAsNumber || !form.date.empty()) return {};
      return orEmpty(step.sign != eSignNone ? editedDigits(step, form, page, bytes) : editedFault(step, page, bytes),
                     bytes, page.blank);
    case Kind::shortFloat:
    case Kind::longFloat:
      return floatFault(bytes, form.floats);
    case Kind::dbcs:
      if (page.hasDoubleBytes) return {};
      return {.code = FaultCode::singleBytesOnly, .numbers = {form.ccsid}};
    default:
      return {};
  }
}

}  // namespace oxr::rec
