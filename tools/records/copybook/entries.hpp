#pragma once

#include <optional>
#include <string>
#include <vector>

#include "records/copybook/error.hpp"
#include "records/copybook/lexer.hpp"
#include "records/copybook/picture.hpp"
#include "records/copybook/words.hpp"

namespace oxr::rec::copybook {

// What the entries of a copybook say, one by one, before anything is known of how they lie together.

struct UsageClause {
  Usage usage = Usage::display;
  bool isUnsigned = false;  // BINARY-LONG UNSIGNED and the like
  Place place;
};

struct PictureClause {
  Picture picture;
  std::string text;
  Place place;
};

struct SignClause {
  bool isLeading = false;
  bool isSeparate = false;
  Place place;
};

struct OccursClause {
  std::uint32_t min = 1;
  std::uint32_t max = 1;
  std::vector<Token> counter;  // the counter's name and the names of groups that hold it, innermost first; or empty
  Place place;
};

struct Entry {
  std::uint8_t level = 0;  // 1 to 49, or 77
  std::string name;        // empty for FILLER and none
  Place place;             // of the level number
  std::optional<Token> redefines;
  std::optional<PictureClause> picture;
  std::optional<UsageClause> usage;
  std::optional<SignClause> sign;
  std::optional<OccursClause> occurs;
  std::optional<Place> synchronized;
  bool isJustified = false;
  bool isBlankWhenZero = false;
  // What is not understood of it, or of an entry without storage after it. It is for who lays the entry out to raise:
  // a program has more entries than are wanted.
  std::optional<CopybookError> fault;
};

// Reads all entries; those of level 66 and 88, which have no storage, are checked and left out. Headers of sections and
// what describes files is passed over. Throws CopybookError.
std::vector<Entry> readEntries(const Source& source, const std::vector<Token>& tokens);

}  // namespace oxr::rec::copybook
