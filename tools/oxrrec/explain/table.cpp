#include <algorithm>
#include <span>

#include "oxrrec/explain/record.hpp"
#include "oxrrec/table.hpp"
#include "records/counted.hpp"
#include "records/fields/hextext.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kShownBytes = 12;
std::string shownBytes(const ExplainedRecord& record, const ExplainedField& field) {
  const std::size_t begin = std::min<std::size_t>(field.offset, record.bytes.size());
  const std::size_t size = std::min<std::size_t>(field.size, record.bytes.size() - begin);
  const std::string text = hexText({record.bytes.data() + begin, std::min(size, kShownBytes)}, " ");
  return size > kShownBytes ? text + " ..." : text;
}

std::string valueOf(const ExplainedField& field) {
  if (field.fault.empty()) return field.value;
  if (field.advice.empty()) return "! " + field.fault;
  return "! " + field.fault + "; " + field.advised + " with " + field.advice;
}

std::string fieldsTable(const ExplainedRecord& record) {
  std::vector<std::vector<std::string>> rows{{"field", "offset", "length", "picture", "bytes", "value"}};
  for (const ExplainedField& field : record.fields)
    rows.push_back({field.path, std::to_string(field.offset), std::to_string(field.size), field.picture,
                    shownBytes(record, field), valueOf(field)});
  return tableText(rows, {false, true, true, false, false, false});
}

std::string bytesTable(const ExplainedRecord& record) {
  constexpr std::size_t kRow = 16, kMost = 4096;
  std::vector<std::vector<std::string>> rows{{"offset", "bytes", "characters"}};
  for (std::size_t at = 0; at < std::min(record.bytes.size(), kMost); at += kRow) {
    const auto bytes = std::span(record.bytes).subspan(at, std::min(record.bytes.size() - at, kRow));
    std::string characters;
    for (const unsigned char byte : bytes)
      characters += record.characters[byte];
    rows.push_back({std::to_string(at), hexText(bytes, " "), characters});
  }
  if (record.bytes.size() > kMost) rows.push_back({"..."});
  return tableText(rows, {true, false, false});
}

}  // namespace

std::string kindText(const ExplainedRecord& record) {
  return record.isUnknown ? "of no kind" : record.kind;
}

std::string explainTable(const ExplainedRecord& record) {
  std::string table = "record " + std::to_string(record.number) + " of " + record.input;
  if (const std::string kind = kindText(record); !kind.empty()) table += ", " + kind;
  table += ": " + counted(record.bytes.size(), "byte") + " from byte " + std::to_string(record.offset) + '\n';
  table += record.isUnknown ? bytesTable(record) : fieldsTable(record);
  for (const std::string& fault : record.faults)
    table += "! " + fault + '\n';
  return table;
}

}  // namespace oxr::rec
