#include "oxrrec/values.hpp"

#include "kelprintable.hpp"
#include "kelwstringconvertor.hpp"

namespace oxr::rec {

namespace {

constexpr char kNoCharacter[] = "·";

// What USAGE says of each kind; none for DISPLAY.
const char* usageOf(Kind kind) {
  switch (kind) {
    case Kind::binary:
      return "COMP";
    case Kind::nativeBinary:
      return "COMP-5";
    case Kind::packed:
      return "COMP-3";
    case Kind::unsignedPacked:
      return "COMP-6";
    case Kind::shortFloat:
      return "COMP-1";
    case Kind::longFloat:
      return "COMP-2";
    default:
      return "";
  }
}

std::string characterOf(FieldConverter& converter, unsigned char byte) {
  Step step;
  step.kind = Kind::text;
  step.size = 1;
  try {
    const PWFData value = converter.convert(step, &byte);
    const UnitView text = value.getPWFStringValue().view();
    if (text.empty()) return " ";
    const bool isShown = text.size() == 1 && !isControl(text[0]) && text[0] != 0xA0 && (text[0] & 0xF800) != 0xD800 &&
                         text[0] != 0xAD && text[0] != 0xFFFD;
    return isShown ? toUtf8(text) : kNoCharacter;
  } catch (const KelException&) {
    return kNoCharacter;
  }
}

}  // namespace

std::string valueText(const PWFData& value) {
  static const WorkerInfoPtr kNone;
  static const std::vector<unsigned short> kNames = {'V', 0};
  JsonHandler json(kNames, {});
  json.startMessage(kNone, kNone);
  json.startElement(kNames.data(), kFieldElement, kNone, -1, -1);
  json.data(value, kNone, -1, -1);
  json.endElement(kNames.data(), kNone);
  json.endMessage(kNone);
  constexpr std::size_t kBefore = 5;  // {"V":
  constexpr std::size_t kAfter = 2;   // } and the newline
  const std::string_view line = json.lines();
  return std::string(line.substr(kBefore, line.size() - kBefore - kAfter));
}

std::string pictureText(const Item& item) {
  const std::string usage = usageOf(item.kind);
  if (item.picture.empty() || usage.empty()) return item.picture + usage;
  return item.picture + ' ' + usage;
}

std::array<std::string, 256> charactersOf(int ccsid) {
  PhysicalForm form;
  form.ccsid = ccsid;
  FieldConverter converter(form);
  std::array<std::string, 256> characters;
  for (std::size_t byte = 0; byte < characters.size(); ++byte)
    characters[byte] = characterOf(converter, static_cast<unsigned char>(byte));
  return characters;
}

}  // namespace oxr::rec
