#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace oxr::rec::copybook {

// Line and column, both from 1. A column is where an editor with tab stops at 9, 17, ... shows the character.
struct Place {
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

// The text of a copybook and its name. All faults of a copybook are raised here, where their line can be shown.
class Source {
 public:
  // Keeps views of both. Leaves out a leading byte order mark, and blanks and control-Z marks at the end.
  Source(std::string_view text, std::string_view fileName);

  std::string_view text() const { return text_; }
  std::string_view fileName() const { return fileName_; }

  // Throws CopybookError with the source line and a caret under the place.
  [[noreturn]] void raise(Place place, const std::string& message) const;
  // The same for a fault that is not in one place.
  [[noreturn]] void raise(const std::string& message) const;

 private:
  std::string_view text_;
  std::string_view fileName_;
};

// The line of `text` that begins at `at`, without its end.
std::string_view lineAt(std::string_view text, std::size_t at);
// Blanks in the place of tabs, up to the next stop, and of form feeds.
std::string expandTabs(std::string_view line);

}  // namespace oxr::rec::copybook
