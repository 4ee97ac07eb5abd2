#include "records/layout.hpp"

#include <array>
#include <sstream>

namespace oxr::rec {

namespace {

constexpr std::array<std::string_view, 13> kKindNames = {
    "group",      "text",      "edited",   "external", "binary",         "nativeBinary", "packed",
    "shortFloat", "longFloat", "national", "dbcs",     "unsignedPacked", "opaque"};
static_assert(kKindNames[static_cast<std::size_t>(Kind::opaque)] == "opaque");

constexpr std::array<std::string_view, 5> kSignNotes = {"", "", "", ", sign leading separate",
                                                        ", sign trailing separate"};

std::string displayName(const Item& item) {
  return item.isFiller() ? "FILLER" : item.name;
}

void appendCell(std::string& row, const std::string& text, std::size_t width) {
  row += text;
  row.append(text.size() < width ? width - text.size() : 1, ' ');
}

// What follows the columns: picture, array bounds, redefinition, sign.
std::string notes(const Layout& layout, const Item& item) {
  std::ostringstream text;
  text << item.picture;
  if (item.sign == SignPlace::leadingIncluded) text << ", sign leading";
  text << kSignNotes[static_cast<std::size_t>(item.sign)];
  if (item.occurs.isCounted()) {
    text << ", " << item.occurs.min << " to " << item.occurs.max << " times by "
         << layout.items[layout.counters[item.occurs.counter]].name;
  } else if (item.occurs.isArray) {
    text << ", " << item.occurs.max << " times";
  }
  if (item.slack != 0) text << ", after " << item.slack << (item.slack == 1 ? " slack byte" : " slack bytes");
  if (item.redefines != kNoItem) text << ", redefines " << displayName(layout.items[item.redefines]);
  if (item.isWideBinary()) text << ", wider than 18 digits";
  std::string result = text.str();
  return result.starts_with(", ") ? result.substr(2) : result;
}

// Whether the record is one that a field of level 01 or 77 was put into.
bool isOnlyAround(const Item& record, const Item& first) {
  return record.level == 0 && (first.level == 1 || first.level == 77);
}

}  // namespace

std::string_view kindName(Kind kind) {
  return kKindNames[static_cast<std::size_t>(kind)];
}

std::optional<std::uint32_t> Layout::recordOffset(ItemIndex item) const {
  std::uint32_t offset = 0;
  for (; item != 0; item = items[item].parent) {
    if (!items[item].hasFixedOffset) return std::nullopt;
    offset += items[item].offset;
  }
  return offset;
}

std::string Layout::placeOf(const Item& item) const {
  return fileNames[item.file] + ':' + std::to_string(item.line);
}

std::string describe(const Layout& layout) {
  constexpr std::size_t kNameWidth = 40;
  std::string table;
  appendCell(table, "level and name", kNameWidth);
  table += "offset    size  kind          picture\n";
  std::vector<std::size_t> depth(layout.items.size(), 0);
  const ItemIndex first = layout.items.size() > 1 && isOnlyAround(layout.items[0], layout.items[1]) ? 1 : 0;
  for (ItemIndex i = first; i < layout.items.size(); ++i) {
    const Item& item = layout.items[i];
    if (i != first) depth[i] = depth[item.parent] + 1;
    const auto offset = layout.recordOffset(i);
    const std::string where = offset ? std::to_string(*offset) : "var";
    const std::string size = std::to_string(item.size);
    std::string row(2 * depth[i], ' ');
    appendCell(row, std::to_string(item.level) + ' ' + displayName(item),
               kNameWidth - std::min(kNameWidth, row.size()));
    row += std::string(where.size() < 6 ? 6 - where.size() : 0, ' ') + where + ' ';
    row += std::string(size.size() < 7 ? 7 - size.size() : 0, ' ') + size + "  ";
    appendCell(row, std::string(kindName(item.kind)), 14);
    row += notes(layout, item);
    row.erase(row.find_last_not_of(' ') + 1);
    table += row + '\n';
  }
  return table;
}

}  // namespace oxr::rec
