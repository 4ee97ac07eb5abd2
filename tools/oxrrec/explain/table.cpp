#include <algorithm>
#include <array>

#include "oxrrec/explain/record.hpp"
#include "oxrrec/hextext.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kShownBytes = 12;
constexpr std::size_t kColumns = 6;
using Row = std::array<std::string, kColumns>;
constexpr std::array<bool, kColumns> kIsNumber = {false, true, true, false, false, false};

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

// Characters of a UTF-8 text.
std::size_t lengthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string explainTable(const ExplainedRecord& record) {
  std::vector<Row> rows{{"field", "offset", "length", "picture", "bytes", "value"}};
  for (const ExplainedField& field : record.fields)
    rows.push_back({field.path, std::to_string(field.offset), std::to_string(field.size), field.picture,
                    shownBytes(record, field), valueOf(field)});
  std::array<std::size_t, kColumns> widths{};
  for (const Row& row : rows)
    for (std::size_t i = 0; i + 1 < kColumns; ++i)
      widths[i] = std::max(widths[i], lengthOf(row[i]));
  std::string table = "record " + std::to_string(record.number) + " of " + record.input;
  if (!record.kind.empty()) table += ", " + record.kind;
  table += ": " + std::to_string(record.bytes.size()) + " bytes from byte " + std::to_string(record.offset) + '\n';
  for (const Row& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < kColumns; ++i) {
      const std::string room(std::max(widths[i], lengthOf(row[i])) - lengthOf(row[i]), ' ');
      line += (i == 0 ? "" : "  ") + (kIsNumber[i] ? room + row[i] : row[i] + room);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    table += line + '\n';
  }
  for (const std::string& fault : record.faults)
    table += "! " + fault + '\n';
  return table;
}

}  // namespace oxr::rec
