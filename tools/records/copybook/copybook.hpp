#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "records/layout.hpp"

namespace oxr::rec {

// How the lines of a copybook are built.
//
// fixed: columns 1 to 6 are a sequence area, column 7 holds an indicator ("*" and "/" comment, "-" continuation, "D"
//   debugging line, left out like a comment), program text goes from column 8 to 72, the rest is ignored. Any other
//   character in column 7 counts as program text, since level numbers are often found there.
// free: program text stands anywhere in the line.
// detect: free if the first entry's level number starts in columns 1 to 6, else fixed.
//
// In both, tabs go to every eighth column, "*>" starts a comment, a line whose first character is "*" is one, and a
// line ">>SOURCE FORMAT IS FREE" or "FIXED" changes the format from there on. In fixed format a line with tabs is not
// cut at column 72: tabs make it look longer than its author saw it.
enum class SourceFormat : std::uint8_t { detect, fixed, free };

struct CopybookOptions {
  SourceFormat format = SourceFormat::detect;
  // The level 01 entry to lay out, in any case of letters; empty for the first one.
  std::string record;
};

// A copybook that cannot be read or laid out. what() is complete for people and may have several lines:
//
//   customers.cob:7:34: expected a number of times after OCCURS, found 'FIVE'
//         |           10 TRANSACTION OCCURS FIVE TO 5
//         |                                 ^
class CopybookError : public std::runtime_error {
 public:
  CopybookError(const std::string& text, std::string file, std::uint32_t line, std::uint32_t column,
                std::string message)
      : std::runtime_error(text), file_(std::move(file)), line_(line), column_(column), message_(std::move(message)) {}

  const std::string& file() const { return file_; }
  // From 1. Tabs are counted up to their stop. Both are 0 if the fault is not in one place.
  std::uint32_t line() const { return line_; }
  std::uint32_t column() const { return column_; }
  const std::string& message() const { return message_; }  // without place and source line

 private:
  std::string file_;
  std::uint32_t line_;
  std::uint32_t column_;
  std::string message_;
};

// Lays out one record of a copybook. `fileName` is for messages only.
//
// Understood: levels 01 to 49 (siblings may differ in level), 77, 66 and 88 (parsed, no storage); PICTURE, USAGE, SIGN,
// OCCURS with DEPENDING ON, REDEFINES, VALUE, JUSTIFIED, BLANK WHEN ZERO, GLOBAL, EXTERNAL. USAGE and SIGN of a group
// hold for what lies below. SYNCHRONIZED is refused on binary numbers and floats, where it would insert bytes.
// Entries may start below level 01; they are then the record, which has no name. A level 77 entry must stand alone.
//
// Sizes: binary of 1 to 4 digits 2 bytes, 5 to 9 digits 4, 10 to 18 digits 8, above that the bytes that hold the
// digits and a sign (20 digits 9 bytes, 37 digits 16); packed digits / 2 + 1; zoned a byte a digit and one for a
// separate sign; a P in a picture scales and takes no byte.
//
// A redefinition may be longer than what it redefines: what follows starts behind the longest. Bytes are never
// inserted for alignment.
//
// Throws CopybookError for text it does not understand, for what it does not support (COPY and REPLACE, national
// text, pointers and indexes, counted arrays within REDEFINES, ...) and for layouts beyond the limits: 4 MiB of text,
// 16384 entries, kMaxRecordBytes, 255 digits in a number and 38 in a binary one.
Layout parseCopybook(std::string_view text, std::string_view fileName, const CopybookOptions& options = {});

// The same for a file; also throws CopybookError, without a place, if the file can't be read.
Layout readCopybook(const std::filesystem::path& path, const CopybookOptions& options = {});

}  // namespace oxr::rec
