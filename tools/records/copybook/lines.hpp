#pragma once

#include <cstdint>
#include <string>

#include "records/copybook/source.hpp"
#include "records/copybook/sourceformat.hpp"

namespace oxr::rec::copybook {

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
  LineReader(const Source& source, SourceFormat format);

  // Returns false at the end of the text; `line` is then untouched.
  bool next(ProgramLine& line);

 private:
  bool nextRaw();
  bool obeyDirective();
  bool reduce(ProgramLine& line) const;

  const Source& source_;
  bool isFree_;
  std::size_t at_ = 0;        // in the source text
  std::uint32_t number_ = 0;  // of the line in expanded_
  bool hadTab_ = false;
  std::string expanded_;
};

}  // namespace oxr::rec::copybook
