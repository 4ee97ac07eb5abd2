// Packed fields of any bytes and any settings against a naive model of the field's text, and back into a field.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"

namespace {

// The text by plain string steps; empty for a field that must be refused.
std::string modelText(const std::vector<unsigned char>& field, int scale, bool isSigned) {
  std::string text;
  for (const unsigned char byte : field) {
    for (const int nibble : {byte >> 4, byte & 15})
      text += "0123456789ABCDEF"[nibble];
  }
  const char sign = text.back();
  text.pop_back();
  if (sign <= '9' || (!isSigned && (sign == 'B' || sign == 'D'))) return "";
  if (text.find_first_not_of("0123456789") != std::string::npos) return "";
  if (sign == 'D') text.insert(0, "-");
  if (scale < 0) return text + std::string(static_cast<std::size_t>(-scale), '0');
  if (scale == 0) return text;
  const auto places = static_cast<std::size_t>(scale);
  if (places > text.size()) return "0." + std::string(places - text.size(), '0') + text;
  text.insert(text.size() - places, ".");
  return text.front() == '.' ? "0" + text : text;
}

void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const bool little = (data[0] & 1) != 0;
  const auto sign = static_cast<ESign>(data[0] >> 1 & 7);
  const int scale = static_cast<std::int8_t>(data[1]);
  const std::vector<unsigned char> field(data + 2, data + size);
  DataCnv converter(37, eEndianBig, little ? eEndianLittle : eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr,
                    0, true, 12, false, eMessageStandardDefault, nullptr);

  const std::vector<unsigned char> normal(little ? std::vector<unsigned char>(field.rbegin(), field.rend()) : field);
  const std::string expected = modelText(normal, scale, sign != eSignNone);
  std::string text;
  try {
    const PWFData value = converter.PckdDecToDec(field.data(), static_cast<int>(field.size()), scale, sign);
    text = oxr::toUtf8(oxr::UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
  } catch (const KelConversionException& e) {
    require(e.messageNumber() == static_cast<int>(0xC0001581u));
  }
  require(text == expected);

  // What was read writes back the same digits, as long as the minus stands in front and the field holds all of them.
  if (!text.empty() && scale >= 0 && text.find('-', 1) == std::string::npos) {
    std::vector<unsigned char> written(field.size());
    converter.PckdDecFromDec(oxr::fromUtf8(text).characters(), written.data(), static_cast<int>(written.size()), scale,
                             eSignLeadingIncluded);
    const std::size_t signByte = little ? 0 : field.size() - 1;
    for (std::size_t i = 0; i < field.size(); ++i)
      require(i == signByte ? written[i] >> 4 == field[i] >> 4 : written[i] == field[i]);
  }

  // Any units at all go through without a fault of memory; whatever is raised is the one failure of a full field.
  KelWstring units;
  for (std::size_t i = 2; i + 1 < size; i += 2) {
    const auto unit = static_cast<unsigned short>(data[i] << ((data[1] & 1) != 0 ? 8 : 0) | data[i + 1]);
    units.appendInternal(&unit, 1, 0);
  }
  std::vector<unsigned char> target(1 + data[0] % 40u);
  try {
    converter.PckdDecFromDec(units.characters(), target.data(), static_cast<int>(target.size()), scale, sign);
  } catch (const KelConversionException& e) {
    require(e.messageNumber() == static_cast<int>(0xC0001583u));
  }
  return 0;
}
