#include <algorithm>

#include "records/fields/diagnosis.hpp"

// A number in DISPLAY usage goes by this grammar, `digits` being one at least:
//
//   no sign            digits          of BLANK WHEN ZERO also blanks before them, or nothing but blanks
//   included sign      digits          the first or the last of them may carry a sign
//   separate sign      sign digits     or digits sign
//
// The library lets more pass: commas, a point and a sign where it does not look for one. A field of these alone has no
// message number, since the library would not refuse it.

namespace oxr::rec {

namespace {

constexpr int kInvalidData = 5505;

constexpr bool isDigit(unsigned short unit) {
  return unit >= '0' && unit <= '9';
}
constexpr bool isPatient(unsigned short unit) {
  return isDigit(unit) || unit == '.' || unit == ',' || unit == '+' || unit == '-';
}

// What a byte reads as that may carry a sign.
struct Carrier {
  bool isValid = true;      // its sign, whatever else it holds
  bool carries = false;     // a sign that a digit alone has not
  unsigned short unit = 0;  // of what is left when the sign is taken off
};

Carrier readCarrier(unsigned char byte, bool hasLetterSigns, const PageBytes& page) {
  const unsigned zone = byte >> 4;
  if (page.isEbcdic) {
    const bool isSign = zone == 0xC || zone == 0xD;
    return {isSign || zone == 0xF, isSign, page.units[byte | 0xF0]};
  }
  if (!hasLetterSigns)
    return zone == 7 ? Carrier{true, true, page.units[byte & 0x3F]} : Carrier{true, false, page.units[byte]};
  if (byte == '{' || byte == '}') return {true, true, '0'};
  if (byte >= 'A' && byte <= 'I') return {true, true, static_cast<unsigned short>(byte - 'A' + '1')};
  if (byte >= 'J' && byte <= 'R') return {true, true, static_cast<unsigned short>(byte - 'J' + '1')};
  return {false, false, page.units[byte]};
}

// A field in hand.
class Reader {
 public:
  Reader(std::span<const unsigned char> bytes, const External& external, const PageBytes& page)
      : bytes_(bytes), external_(external), page_(page), end_(bytes.size()) {
    const bool isSeparate = external.sign == eSignLeadingSeparate || external.sign == eSignTrailingSeparate;
    const bool isIncluded = external.sign == eSignLeadingIncluded || external.sign == eSignTrailingIncluded;
    const bool isLeading = external.sign == eSignLeadingSeparate || external.sign == eSignLeadingIncluded;
    if (isSeparate || isIncluded) signAt_ = isLeading ? 0 : bytes.size() - 1;
    if (isIncluded) carrier_ = readCarrier(bytes[signAt_], external.hasLetterSigns, page);
    isSeparate_ = isSeparate;
    isIncluded_ = isIncluded;
    if (!isSeparate || !isSign(page.units[bytes[signAt_]])) return;
    hasSign_ = true;
    (isLeading ? begin_ : end_) = isLeading ? 1 : bytes.size() - 1;
  }

  FaultReason fault() {
    skipBlanks();
    if (begin_ == end_ && external_.isBlankWhenZero) return {};
    if (external_.sign == eSignLeadingSeparate && !hasSign_) return told(FaultCode::separateSign, 0);
    if (begin_ == end_) return told(isSeparate_ ? FaultCode::onlySign : FaultCode::externalDigit, 0);
    for (std::size_t i = begin_; i < end_; ++i)
      if (!isGood(i)) return told(codeAt(i), i);
    if (isSeparate_ && !hasSign_) return told(FaultCode::separateSign, signAt_);
    return {};
  }

 private:
  static bool isSign(unsigned short unit) { return unit == '+' || unit == '-'; }

  unsigned short unitAt(std::size_t i) const {
    return isIncluded_ && i == signAt_ ? carrier_.unit : page_.units[bytes_[i]];
  }
  bool isGood(std::size_t i) const { return isDigit(unitAt(i)) && (!isIncluded_ || i != signAt_ || carrier_.isValid); }

