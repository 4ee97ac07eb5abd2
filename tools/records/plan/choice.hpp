#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "records/plan/step.hpp"
#include "records/plan/valueset.hpp"

namespace oxr::rec {

// Where the field of a question lies.
enum class PlaceFrom : std::uint8_t {
  record,      // always so many bytes from the start of the record
  occurrence,  // from the start of the occurrence of the innermost open array
  here,        // as far from the area as in the layout: nothing between them moves
};

// A field whose value tells which alternative a record, or an area of it, holds.
struct Question {
  struct Answer {
    ValueSet values;
    std::uint32_t alternative;
  };
  const Layout* layout;  // that the field is of
  Step field;
  PlaceFrom from = PlaceFrom::record;
  std::vector<Answer> answers;  // the first that holds the value decides
};

// Which of several things some bytes are: which level 01 entry a record, or which of the items that redefine each other
// an area. Questions are asked in their order until one has an answer.
struct Choice {
  struct Alternative {
    std::string name;      // as the condition gave it
    ItemIndex item;        // of an area: the item that is walked
    std::uint32_t target;  // of an area: its first step; of a record: the index of its kind
  };
  std::vector<Question> questions;
  std::vector<Alternative> alternatives;
  std::optional<std::uint32_t> otherwise;  // the alternative for "*"

  // Of an area:
  ItemIndex item = kNoItem;  // the item that the others redefine
  std::uint32_t offset = 0;  // as in Step
  std::uint32_t size = 0;    // bytes
  bool isOfRecord = false;   // it has a single, fixed place, and so have its fields: it is a kind of record
};

}  // namespace oxr::rec
