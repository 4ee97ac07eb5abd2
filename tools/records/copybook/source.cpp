#include "records/copybook/source.hpp"

#include <algorithm>

#include "records/copybook/error.hpp"

namespace oxr::rec::copybook {

namespace {

constexpr std::size_t kTabStop = 8;
constexpr std::size_t kMaxShownLine = 160;  // columns of a source line in a message
constexpr std::size_t kMaxTextBytes = 4U << 20;

// The line for people: only printable ASCII, so that a column is a column and no terminal is hurt.
std::string shownLine(std::string_view line) {
  std::string shown = expandTabs(line.substr(0, kMaxShownLine)).substr(0, kMaxShownLine);
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return shown;
}

}  // namespace

std::string_view lineAt(std::string_view text, std::size_t at) {
  std::string_view line = text.substr(at, text.find('\n', at) - at);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::string expandTabs(std::string_view line) {
  std::string expanded;
  for (const char c : line) {
    if (c == '\t')
      expanded.append(kTabStop - expanded.size() % kTabStop, ' ');
    else
      expanded += c == '\f' ? ' ' : c;
  }
  return expanded;
}

Source::Source(std::string_view text, std::string_view fileName) : text_(text), fileName_(fileName) {
  if (text.size() > kMaxTextBytes) raise("the copybook has more than 4 MiB");
  if (text_.starts_with("\xEF\xBB\xBF")) text_.remove_prefix(3);
  // Old editors mark the end with control-Z.
  const std::size_t last = text_.find_last_not_of(" \t\r\n\f\x1A");
  text_ = text_.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

void Source::raise(Place place, const std::string& message) const {
  std::size_t at = 0;
  for (std::uint32_t line = 1; line < place.line && at < text_.size(); ++line)
    at = text_.find('\n', at) + 1;
  const std::string shown = shownLine(lineAt(text_, at));
  std::string text = std::string(fileName_) + ':' + std::to_string(place.line) + ':' + std::to_string(place.column) +
                     ": " + message + "\n      |" + shown;
  if (place.column <= kMaxShownLine) text += "\n      |" + std::string(place.column - 1, ' ') + '^';
  throw CopybookError(text, std::string(fileName_), place.line, place.column, message);
}

void Source::raise(const std::string& message) const {
  throw CopybookError(std::string(fileName_) + ": " + message, std::string(fileName_), 0, 0, message);
}

}  // namespace oxr::rec::copybook
