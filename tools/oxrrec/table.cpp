#include "oxrrec/table.hpp"

#include <algorithm>

namespace oxr::rec {

namespace {

// Characters of a UTF-8 text.
std::size_t lengthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string tableText(const std::vector<std::vector<std::string>>& rows, const std::vector<bool>& isNumber) {
  std::vector<std::size_t> widths(isNumber.size(), 0);
  for (const auto& row : rows)
    for (std::size_t i = 0; i + 1 < row.size(); ++i)
      widths[i] = std::max(widths[i], lengthOf(row[i]));
  std::string table;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t length = lengthOf(row[i]);
      const std::string room(std::max(widths[i], length) - length, ' ');
      line += (i == 0 ? "" : "  ") + (isNumber[i] ? room + row[i] : row[i] + room);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    table += line + '\n';
  }
  return table;
}

}  // namespace oxr::rec
