#include "records/fields/faults.hpp"

#include <algorithm>

#include "records/fields/hextext.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kShownBytes = 64;

std::string hex(std::span<const unsigned char> bytes) {
  std::string text = ' ' + hexText(bytes.first(std::min(bytes.size(), kShownBytes)), " ");
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

std::string inBrackets(int message) {
  return message == 0 ? std::string() : " (OXR" + std::to_string(message) + ')';
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
  std::string text;
  for (const std::string& insert : failure.inserts())
    text += (text.empty() ? "" : "; ") + insert;
  return onOneLine(text) + inBrackets(failure.oxrMessageNumber());
}

std::string FieldFault::path() const {
  return fieldPath(*layout, item, arrays);
}

std::string FieldFault::reasonText() const {
  const std::string text = reason.text(bytes.size());
  return reason.code == FaultCode::badCount ? text + " as " + fieldPath(*layout, reason.other, {}) + " asks" : text;
}

std::string FieldFault::text() const {
  std::string text = "record " + std::to_string(record) + ", byte " + std::to_string(offset);
  if (item != kNoItem) text += ", " + path();
  text += ": " + reasonText();
  if (!bytes.empty()) text += "; bytes" + hex(bytes);
  return text;
}

}  // namespace oxr::rec
