#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "kelwstringconvertor.hpp"
#include "records/fields/editedpicture.hpp"
#include "records/fields/fields.hpp"

// What a field of any kind reads as is written so that it reads as the same; and the canonical bytes of a value come
// back as they were, once they were written. Any text is written as the converter of the code page does, or refused
// where that changes it.

namespace oxr::fuzz {

namespace fieldwriter {

using namespace oxr::rec;

inline PhysicalForm drawForm(Choices& choices) {
  constexpr int kPages[] = {37, 273, 500, 819, 1208, 1200, 1047, 939, 943};
  constexpr std::uint8_t kPluses[] = {0, 0xC, 0xF, 0xA, 0xE};
  constexpr FloatForm kFloats[] = {FloatForm::hexBig, FloatForm::hexLittle, FloatForm::ieeeBig, FloatForm::ieeeLittle};
  PhysicalForm form;
  form.ccsid = choices.oneOf(kPages);
  form.integerEndian = choices.coin() ? eEndianBig : eEndianLittle;
  form.hasLetterSigns = choices.coin();
  form.plus = choices.oneOf(kPluses);
  form.floats = choices.oneOf(kFloats);
  form.editedAsNumber = true;
  form.hasEditedPlus = choices.coin();
  if (choices.upTo(3) == 0) form.packedSign = SignEnd::leading;
  return form;
}

inline const std::vector<EditedPicture>& pictures() {
  static const std::vector<EditedPicture> all = [] {
    constexpr const char* kPictures[] = {"ZZ9.99-",    "Z,ZZZ,ZZ9.99CR", "$$,$$9.99DB", "-(5)9",      "+++,++9.9",
                                         "$**,**9.99", "***.**",         "ZZZ.ZZ-",     "99/99/9999", "9B999B00",
                                         "Z(6)VZZ-",   "+9(6)V99",       "ZZ9PP",       "****CR",     "+$(4)9.99"};
    std::vector<EditedPicture> made;
    for (const char* const picture : kPictures)
      made.emplace_back(picture, EditedPicture::Clauses{.isBlankWhenZero = made.size() % 2 == 1});
    for (const char* const picture : {"Z.ZZZ.ZZ9,99CR", "***,**", "+9(6)V99"})
      made.emplace_back(picture, EditedPicture::Clauses{.hasDecimalComma = true});
    return made;
  }();
  return all;
}

inline bool isBinary(Kind kind) {
  return kind == Kind::binary || kind == Kind::nativeBinary;
}

inline Step drawStep(Choices& choices) {
  constexpr Kind kKinds[] = {Kind::text,           Kind::edited,       Kind::external,   Kind::packed,
                             Kind::binary,         Kind::nativeBinary, Kind::shortFloat, Kind::longFloat,
                             Kind::unsignedPacked, Kind::national,     Kind::dbcs};
  Step step;
  step.kind = choices.oneOf(kKinds);
  step.size = static_cast<std::uint32_t>(choices.between(1, 20));
  step.scale = static_cast<std::int16_t>(choices.between(-3, 6));
  switch (step.kind) {
    case Kind::external:
      step.sign = static_cast<ESign>(choices.between(eSignNone, eSignTrailingSeparate));
      if (step.sign >= eSignLeadingSeparate) ++step.size;
      step.isBlankWhenZero = step.sign == eSignNone && choices.upTo(3) == 0;
      break;
    case Kind::binary:
    case Kind::nativeBinary:
      step.size = static_cast<std::uint32_t>(choices.between(1, 16));
      [[fallthrough]];
    case Kind::packed:
      step.sign = choices.coin() ? eSignLeadingIncluded : eSignNone;
      break;
    case Kind::shortFloat:
      step.size = 4;
      break;
    case Kind::longFloat:
      step.size = 8;
      break;
    case Kind::national:
    case Kind::dbcs:
      step.size += step.size % 2;
      break;
    case Kind::edited:
      step.edited = &choices.oneOf(pictures());
      step.size = static_cast<std::uint32_t>(step.edited->symbols().size());
      step.scale = static_cast<std::int16_t>(step.edited->scale());
      break;
    default:
      break;
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
    if (isAny || isBinary(step.kind))
      byte = drawn;
    else if (step.kind == Kind::unsignedPacked)
      byte = static_cast<unsigned char>((drawn >> 4) % 10 << 4 | drawn % 10);
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

// A float comes out of a line as its shortest digits.
inline PWFData asInLine(const PWFData& value) {
  if (value.getDataLogicalType() != FLOAT) return value;
  char digits[32];
  const char* const end = std::to_chars(digits, digits + sizeof digits, value.getDoubleValue()).ptr;
  return PWFData(fromUtf8(std::string_view(digits, static_cast<std::size_t>(end - digits))));
}

// The number is shown as its picture says, and read from that. Its bytes cannot be drawn: hardly any show a number.
inline void checkEdited(Choices& choices, const Step& step, const PhysicalForm& form) {
  if (form.ccsid == 1200) return;  // a picture counts bytes
  FieldWriter writer(form);
  FieldConverter converter(form);
  std::string digits(step.edited->digits(), '0');
  for (std::size_t left = choices.upTo(digits.size()); left > 0; --left)
    digits[digits.size() - left] = choices.oneOf(std::string_view("0123456789"));
  const bool isNegative =
      step.edited->isSigned() && digits.find_first_not_of('0') != std::string::npos && choices.coin();
  if (step.scale > 0) digits.insert(digits.size() - static_cast<std::size_t>(step.scale), 1, '.');
  if (step.scale < 0) digits.append(static_cast<std::size_t>(-step.scale), '0');
  const PWFData value(fromUtf8((isNegative ? "-" : "") + digits).characters(), DECIMAL);
  std::vector<unsigned char> written(step.size), twice(step.size);
  writer.write(step, value, written.data());
  const std::optional<PWFData> again = read(converter, step, written.data());
  require(again && *again == value, "wrote " + textOf(value) + ", read " + (again ? textOf(*again) : "nothing") + ": " +
                                        textOf(step, form, written) + ", " + step.edited->symbols());
  writer.write(step, *again, twice.data());
  require(twice == written, "the characters of " + textOf(value) + " change: " + step.edited->symbols());
}

// Characters of all alphabets, most of which the code page lacks.
inline void checkText(Choices& choices) {
  constexpr int kPages[] = {37, 819, 875, 1025, 1047, 1140, 1252, 420, 424, 437};
  constexpr unsigned short kLast[] = {0x7F, 0xFF, 0x400, 0x7FF, 0xD7FF};
  PhysicalForm form;
  form.ccsid = choices.oneOf(kPages);
  Step step;
  step.kind = Kind::text;
  step.size = 4;
  std::basic_string<unsigned short> units(choices.upTo(3) + 1, 0);
  const unsigned last = choices.oneOf(kLast);
  for (unsigned short& unit : units)
    unit = static_cast<unsigned short>(choices.any<std::uint16_t>() % (last + 1));
  if (units.back() == ' ') return;
  const KelWstring text{UnitView(units)};
  DataCnv page(form.ccsid, eEndianBig, eEndianBig, eFloatIeeeBig, 53, nullptr, false, nullptr, 0, true, 'C', false,
               eMessageStandardDefault, nullptr);
  std::vector<unsigned char> wanted(step.size), written(step.size);
  int size = static_cast<int>(step.size);
  KelWstring back;
  const bool isKept = U_SUCCESS(page.fromUnicodeString(text, wanted.data(), size)) && size != 0 &&
                      U_SUCCESS(page.toUnicodeString(back, wanted.data(), size)) && back == text;
  FieldWriter writer(form);
  try {
    writer.write(step, PWFData(text), written.data());
  } catch (const FieldRefused&) {
    return require(!isKept, "refused in page " + std::to_string(form.ccsid) + ": " + toUtf8(text.view()));
  }
  written.resize(static_cast<std::size_t>(size));
  wanted.resize(static_cast<std::size_t>(size));
  require(isKept && written == wanted, "changed in page " + std::to_string(form.ccsid) + ": " + toUtf8(text.view()));
}

}  // namespace fieldwriter

inline void checkFieldWriter(Choices& choices) {
  using namespace fieldwriter;
  if (choices.upTo(7) == 0) return checkText(choices);
  const PhysicalForm form = drawForm(choices);
  const Step step = drawStep(choices);
  // Characters of two bytes leave the last one of an odd number as it was.
  if (form.ccsid == 1200 && step.size % 2 != 0) return;
  if (step.edited != nullptr) return checkEdited(choices, step, form);
  FieldConverter converter(form);
  FieldWriter writer(form);
  const bool isEbcdic = form.ccsid < 800 || form.ccsid == 1047 || form.ccsid == 939;
  const std::vector<unsigned char> bytes = drawBytes(choices, step, isEbcdic);
  const std::optional<PWFData> found = read(converter, step, bytes.data());
  if (!found || found->isNull()) return;
  const std::optional<PWFData> value = asInLine(*found);
  std::vector<unsigned char> written(step.size, 0x55);
  try {
    writer.write(step, *value, written.data());
  } catch (const FieldRefused& refusal) {
    // Bytes that a code page has no character for read as one that it does not write in as many bytes.
    const bool isText = step.kind == Kind::text || step.kind == Kind::national || step.kind == Kind::dbcs;
    // A hexadecimal float with zeros in front of its fraction may be smaller than any without, which are written.
    const bool isTiny = found->getDataLogicalType() == FLOAT && std::abs(found->getDoubleValue()) < 0x1p-256 &&
                        isHexadecimal(form.floats);
    require(isText || isTiny, "the value " + textOf(*value) + " is refused: " + refusal.what());
    require(written == std::vector<unsigned char>(step.size, 0x55), "a field was refused and written");
    return;
  } catch (const KelRecoverableException& failure) {
    // A picture counts bytes, and characters of two do not fill an odd number of them.
    require(form.ccsid == 1200 && step.kind == Kind::external,
            "the value " + textOf(*value) + " fails: " + faultText(failure) + ": " + textOf(step, form, bytes));
    return;
  }
  std::optional<PWFData> again = read(converter, step, written.data());
  if (again) again = asInLine(*again);
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