  void skipBlanks() {
    const auto isSkipped = [this] { return unitAt(begin_) == ' ' && (begin_ != signAt_ || carrier_.isValid); };
    while (external_.isBlankWhenZero && begin_ != end_ && isSkipped())
      ++begin_;
  }

  // Without a sign in the picture one at either end is what is wrong if all else is digits.
  FaultCode codeAt(std::size_t bad) const {
    if (isIncluded_ && bad == signAt_) return FaultCode::externalSign;
    // The separate sign itself comes last, and so does the byte in its place.
    if (isSeparate_ && bad == signAt_) return FaultCode::separateSign;
    const bool isAtEnd = bad == 0 || bad + 1 == bytes_.size();
    if (external_.sign != eSignNone || !isAtEnd) return FaultCode::externalDigit;
    const Carrier carrier = readCarrier(bytes_[bad], external_.hasLetterSigns, page_);
    const bool hasSign = (carrier.carries && isDigit(carrier.unit)) || isSign(page_.units[bytes_[bad]]);
    const std::size_t others = static_cast<std::size_t>(
        std::count_if(bytes_.begin(), bytes_.end(), [this](unsigned char byte) { return isDigit(page_.units[byte]); }));
    return hasSign && bytes_.size() > 1 && others + 1 == bytes_.size() ? FaultCode::unaskedSign
                                                                       : FaultCode::externalDigit;
  }

  // Whether the library refuses it: for its sign, or for a character that no number has. What it makes of a part of a
  // character hangs on the other parts: it is not asked then.
  bool isRefused() const {
    if (!carrier_.isValid) return true;
    const auto isPart = [this](unsigned char byte) { return page_.units[byte] == PageBytes::kUnknown; };
    if (std::any_of(bytes_.begin(), bytes_.end(), isPart)) return false;
    for (std::size_t i = begin_; i < end_; ++i)
      if (!isPatient(unitAt(i))) return true;
    return false;
  }

  FaultReason told(FaultCode code, std::size_t place) const {
    const unsigned short unit = page_.units[bytes_[place]];
    return {.code = code,
            .message = isRefused() ? kInvalidData : 0,
            .numbers = {static_cast<std::int64_t>(place), bytes_[place], unit}};
  }

  const std::span<const unsigned char> bytes_;
  const External external_;
  const PageBytes& page_;
  bool isSeparate_ = false;
  bool isIncluded_ = false;
  bool hasSign_ = false;  // of its own
  std::size_t signAt_ = 0;
  Carrier carrier_;        // of an included sign
  std::size_t begin_ = 0;  // what must be digits
  std::size_t end_;
};

}  // namespace

FaultReason externalFault(std::span<const unsigned char> bytes, const External& external, const PageBytes& page) {
  if (page.isWide) return {};
  return Reader(bytes, external, page).fault();
}

std::vector<unsigned char> Unpadded::bytes(std::span<const unsigned char> field) const {
  std::vector<unsigned char> number(std::size_t{end} - digits + 1, field[begin]);
  std::copy(field.begin() + digits, field.begin() + end, number.begin() + 1);
  return number;
}

Unpadded withoutPadding(std::span<const unsigned char> field, ESign sign, unsigned char blank) {
  const auto isPadding = [&](std::size_t i) { return field[i] == 0 || field[i] == blank; };
  Unpadded inner{.end = static_cast<std::uint32_t>(field.size())};
  while (inner.begin != inner.end && isPadding(inner.begin))
    ++inner.begin;
  while (inner.begin != inner.end && isPadding(inner.end - 1))
    --inner.end;
  if (inner.begin == inner.end) return inner;
  inner.digits = inner.begin + 1;
  if (sign == eSignLeadingSeparate)
    while (inner.digits < inner.end && isPadding(inner.digits))
      ++inner.digits;
  return inner;
}

}  // namespace oxr::rec
