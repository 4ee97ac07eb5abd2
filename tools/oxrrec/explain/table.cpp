#include <algorithm>

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

}  // namespace

std::string explainTable(const ExplainedRecord& record) {
  std::vector<std::vector<std::string>> rows{{"field", "offset", "length", "picture", "bytes", "value"}};
  for (const ExplainedField& field : record.fields)
    rows.push_back({field.path, std::to_string(field.offset), std::to_string(field.size), field.picture,
                    shownBytes(record, field), valueOf(field)});
  std::string table = "record " + std::to_string(record.number) + " of " + record.input;
  if (!record.kind.empty()) table += ", " + record.kind;
  table += ": " + counted(record.bytes.size(), "byte") + " from byte " + std::to_string(record.offset) + '\n';
  table += tableText(rows, {false, true, true, false, false, false});
  for (const std::string& fault : record.faults)
    table += "! " + fault + '\n';
  return table;
}

}  // namespace oxr::rec
