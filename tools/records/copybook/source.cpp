#include "records/copybook/source.hpp"

#include <algorithm>

#include "records/copybook/characters.hpp"
#include "records/copybook/copybook.hpp"
#include "records/copybook/error.hpp"

namespace oxr::rec::copybook {

namespace {

constexpr std::size_t kTabStop = 8;
constexpr std::size_t kMaxShownLine = 160;  // columns of a source line in a message

// The line for people: only printable ASCII, so that a column is a column and no terminal is hurt.
std::string shownLine(std::string_view line) {
  const std::string expanded = expandTabs(line.substr(0, 4 * kMaxShownLine));
  std::string shown;
  for (std::size_t at = 0; at < expanded.size() && shown.size() < kMaxShownLine; at += characterBytes(expanded, at))
    shown += expanded[at] < ' ' || expanded[at] > '~' ? '?' : expanded[at];
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
  std::size_t column = 0;
  for (std::size_t at = 0; at < line.size();) {
    const std::size_t bytes = characterBytes(line, at);
    const std::size_t width = line[at] == '\t' ? kTabStop - column % kTabStop : 1;
    if (line[at] == '\t' || line[at] == '\f')
      expanded.append(width, ' ');
    else
      expanded += line.substr(at, bytes);
    at += bytes;
    column += width;
  }
  return expanded;
}

Source::Source(std::string text, std::string fileName) {
  add(std::move(text), std::move(fileName));
}

FileIndex Source::add(std::string text, std::string fileName) {
  File& file = files_.emplace_back(File{std::move(text), std::move(fileName), {}});
  const auto index = static_cast<FileIndex>(files_.size() - 1);
  if (file.whole.size() > kMaxCopybookBytes) raise({0, 0, index}, "the copybook has more than 4 MiB");
  file.text = file.whole;
  if (file.text.starts_with("\xEF\xBB\xBF")) file.text.remove_prefix(3);
  // Old editors mark the end with control-Z.
  const std::size_t last = file.text.find_last_not_of(" \t\r\n\f\x1A");
  file.text = file.text.substr(0, last == std::string_view::npos ? 0 : last + 1);
  return index;
}

std::vector<std::string> Source::fileNames() const {
  std::vector<std::string> names;
  for (const File& file : files_)
    names.push_back(file.name);
  return names;
}

void Source::raise(Place place, const std::string& message) const {
  const File& file = files_[place.file];
  if (place.line == 0) throw CopybookError(file.name + ": " + message, file.name, 0, 0, message);
  std::size_t at = 0;
  for (std::uint32_t line = 1; line < place.line && at < file.text.size(); ++line)
    at = file.text.find('\n', at) + 1;
  const std::string shown = shownLine(lineAt(file.text, at));
  std::string text = file.name + ':' + std::to_string(place.line) + ':' + std::to_string(place.column) + ": " +
                     message + "\n      |" + shown;
  if (place.column <= kMaxShownLine) text += "\n      |" + std::string(place.column - 1, ' ') + '^';
  throw CopybookError(text, file.name, place.line, place.column, message);
}

void Source::raise(const std::string& message) const {
  raise(Place{}, message);
}

}  // namespace oxr::rec::copybook
