#pragma once

#include <string>
#include <string_view>

#include "fuzz/harness/choices.hpp"
#include "kelwstringconvertor.hpp"
#include "records/json/json.hpp"
#include "records/json/line.hpp"
#include "records/json/rapidjson.hpp"

// A text stands in a JSON line as RapidJSON's own writer gives it, without the blanks at its end; a decimal as a plain
// model of JSON numbers says.

namespace oxr::fuzz {

namespace jsonvalue {

using namespace oxr::rec;
using Units = std::basic_string<unsigned short>;

// Most units are plain, with now and then one that needs care, or a surrogate pair.
inline Units drawText(Choices& choices) {
  Units text(choices.upTo(40), ' ');
  for (unsigned short& unit : text)
    unit = static_cast<unsigned short>(0x20 + choices.upTo(0x5E));
  if (text.size() < 2 || choices.coin()) return text;
  const std::size_t at = choices.upTo(text.size() - 2);
  constexpr unsigned short kOdd[] = {0,     0x1F,  '"',    '\\',   0x7F,   0x80,  0xE4,
                                     0x7FF, 0x800, 0xD800, 0xDBFF, 0xDC00, 0xFFFF};
  text[at] = choices.oneOf(kOdd);
  if (choices.coin()) text[at + 1] = static_cast<unsigned short>(0xDC00 + choices.upTo(0x3FF));
  return text;
}

// Mostly decimals: also such as the conversions never give.
inline std::string drawDecimal(Choices& choices) {
  std::string text(choices.upTo(3) == 0 ? "-" : "");
  text += std::string(choices.upTo(9), '0');
  for (std::size_t left = choices.upTo(20); left > 0; --left)
    text += choices.oneOf(std::string_view("0123456789"));
  if (choices.coin()) text.insert(choices.upTo(text.size()), 1, '.');
  if (choices.upTo(7) == 0) text.insert(choices.upTo(text.size()), 1, choices.oneOf(std::string_view(".-E,x\"")));
  return text;
}

inline std::string modelText(const Units& text) {
  const Units shown = text.substr(0, text.find_last_not_of(' ') + 1);
  const std::string valid = oxr::toUtf8(shown);  // U+FFFD for half a pair
  rapidjson::StringBuffer out;
  rapidjson::Writer(out).String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
  return {out.GetString(), out.GetSize()};
}

inline std::string modelDecimal(const std::string& text, bool pointsAsText) {
  const std::string minus = text.starts_with('-') ? "-" : "";
  std::string digits = text.substr(minus.size());
  const std::size_t point = digits.find('.');
  std::string places = point == std::string::npos ? "" : digits.substr(point + 1);
  std::string whole = digits.substr(0, point);
  const bool isDecimal =
      !(whole + places).empty() && (whole + places).find_first_not_of("0123456789") == std::string::npos;
  if (!isDecimal) return modelText(Units(text.begin(), text.end()));
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size()));
  const std::string number = minus + (whole.empty() ? "0" : whole) + (places.empty() ? "" : '.' + places);
  return pointsAsText && !places.empty() ? '"' + number + '"' : number;
}

// The JSON that a value has in a line of its own.
inline std::string written(const PWFData& value, bool pointsAsText) {
  const std::vector<unsigned short> names = {'A', 0};
  JsonHandler json(names, {pointsAsText});
  const WorkerInfoPtr none;
  json.startMessage(none, none);
  json.startElement(names.data(), kFieldElement, none, -1, -1);
  json.data(value, none, -1, -1);
  json.endElement(names.data(), none);
  json.endMessage(none);
  const std::string line(json.lines());
  return line.substr(5, line.size() - 7);
}

// What JsonLine writes of a text, or of a decimal, that lies between digits in memory.
template <class Write>
std::string writtenAmidDigits(const Units& units, Write write) {
  const Units digits(16, '7'), area = digits + units + digits;
  JsonLine line;
  write(line, UnitView(area).substr(digits.size(), units.size()));
  return std::string(line.buffer().text());
}

}  // namespace jsonvalue

inline void checkJsonValue(Choices& choices) {
  using namespace jsonvalue;
  if (choices.coin()) {
    Units text = drawText(choices);
    requireEqual(written(PWFData(KelWstring(UnitView(text))), false), modelText(text), "a text");
    text.erase(text.find_last_not_of(' ') + 1);
    requireEqual(writtenAmidDigits(text, [](JsonLine& line, UnitView view) { line.text(view); }), modelText(text),
                 "a text amid digits");
    return;
  }
  const std::string text = drawDecimal(choices);
  const bool pointsAsText = choices.coin();
  const PWFData value(oxr::fromUtf8(text).characters(), DECIMAL);
  const std::string model = modelDecimal(text, pointsAsText);
  requireEqual(written(value, pointsAsText), model, "the decimal " + text);
  const auto write = [pointsAsText](JsonLine& line, UnitView view) { line.decimal(view, pointsAsText); };
  requireEqual(writtenAmidDigits(Units(text.begin(), text.end()), write), model, "the decimal amid digits " + text);
}

}  // namespace oxr::fuzz
