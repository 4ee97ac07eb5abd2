#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "records/copybook/error.hpp"
#include "records/copybook/sourceformat.hpp"
#include "records/layout.hpp"

// The way into this folder: the text of a COBOL copybook becomes the layout of one of its records.

namespace oxr::rec {

struct CopybookOptions {
  SourceFormat format = SourceFormat::detect;
  // The level 01 entry to lay out, in any case of letters; empty for the first one.
  std::string record;
};

// Lays out one record of a copybook. `fileName` is for messages only.
//
// Understood: levels 01 to 49 (siblings may differ in level), 77, 66 and 88 (read, but without storage); PICTURE,
// USAGE, SIGN, OCCURS with DEPENDING ON, REDEFINES, VALUE, JUSTIFIED, BLANK WHEN ZERO, GLOBAL, EXTERNAL. USAGE and SIGN
// of a group hold for what lies below. SYNCHRONIZED is refused on binary numbers and floats, where it would insert
// bytes. Entries may start below level 01: they are then the record, which has no name. A level 77 entry must stand
// alone.
//
// Sizes: binary of 1 to 4 digits 2 bytes, 5 to 9 digits 4, 10 to 18 digits 8, above that the bytes that hold the
// digits and a sign (20 digits 9 bytes, 37 digits 16); packed digits / 2 + 1; external a byte a digit and one for a
// separate sign; a P in a picture scales and takes no byte.
//
// A redefinition may be longer than what it redefines: what follows starts after the longest. Bytes are never
// inserted for alignment.
//
// Throws CopybookError for text it does not understand, for what it does not support (COPY and REPLACE, national
// text, pointers and indexes, counted arrays within REDEFINES, ...) and for layouts beyond the limits: 4 MiB of text,
// 16384 entries, kMaxRecordBytes, 255 digits in a number and 38 in a binary one.
Layout readCopybook(std::string_view text, std::string_view fileName, const CopybookOptions& options = {});

// The same for a file; also throws CopybookError, without a place, if the file can't be read.
Layout readCopybookFile(const std::filesystem::path& path, const CopybookOptions& options = {});

}  // namespace oxr::rec
