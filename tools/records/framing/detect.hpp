#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "records/framing/recordform.hpp"

// How the records of an input lie, judged by its first bytes. Nothing here reads a file.

namespace oxr::rec {

// So many bytes are looked at.
inline constexpr std::uint32_t kDetectBytes = std::uint32_t{64} << 10;

// What a walk finds along the counts of records that follow each other without headers.
struct CountedRecords {
  std::uint64_t records = 0;  // whole ones
  std::string fault{};        // why there is no record after them; empty if the input, or its start, ends there
};

// The start of an input, kDetectBytes at least if it has them.
struct InputStart {
  std::span<const unsigned char> bytes;
  std::optional<std::uint64_t> size;        // of all of it, where that is known
  std::optional<CountedRecords> counted{};  // of a layout of variable length, where somebody walked along its counts
};

// A form that the start of an input fits.
struct Reading {
  Framing framing = Framing::fixed;
  std::optional<bool> countsHeader;  // where it is not what the framing has by itself
  bool isVariable = false;           // fixed: records as long as their counts say
  std::uint64_t records = 0;         // that lie in the start as a whole
  bool isWhole = false;              // the start is all of the input
  // How unlikely it is that other bytes fit: the number of bits that could have been different.
  double evidence = 0;

  // "records with 4-byte headers, length least significant byte first, 412 of them fit the first 64 KiB exactly".
  std::string description() const;
  // "--records rdw-le": what has an input read in this way.
  std::string options() const;
};

// The readings that there is evidence for, the best one first, none that another one outdoes by far. `layout` has the
// layout's sizes, the characters of lines and, if the user gave it, whether lengths count their headers; its framing is
// not looked at.
std::vector<Reading> readingsOf(const InputStart& start, const RecordForm& layout);

// Whether the start is lines of text in a page of the other family: true for an EBCDIC page where the layout's is none,
// false for the opposite, nothing if it is not.
std::optional<bool> linesOfOtherPage(const InputStart& start, const RecordForm& layout);

// The only reading, or a ToolError that names all, or says that there is none.
Reading onlyReading(const InputStart& start, const RecordForm& layout);

// "; --records bdw fits: blocks of ...", if the start fits one form that is not `form`, and not `form` itself; else
// empty. Where records that follow each other without headers are said to be as long as their counts say, arrays of
// full size are looked for too.
std::string hintFor(const RecordForm& form, const InputStart& start);

}  // namespace oxr::rec
