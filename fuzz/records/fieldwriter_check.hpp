#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "kelwstringconvertor.hpp"
#include "records/fields/fields.hpp"

// What a field of any kind reads as is written so that it reads as the same; and the canonical bytes of a value come
// back as they were, once they were written.

namespace oxr::fuzz {

namespace fieldwriter {

using namespace oxr::rec;

inline PhysicalForm drawForm(Choices& choices) {
  constexpr int kPages[] = {37, 273, 500, 819, 1208, 1200, 1047};
  constexpr std::uint8_t kPluses[] = {0, 0xC, 0xF, 0xA, 0xE};
  PhysicalForm form;
  form.ccsid = choices.oneOf(kPages);
  form.integerEndian = choices.coin() ? eEndianBig : eEndianLittle;
  form.hasLetterSigns = choices.coin();
  form.plus = choices.oneOf(kPluses);
  return form;
}

inline Step drawStep(Choices& choices) {
  constexpr Kind kKinds[] = {Kind::text, Kind::edited, Kind::external, Kind::packed, Kind::binary, Kind::nativeBinary};
  Step step;
  step.kind = choices.oneOf(kKinds);
  step.scale = static_cast<std::int16_t>(choices.between(-3, 6));
  step.size = static_cast<std::uint32_t>(choices.between(1, 20));
  if (step.kind == Kind::external) {
    step.sign = static_cast<ESign>(choices.between(eSignNone, eSignTrailingSeparate));
    if (step.sign >= eSignLeadingSeparate) ++step.size;
    step.isBlankWhenZero = step.sign == eSignNone && choices.upTo(3) == 0;
  } else if (step.kind != Kind::text && step.kind != Kind::edited) {
    step.sign = choices.coin() ? eSignLeadingIncluded : eSignNone;
    if (step.kind != Kind::packed) step.size = 1U << choices.upTo(3);
  } else {
    step.scale = 0;
  }
  return step;
}

// Bytes of any kind, more often than not such as the field may have: digits, packed digits, letters.
inline std::vector<unsigned char> drawBytes(Choices& choices, const Step& step, bool isEbcdic) {
  std::vector<unsigned char> bytes(step.size);
  const bool isAny = choices.upTo(4) == 0;
  for (unsigned char& byte : bytes) {
    const auto drawn = choices.any<std::uint8_t>();
    const auto zone = static_cast<unsigned char>(isEbcdic ? 0xF0 : 0x30);
    if (isAny || step.kind == Kind::binary || step.kind == Kind::nativeBinary)
      byte = drawn;
    else if (step.kind == Kind::packed)
      byte = static_cast<unsigned char>((drawn >> 4) % 10 << 4 | drawn % 10);
    else if (step.kind == Kind::external)
      byte = static_cast<unsigned char>(zone | drawn % 10);
    else
      byte = drawn % 4 == 0 ? (isEbcdic ? 0x40 : 0x20) : drawn;
  }
  if (step.kind == Kind::packed && !isAny) {
    constexpr unsigned char kSigns[] = {0xC, 0xD, 0xF, 0xA, 0xB, 0xE};
    bytes.back() = static_cast<unsigned char>((bytes.back() & 0xF0) | choices.oneOf(kSigns));
  }
  if (step.kind == Kind::external && !isAny && choices.coin()) {
    unsigned char& carrier = choices.coin() ? bytes.front() : bytes.back();
    constexpr unsigned char kCarriers[] = {0xC1, 0xD2, 0x4E, 0x60, 0x2B, 0x2D, 'p', 'y', '{', 'J'};
    carrier = choices.oneOf(kCarriers);
  }
  return bytes;
}

inline std::optional<PWFData> read(FieldConverter& converter, const Step& step, const unsigned char* bytes) {
  try {
    return converter.convert(step, bytes);
  } catch (const KelRecoverableException&) {
  } catch (const FieldRefused&) {
  }
  return std::nullopt;
}

inline std::string textOf(const PWFData& value) {
  const PWFData text = value.getDebugString();
  return toUtf8(text.getPWFStringValue());
}

// A step, a form and bytes, for messages.
inline std::string textOf(const Step& step, const PhysicalForm& form, const std::vector<unsigned char>& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text = "kind " + std::string(kindName(step.kind)) + ", sign " + std::to_string(step.sign) + ", scale " +
                     std::to_string(step.scale) + ", page " + std::to_string(form.ccsid) + ", bytes ";
  for (const unsigned char byte : bytes)
    text += {kDigits[byte >> 4], kDigits[byte & 15]};
  return text;
}

// Texts without the blanks at their end, which stand for nothing.
inline bool areEqual(const PWFData& a, const PWFData& b) {
  if (a.getDataLogicalType() != STRING || b.getDataLogicalType() != STRING) return a == b;
  const auto trimmed = [](UnitView text) { return text.substr(0, text.find_last_not_of(' ') + 1); };
  return trimmed(a.getPWFStringValue().view()) == trimmed(b.getPWFStringValue().view());
}

}  // namespace fieldwriter

inline void checkFieldWriter(Choices& choices) {
  using namespace fieldwriter;
  const PhysicalForm form = drawForm(choices);
  const Step step = drawStep(choices);
  // Characters of two bytes leave the last one of an odd number as it was.
  if (form.ccsid == 1200 && step.size % 2 != 0) return;
  FieldConverter converter(form);
  FieldWriter writer(form);
  const bool isEbcdic = form.ccsid < 800 || form.ccsid == 1047;
  const std::vector<unsigned char> bytes = drawBytes(choices, step, isEbcdic);
  const std::optional<PWFData> value = read(converter, step, bytes.data());
  if (!value || value->isNull()) return;
  std::vector<unsigned char> written(step.size, 0x55);
  try {
    writer.write(step, *value, written.data());
  } catch (const FieldRefused& refusal) {
    // Bytes that a code page has no character for read as one that it does not write in as many bytes.
    require(step.kind == Kind::text || step.kind == Kind::edited,
            "the value " + textOf(*value) + " is refused: " + refusal.what());
    require(written == std::vector<unsigned char>(step.size, 0x55), "a field was refused and written");
    return;
  } catch (const KelRecoverableException& failure) {
    // A picture counts bytes, and characters of two do not fill an odd number of them.
    require(form.ccsid == 1200 && step.kind == Kind::external,
            "the value " + textOf(*value) + " fails: " + faultText(failure) + ": " + textOf(step, form, bytes));
    return;
  }
  const std::optional<PWFData> again = read(converter, step, written.data());
  require(again.has_value(),
          "what was written for " + textOf(*value) + " cannot be read: " + textOf(step, form, written));
  require(areEqual(*again, *value),
          "wrote " + textOf(*value) + ", read " + textOf(*again) + ": " + textOf(step, form, written));
  std::vector<unsigned char> twice(step.size);
  writer.write(step, *again, twice.data());
  // Which zeros keep a minus is the conversions' own affair: none of them says more than the others.
  const bool isZero = value->getDataLogicalType() == DECIMAL && textOf(*value) == "0";
  require(twice == written || isZero, "the bytes of " + textOf(*value) + " change when they are written again");
}

}  // namespace oxr::fuzz
