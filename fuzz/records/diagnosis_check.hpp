#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "fuzz/records/fieldwriter_check.hpp"
#include "records/fields/fields.hpp"

// A field of any kind, form and bytes is told to be bad if, and only if, its conversion refuses it, and by the same
// number. The option that its text names makes it good.

namespace oxr::fuzz {

namespace diagnosis {

using namespace oxr::rec;

inline constexpr std::size_t kMostEdited = 20;

inline PhysicalForm drawForm(Choices& choices) {
  constexpr int kPages[] = {37, 500, 1047, 819, 1252, 37, 819, 1208, 930, 1200};
  constexpr const char* kDates[] = {"yyyyMMdd", "yyMMdd",         "dd.MM.yyyy", "yyyyDDD",
                                    "HHmmssSS", "MM'o''clock'HH", "d.M.yy"};
  PhysicalForm form;
  form.ccsid = choices.oneOf(kPages);
  form.integerEndian = choices.coin() ? eEndianBig : eEndianLittle;
  form.hasLetterSigns = choices.coin();
  form.floats = static_cast<FloatForm>(choices.upTo(3));
  if (choices.upTo(3) == 0) form.blankNumbers = static_cast<EmptyNumber>(choices.upTo(2));
  if (choices.upTo(3) == 0) form.lowValues = static_cast<EmptyNumber>(choices.upTo(2));
  form.lenientNumbers = choices.upTo(3) == 0;
  form.editedAsNumber = choices.coin();
  if (choices.upTo(3) == 0) form.packedSign = SignEnd::leading;
  if (choices.upTo(3) == 0) form.date = choices.oneOf(kDates);
  return form;
}

// One of so many characters.
inline const EditedPicture& pictureOf(std::size_t size, bool isBlankWhenZero) {
  static const std::vector<EditedPicture> all = [] {
    std::vector<EditedPicture> made;
    for (std::size_t characters = 1; characters <= kMostEdited; ++characters)
      for (const char* const symbol : {"9", "Z"})
        made.emplace_back(symbol + ('(' + std::to_string(characters) + ')'),
                          EditedPicture::Clauses{.isBlankWhenZero = symbol[0] == '9'});
    return made;
  }();
  return all[2 * (size - 1) + (isBlankWhenZero ? 0 : 1)];
}

inline Step drawStep(Choices& choices) {
  constexpr Kind kKinds[] = {Kind::text,   Kind::edited,       Kind::external,   Kind::packed,        Kind::external,
                             Kind::packed, Kind::binary,       Kind::shortFloat, Kind::longFloat,     Kind::national,
                             Kind::dbcs,   Kind::nativeBinary, Kind::external,   Kind::unsignedPacked};
  Step step;
  step.kind = choices.oneOf(kKinds);
  step.size = static_cast<std::uint32_t>(choices.coin() ? choices.between(1, 20) : choices.between(1, 4));
  step.scale = static_cast<std::int16_t>(choices.between(-3, 6));
  const bool isSigned = choices.coin();
  if (step.kind == Kind::external && isSigned)
    step.sign = static_cast<ESign>(choices.between(eSignLeadingIncluded, eSignTrailingSeparate));
  else if (isSigned)
    step.sign = step.kind == Kind::edited ? eSignTrailingIncluded : eSignLeadingIncluded;
  step.isBlankWhenZero = choices.upTo(3) == 0;
  if (step.sign >= eSignLeadingSeparate) ++step.size;
  if (step.kind == Kind::shortFloat) step.size = 4;
  if (step.kind == Kind::longFloat) step.size = 8;
  if (step.kind == Kind::binary || step.kind == Kind::nativeBinary) step.size = 1U << choices.upTo(3);
  if (step.kind == Kind::edited) step.edited = &pictureOf(step.size, step.isBlankWhenZero);
  if (step.kind == Kind::national || step.kind == Kind::dbcs) step.size *= 2;
  return step;
}

// Digits as the field has them, then some bytes put among them that are good or bad elsewhere.
inline std::vector<unsigned char> drawBytes(Choices& choices, const Step& step, bool isEbcdic) {
  constexpr unsigned char kEbcdicOdd[] = {0x40, 0x00, 0x4E, 0x60, 0x4B, 0x6B, 0xC1, 0xD2, 0xFA, 0xE1, 0x0E, 0x3F, 0x5C};
  constexpr unsigned char kAsciiOdd[] = {' ', 0x00, '+', '-', '.', ',', 'A', 'K', 'p', 'z', '{', '}', 0xE4, 0xC3, '*'};
  const std::span<const unsigned char> odd = isEbcdic ? std::span<const unsigned char>(kEbcdicOdd) : kAsciiOdd;
  std::vector<unsigned char> bytes(step.size);
  const bool isPacked = step.kind == Kind::packed || step.kind == Kind::unsignedPacked;
  for (unsigned char& byte : bytes) {
    const auto drawn = choices.any<std::uint8_t>();
    byte = static_cast<unsigned char>(isPacked ? (drawn >> 4) % 10 << 4 | drawn % 10
                                               : (isEbcdic ? 0xF0 : 0x30) | drawn % 10);
  }
  if (step.kind == Kind::packed) (choices.upTo(3) == 0 ? bytes.front() : bytes.back()) |= 0x0C;
  switch (choices.upTo(5)) {
    case 0:
      for (unsigned char& byte : bytes)
        byte = choices.any<std::uint8_t>();
      break;
    case 1:
      bytes.assign(bytes.size(), choices.coin() ? 0 : odd[0]);
      break;
    default:
      for (std::size_t left = choices.upTo(3); left > 0; --left) {
        const std::size_t places[] = {0, bytes.size() - 1, choices.upTo(bytes.size() - 1)};
        bytes[choices.oneOf(places)] = choices.upTo(7) == 0 ? choices.any<std::uint8_t>() : choices.oneOf(odd);
      }
  }
  return bytes;
}

// What a conversion refuses with: its number, or 0 for a refusal without one; nothing for a good field.
inline std::optional<int> refusalOf(FieldConverter& converter, const Step& step, const unsigned char* bytes) {
  try {
    static_cast<void>(converter.convert(step, bytes));
    return std::nullopt;
  } catch (const KelRecoverableException& failure) {
    return failure.oxrMessageNumber();
  } catch (const FieldRefused&) {
    return 0;
  }
}

// Pages of which a byte does not tell its character are left to conversions, and so is much of what is no date.
inline bool isLeftToConversions(const Step& step, const PhysicalForm& form) {
  const bool isText =
      step.kind == Kind::text || step.kind == Kind::external || step.kind == Kind::edited || step.kind == Kind::dbcs;
  const bool isMixed = step.kind != Kind::external && (form.ccsid == 1208 || form.ccsid == 930);
  return !form.date.empty() || (isText && (form.ccsid == 1200 || isMixed));
}

// The form with the option that the text of the reason names.
inline std::optional<PhysicalForm> advised(PhysicalForm form, FaultCode code) {
  if (code == FaultCode::blanks) form.blankNumbers = EmptyNumber::isNull;
  if (code == FaultCode::lowValues) form.lowValues = EmptyNumber::isNull;
  if (code == FaultCode::padded) form.lenientNumbers = true;
  const bool isOtherSign = code == FaultCode::letterSign || code == FaultCode::plainSign;
  if (isOtherSign) form.hasLetterSigns = !form.hasLetterSigns;
  // That a number is a date, too, hangs on its digits.
  if (isOtherSign && !form.date.empty()) return std::nullopt;
  const bool isAdvised =
      isOtherSign || code == FaultCode::blanks || code == FaultCode::lowValues || code == FaultCode::padded;
  return isAdvised ? std::optional(form) : std::nullopt;
}

}  // namespace diagnosis

inline void checkDiagnosis(Choices& choices) {
  using namespace diagnosis;
  const PhysicalForm form = drawForm(choices);
  const Step step = drawStep(choices);
  FieldConverter converter(form);
  const bool isEbcdic = form.ccsid < 800 || form.ccsid == 1047 || form.ccsid == 930;
  const std::vector<unsigned char> bytes = drawBytes(choices, step, isEbcdic);
  const FaultReason reason = converter.diagnose(step, bytes.data());
  const std::optional<int> refusal = refusalOf(converter, step, bytes.data());
  const std::string what =
      fieldwriter::textOf(step, form, bytes) + ", date " + form.date + ": " + reason.text(step.size);
  require(reason || !refusal || isLeftToConversions(step, form), "nothing is told of a field that is refused: " + what);
  if (!reason) return;
  require(refusal.has_value(), "a good field is told to be bad: " + what);
  requireEqual(reason.message, *refusal, "the number of " + what);
  require(reason.badByte().value_or(0) < step.size, "the place lies outside of the field: " + what);
  require(!reason.kind().empty() && reason.text(step.size).find('\n') == std::string::npos, "no line: " + what);
  const std::optional<PhysicalForm> better = advised(form, reason.code);
  if (!better) return;
  FieldConverter tried(*better);
  require(!refusalOf(tried, step, bytes.data()), "the advice does not help: " + what);
}

}  // namespace oxr::fuzz
