#include "records/fields/faults.hpp"

#include <algorithm>

namespace oxr::rec {

namespace {

constexpr std::size_t kShownBytes = 64;

std::string hex(std::span<const unsigned char> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const unsigned char byte : bytes.first(std::min(bytes.size(), kShownBytes))) {
    text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  if (bytes.size() > kShownBytes) text += " ... (" + std::to_string(bytes.size()) + " in all)";
  return text;
}

std::string pathPart(const Item& item, ItemIndex index, std::span<const OpenArray> arrays) {
  std::string part = item.isFiller() ? "FILLER" : item.name;
  const auto open = std::find_if(arrays.begin(), arrays.end(), [&](const OpenArray& a) { return a.item == index; });
  if (open != arrays.end()) part += '(' + std::to_string(open->index + std::uint64_t{1}) + ')';
  return part;
}

// Inserts may hold text of the record: nothing of it shall move a terminal's cursor.
std::string onOneLine(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  return text;
}

}  // namespace

std::string fieldPath(const Layout& layout, ItemIndex item, std::span<const OpenArray> arrays) {
  std::string path;
  for (ItemIndex at = item; at != 0 && at != kNoItem; at = layout.items[at].parent) {
    const Item& entry = layout.items[at];
    if (entry.isFiller() && entry.isGroup() && !entry.occurs.isArray) continue;
    const std::string part = pathPart(entry, at, arrays);
    path.insert(0, path.empty() ? part : part + '.');
  }
  return path;
}

std::string faultText(const KelException& failure) {
  std::string text = "OXR" + std::to_string(failure.oxrMessageNumber());
  char separator = ':';
  for (const std::string& insert : failure.inserts()) {
    text += separator;
    text += ' ';
    text += insert;
    separator = ';';
  }
  return onOneLine(text);
}

std::string FieldFault::text() const {
  std::string text = "record " + std::to_string(record) + ", byte " + std::to_string(offset);
  if (!path.empty()) text += ", " + path;
  text += ": " + reason;
  if (!bytes.empty()) text += "; bytes" + hex(bytes);
  return text;
}

}  // namespace oxr::rec
