#pragma once

#include <cstdint>
#include <string>

#include "records/copybook/source.hpp"
#include "records/copybook/sourceformat.hpp"

namespace oxr::rec::copybook {

// A line reduced to its program text, sequence area and indicator blanked, so that a character's index + 1 is its
// column.
struct ProgramLine {
  std::string text;
  std::uint32_t number = 0;
  bool isContinuation = false;  // fixed format only: "-" in column 7
};

// Walks through the lines that carry program text. Comments, blank lines, EJECT and SKIP are passed over, format
// directives obeyed; of a whole program only the data division is read. One line is in memory at a time.
//
// Throws CopybookError for a directive that is not understood, for a program without a data division, and, if the
// format was found and not given, for program text that goes on behind the last column that is read.
class LineReader {
 public:
  // `format` says fixed or free, or whether `isFreeInDoubt` holds where the text does not tell.
  LineReader(const Source& source, FileIndex file, SourceFormat format, bool isFreeInDoubt);

  // Returns false at the end of the text; `line` is then untouched.
  bool next(ProgramLine& line);

  // A program whose pictures have a comma before the places of a number.
  bool hasDecimalComma() const { return hasDecimalComma_; }
  // The format of the line that was read last.
  bool isFree() const { return isFree_; }

 private:
  void findDataDivision();
  bool nextReduced(ProgramLine& line);
  bool nextRaw();
  bool obeyDirective();
  bool reduce(ProgramLine& line);
  void checkBehind(const std::string& text, std::size_t end);
  [[noreturn]] void refuseBehind(std::uint32_t line) const;

  const Source& source_;
  const FileIndex file_;
  const std::string_view text_;
  const bool isFormatGiven_;
  bool isFree_;
  std::uint32_t firstLine_ = 0;  // lines before it are not read
  bool isProgram_ = false;
  bool hasDecimalComma_ = false;
  std::size_t at_ = 0;        // in text_
  std::uint32_t number_ = 0;  // of the line in expanded_
  bool hadTab_ = false;
  std::uint32_t endedBehind_ = 0;  // the last line, if its text has no period, but what stands behind it has one
  std::string expanded_;
};

}  // namespace oxr::rec::copybook
