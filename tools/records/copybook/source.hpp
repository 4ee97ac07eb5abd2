#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "records/copybook/ascii.hpp"
#include "records/copybook/copybook.hpp"

namespace oxr::rec {

// Line and column, both from 1. A column is where an editor with tab stops at 9, 17, ... shows the character.
struct Place {
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

bool equalIgnoringCase(std::string_view a, std::string_view b);
std::string upperCase(std::string_view text);

// The text of a copybook and its name: where all failures are raised.
class CopybookSource {
 public:
  // Keeps views of both. Leaves out a byte order mark and blanks and control-Z marks at the end.
  CopybookSource(std::string_view text, std::string_view fileName);

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

// A line reduced to its program text, sequence area and indicator blanked, so that index + 1 is the column.
struct ProgramLine {
  std::string text;
  std::uint32_t number = 0;
  bool isContinuation = false;  // fixed format only: "-" in column 7
};

// Walks through the lines that carry program text. Comments, blank lines, EJECT and SKIP are passed over, format
// directives obeyed. One line is in memory at a time.
class LineReader {
 public:
  LineReader(const CopybookSource& source, SourceFormat format);

  // False at the end of the text; `line` is then untouched.
  bool next(ProgramLine& line);

 private:
  bool nextRaw();
  bool obeyDirective();
  bool reduce(ProgramLine& line) const;

  const CopybookSource& source_;
  bool isFree_;
  std::size_t at_ = 0;        // in the source text
  std::uint32_t number_ = 0;  // of the line in expanded_
  bool hadTab_ = false;
  std::string expanded_;
};

}  // namespace oxr::rec
