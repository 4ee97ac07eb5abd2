#pragma once

#include <charconv>
#include <iterator>
#include <map>
#include <string>

#include "harness/failures.hpp"
#include "harness/text.hpp"
#include "pwfdata.hpp"

// Results and failures as the words of a table.
namespace oxr::test {

// The texts with which failures begin unless they say otherwise.
inline const std::map<int, std::string>& usualTexts() {
  static const std::map<int, std::string> texts = {
      {5502, "CPI Internal Error"},
      {5505, "CPI Converter Input Data Invalid"},
      {5506, "CPI Converter Input Data Out Of Bounds"},
      {5507, "CPI InputData Too Long"},
      {5516, "CPI Datetime invalid Epoch"},
      {5520, "CPI Converter Invalid Padding Character"},
      {5521, "CPI Converter An attempt to add padding to fixed length field has failed"},
      {5523, "Exception caught trying to convert a logical string to a PWFData object"},
      {5527, "CPI Datetime From Binary Error"},
      {5528, "CPI Datetime To Binary Error"},
      {5529, "Invalid timezone"},
      {5539, "CPI Unable to format datetime internally"},
      {5540, "CPI Unable to parse datetime internally"},
      {5544, "CPI String invalid format for pattern 'I'."},
      {5546, "CPI Years/months along with days/hours/minutes/seconds"},
      {5547, "CPI Field value > 32BIT_MAX"},
      {5549, "CPI Cannot store more than ~100 million days in PWFInterval"},
      {5550, "Strict Numeric Checking: Numeric cannot be zero in length."},
      {5551, "Strict Numeric Checking: Numeric can only have the specified decimal point."},
      {5552, "Strict Numeric Checking: Numeric must have an integer part."},
      {5553, "Strict Numeric Checking: Explicit Decimal Point numeric must have a decimal point."},
      {5554, "Strict Numeric Checking: Only Explicit Decimal Point numerics may end with a decimal point."},
      {5555, "Strict Numeric Checking: A non-exponential numeric cannot be given in exponential format."},
      {5556, "Strict Numeric Checking: An exponential numeric must be given in exponential format."},
      {5557, "Strict Numeric Checking: Incorrect number of decimal places given."},
      {5558, "Strict Numeric Checking: Numeric with VDP should not have a decimal point."},
      {5559, "CPI Unable to convert datetime. Datetime outside possible range"},
      {5561, "CPI Unable to convert to datetime. Milliseconds outside possible range"},
      {5563, "CPI DateTime Format string not set"},
  };
  return texts;
}

// "OXR5505: packed decimal, no sign found | 0x1234": the number and the inserts after the failure's usual text;
// "OXR5502 bare: ..." where that text is missing. Only another class than KelConversionException is named, before it.
inline std::string shown(const Raised& raised) {
  std::string text = raised.kind == "KelConversionException" ? "" : raised.kind + ' ';
  const int number = raised.number & 0xFFFF;
  const bool isError = raised.number == static_cast<int>(0xC0000000u | static_cast<unsigned>(number));
  text += (isError ? "OXR" : "not an error: ") + std::to_string(number);
  const auto usual = usualTexts().find(number);
  auto insert = raised.inserts.begin();
  if (usual != usualTexts().end() && insert != raised.inserts.end() && *insert == usual->second)
    ++insert;
  else
    text += " bare";
  for (const char* separator = ": "; insert != raised.inserts.end(); ++insert, separator = " | ")
    text += separator + *insert;
  return text;
}

inline std::string shown(const std::string& text) {
  return text;
}
inline std::string shown(const KelWstring& text) {
  return toUtf8(text);
}
inline std::string shown(bool value) {
  return value ? "true" : "false";
}
// The shortest text that reads back as the same number.
template <class Number>
requires std::is_arithmetic_v<Number> std::string shown(Number value) {
  char text[64];
  return std::string(text, std::to_chars(text, std::end(text), value).ptr);
}
// The text of a DECIMAL; other types with their name, "STRING 12".
inline std::string shown(const PWFData& value) {
  const int type = value.getDataLogicalType();
  const UnitView text(static_cast<const unsigned short*>(value.getDataValue()),
                      static_cast<std::size_t>(value.getDataLength()) / 2);
  if (type == DECIMAL) return toUtf8(text);
  return type == STRING ? "STRING " + toUtf8(text) : "type " + std::to_string(type);
}

// What `call` gives, or what it raises.
template <class Call>
std::string outcomeOf(Call call) {
  std::string text;
  const Raised raised = raisedBy([&] { text = shown(call()); });
  return raised.kind.empty() ? text : shown(raised);
}

}  // namespace oxr::test
