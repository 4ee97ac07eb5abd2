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
  const auto number = [this](std::size_t i) { return std::to_string(reason.numbers[i]); };
  switch (reason.code) {
    case FaultCode::recordEnds:
      return "the record ends after " + number(0) + " bytes, before the field does";
    case FaultCode::recordLonger:
      return "the record has " + number(0) + " bytes, " + number(1) + " more than its layout";
    case FaultCode::badCount:
      return "the count is " + (reason.numbers[0] == -1 ? std::string("no number of times") : number(0)) +
             ", not within " + number(1) + " and " + number(2) + " as " + fieldPath(*layout, reason.other, {}) +
             " asks";
    case FaultCode::noCount:
      return "no count was read for it";
    case FaultCode::noKind:
      return "no condition (--when) holds for this value";
    default:
      return reason.detail;
  }
}

std::string FieldFault::text() const {
  std::string text = "record " + std::to_string(record) + ", byte " + std::to_string(offset);
  if (item != kNoItem) text += ", " + path();
  text += ": " + reasonText();
  if (!bytes.empty()) text += "; bytes" + hex(bytes);
  return text;
}

}  // namespace oxr::rec
