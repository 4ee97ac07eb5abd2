#pragma once

#include <cstdint>

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

}  // namespace oxr::rec
