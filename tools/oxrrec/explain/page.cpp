#include <algorithm>
#include <string_view>

#include "oxrrec/explain/pagetext.hpp"
#include "oxrrec/explain/record.hpp"
#include "records/counted.hpp"
#include "records/fields/hextext.hpp"
#include "records/json/jsontext.hpp"

namespace oxr::rec {

namespace {

// What a browser shows without a halt.
constexpr std::size_t kShownBytes = 16384;
// What stands in page.html in the place of the record.
constexpr std::string_view kMark = ">RECORD<";

// Within a script no text may look like the end of it.
std::string escaped(std::string_view json) {
  std::string text;
  for (const char c : json)
    text += c == '<' ? "\\u003c" : std::string(1, c);
  return text;
}

void putField(JsonText& json, const ExplainedField& field) {
  json.writer().StartObject();
  json.put("path", field.path);
  json.put("offset", field.offset);
  json.put("length", field.size);
  json.put("picture", field.picture);
  json.put("value", field.value);
  if (field.isFiller) json.put("filler", 1);
  if (!field.fault.empty()) json.put("fault", field.fault);
  if (field.badByte) json.put("badByte", *field.badByte);
  if (!field.advice.empty()) {
    json.put("advice", field.advice);
    json.put("advised", field.advised);
  }
  json.writer().EndObject();
}

std::string jsonOf(const ExplainedRecord& record) {
  const std::size_t shown = std::min(record.bytes.size(), kShownBytes);
  JsonText json;
  json.writer().StartObject();
  json.put("title", "Record " + std::to_string(record.number) + " of " + record.input);
  std::string facts = counted(record.bytes.size(), "byte") + " from byte " + std::to_string(record.offset);
  if (const std::string kind = kindText(record); !kind.empty()) facts = kind + " · " + facts;
  for (const std::string& fault : record.faults)
    facts += " · " + fault;
  json.put("facts", facts);
  json.put("page", "CCSID " + std::to_string(record.ccsid));
  json.put("bytes", hexText({record.bytes.data(), shown}));
  std::string characters;
  for (std::size_t i = 0; i < shown; ++i)
    characters += record.characters[record.bytes[i]];
  json.put("text", characters);
  if (shown < record.bytes.size())
    json.put("cut", "The first " + std::to_string(shown) + " of " + std::to_string(record.bytes.size()) + " bytes.");
  json.writer().Key("fields");
  json.writer().StartArray();
  for (const ExplainedField& field : record.fields)
    putField(json, field);
  json.writer().EndArray();
  json.writer().EndObject();
  return escaped(json.text());
}

}  // namespace

std::string explainPage(const ExplainedRecord& record) {
  const std::string_view page = kPageText;
  const std::size_t mark = page.find(kMark);
  return std::string(page.substr(0, mark + 1)) + jsonOf(record) + std::string(page.substr(mark + kMark.size() - 1));
}

}  // namespace oxr::rec
