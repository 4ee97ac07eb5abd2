#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace oxr::rec {

// A field of a record that is explained.
struct ExplainedField {
  std::string path;
  std::uint64_t offset = 0;  // in the record
  std::uint32_t size = 0;    // bytes that it takes; the record may end before
  std::string picture;       // with its usage
  bool isFiller = false;
  std::string value;  // as in the JSON; empty for a bad field
  std::string fault;  // why it cannot be read; empty for a good one
  // The byte of it at which it stops to be what its picture says, if one can be told.
  std::optional<std::uint32_t> badByte{};
  std::string advice{};   // an option that makes it readable; empty if none is known
  std::string advised{};  // the value that it then has
};

// One record, as `explain` shows it.
struct ExplainedRecord {
  std::string input;
  std::uint64_t number = 0;  // from 1
  std::uint64_t offset = 0;  // in the input, without its header
  std::string kind;          // the level 01 entry, or what a condition calls the record
  bool isUnknown = false;    // no condition tells what it is: it has no fields
  int ccsid = 0;
  std::vector<unsigned char> bytes;
  std::array<std::string, 256> characters;  // each byte as a single character, "·" if it has none to show
  std::vector<ExplainedField> fields;
  std::vector<std::string> faults;  // of the record as a whole
};

// What it is: "CUSTOMER", or "of no kind".
std::string kindText(const ExplainedRecord& record);
// A table for people, one field a line; of a record that has none its bytes, as far as they are worth a look.
std::string explainTable(const ExplainedRecord& record);
// A page for a browser that needs nothing but itself. Of a long record the first bytes are shown.
std::string explainPage(const ExplainedRecord& record);

}  // namespace oxr::rec
