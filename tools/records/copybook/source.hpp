#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace oxr::rec::copybook {

using FileIndex = std::uint32_t;

// Line and column, both from 1, and the text that they are in. A column is where an editor with tab stops at 9, 17, ...
// shows the character.
struct Place {
  std::uint32_t line = 0;
  std::uint32_t column = 0;
  FileIndex file = 0;
};

// The text of a copybook and of all that it copies, with their names. All faults of a copybook are raised here, where
// their line can be shown.
class Source {
 public:
  Source(std::string text, std::string fileName);

  // Adds a text that is copied. Leaves out a leading byte order mark, and blanks and control-Z marks at the end.
  // Throws CopybookError if it is too long.
  FileIndex add(std::string text, std::string fileName);

  std::string_view text(FileIndex file) const { return files_[file].text; }
  const std::string& fileName(FileIndex file) const { return files_[file].name; }
  std::vector<std::string> fileNames() const;

  // DECIMAL-POINT IS COMMA, which a program says for all its pictures.
  void setDecimalComma() { hasDecimalComma_ = true; }
  bool hasDecimalComma() const { return hasDecimalComma_; }

  // Throws CopybookError with the source line and a caret under the place.
  [[noreturn]] void raise(Place place, const std::string& message) const;
  // The same for a fault that is not in one place of the first text.
  [[noreturn]] void raise(const std::string& message) const;

 private:
  struct File {
    std::string whole;
    std::string name;
    std::string_view text;  // of `whole`
  };

  bool hasDecimalComma_ = false;
  std::deque<File> files_;  // they stay where they are, since views lead to them
};

// The line of `text` that begins at `at`, without its end.
std::string_view lineAt(std::string_view text, std::size_t at);
// Blanks in the place of tabs, up to the next stop, and of form feeds.
std::string expandTabs(std::string_view line);

}  // namespace oxr::rec::copybook
