#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/copybook/error.hpp"
#include "records/copybook/sourceformat.hpp"
#include "records/layout.hpp"

// The way into this folder: the text of a COBOL copybook becomes the layouts of its records.

namespace oxr::rec {

// The largest text of a copybook, and of each text that it copies.
inline constexpr std::size_t kMaxCopybookBytes = std::size_t{4} << 20;

// How many bytes a binary number (COMP, COMP-4, COMP-5, BINARY) of so many digits takes.
enum class BinarySizes : std::uint8_t {
  twoFourEight,     // 2-4-8: up to 4 digits 2 bytes, up to 9 digits 4, up to 18 digits 8
  oneTwoFourEight,  // 1-2-4-8: the same, but up to 2 digits 1 byte
  oneToEight,       // 1-8: the least number of bytes that holds the digits, and the sign if there is one
};

// Where compilers differ in how they lay records out.
//
// mainframe: pointers have 4 bytes. SYNCHRONIZED puts binary numbers, indexes and pointers on a boundary of 2 bytes or
//   of 4 (those of 8 bytes too), COMP-1 on one of 4 and COMP-2 on one of 8. A group's SYNCHRONIZED holds for all that
//   lies below it, and a group that starts with such an item starts on its boundary.
// gnucobol: pointers have 8 bytes. SYNCHRONIZED puts all of these on a boundary of their own size, 2, 4 or 8. On a
//   group it has no effect, and slack lies directly before the item, within its group.
enum class Dialect : std::uint8_t { mainframe, gnucobol };

struct CopybookOptions {
  SourceFormat format = SourceFormat::detect;
  // The level 01 entry that readCopybook() lays out, in any case of letters; empty for the first one.
  std::string record{};
  BinarySizes binarySizes = BinarySizes::twoFourEight;
  Dialect dialect = Dialect::mainframe;
  // Where COPY looks for the text that it names, after the folder of the file that it stands in.
  std::vector<std::filesystem::path> includeFolders{};
  // Reads a text that COPY may mean, or returns nothing if there is none of that name; files if empty.
  std::function<std::optional<std::string>(const std::filesystem::path&)> readText{};
};

// The entries of a copybook, or of the data division of a program. A record is laid out when it is asked for: one that
// nobody asks for may hold what is not understood here.
//
// COPY, with REPLACING, REPLACE and EXEC SQL INCLUDE are obeyed. Of a program all up to the data division and from the
// procedure division on is passed over, and in the data division the FD and SD entries, the report and screen sections,
// and constants (level 78).
//
// Copies share the entries, which never change: many threads may use them.
//
//   const Copybook copybook = Copybook::readFile("customers.cob");
//   const Layout layout = copybook.layout("CUSTOMER");
class Copybook {
 public:
  // `fileName` is for messages only. Both throw CopybookError for text that is not understood.
  static Copybook read(std::string_view text, std::string_view fileName, const CopybookOptions& options = {});
  // Also throws, without a place, if the file can't be read.
  static Copybook readFile(const std::filesystem::path& path, const CopybookOptions& options = {});

  // The names of the records (levels 01 and 77) in the order of the text. Entries without a level 01 over them are a
  // record whose name is empty.
  std::vector<std::string> recordNames() const;

  // Lays out the record of that name, in any case of letters, or the first one if the name is empty (a level 77 entry
  // only if there is nothing else). Throws
  // CopybookError if there is none, or if it can't be laid out.
  Layout layout(std::string_view recordName = {}) const;

 private:
  struct Content;
  explicit Copybook(std::shared_ptr<const Content> content);

  std::shared_ptr<const Content> content_;
};

// Lays out the record of a copybook that `options` names.
//
// Understood: levels 01 to 49 (siblings may differ in level), 77, 66 and 88 (read, but without storage); PICTURE,
// USAGE, SIGN, OCCURS with DEPENDING ON, REDEFINES, SYNCHRONIZED, VALUE, JUSTIFIED, BLANK WHEN ZERO, GLOBAL, EXTERNAL.
// USAGE and SIGN of a group hold for what lies below. Entries may start below level 01: they are then the record, which
// has no name.
//
// Sizes: binary numbers as BinarySizes says, above 18 digits the bytes that hold the digits and a sign (20 digits 9
// bytes, 37 digits 16); packed digits / 2 + 1, without a sign (digits + 1) / 2; external a byte a digit and one for a
// separate sign; a P in a picture scales and takes no byte; 2 bytes a character of N and G. BINARY-CHAR, SHORT, LONG
// and DOUBLE have 1, 2, 4 and 8 bytes.
//
// A redefinition may be longer than what it redefines: what follows starts after the longest. Bytes for alignment are
// inserted for SYNCHRONIZED only.
//
// Throws CopybookError for text it does not understand, for what it does not support (COMP-X, ...), and for
// layouts beyond the limits: kMaxCopybookBytes and 16 MiB of copied texts, 16384 entries, kMaxRecordBytes, 255 digits
// in a number and 38 in a binary one, and what replacing may cost (Effort).
Layout readCopybook(std::string_view text, std::string_view fileName, const CopybookOptions& options = {});

// The same for a file; also throws CopybookError, without a place, if the file can't be read.
Layout readCopybookFile(const std::filesystem::path& path, const CopybookOptions& options = {});

}  // namespace oxr::rec
