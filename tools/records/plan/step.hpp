#pragma once

#include <cstdint>

#include "dataconv.hpp"
#include "records/layout.hpp"

namespace oxr::rec {

class EditedPicture;

// What a walk through a record does next.
enum class Op : std::uint8_t {
  field,       // read a field
  beginGroup,  // open a nested object
  endGroup,
  beginArray,    // open an array and enter its first occurrence, or pass over all of it
  endArray,      // go back for the next occurrence, or close the array
  choose,        // go to the alternative that this area holds, or behind the area
  jump,          // an alternative ends: go behind the area
  keepPlace,     // an item begins that may be shorter than the bytes it shares with others
  restorePlace,  // it ends: go on as if it had all of its bytes
};

// One step of a plan. A step without a name is done in silence: it only finds counts and moves what follows.
struct Step {
  static constexpr std::uint32_t kNoName = 0xFFFFFFFFU;

  Op op = Op::field;
  Kind kind = Kind::group;
  ESign sign = eSignNone;     // external, packed: where it is; binary: eSignLeadingIncluded if signed
  bool isOccurrence = false;  // field, beginGroup: one of the innermost open array
  bool isBlankWhenZero = false;
  bool isJustifiedRight = false;  // text: padded with leading blanks where it is written
  bool moves = false;             // endArray: what follows stands after the last occurrence that there is
  std::int16_t scale = 0;         // decimal places, as in Item
  std::uint16_t form = 0;         // field: how it is stored, in RecordPlan::forms()
  std::uint32_t name = kNoName;
  // Bytes from the start of the record to the first occurrence in every array around the step, with all earlier arrays
  // at their largest. A walk adds its shift to get the true place.
  std::uint32_t offset = 0;
  std::uint32_t size = 0;      // bytes of one occurrence
  std::uint32_t min = 1;       // beginArray: bounds of the count
  std::uint32_t max = 1;       // beginArray, endArray
  CounterSlot slot = kNoSlot;  // field: where its value is kept; beginArray: where the count is
  // beginArray: the step after its endArray; endArray: the first step of the body; choose, jump: the step behind the
  // area.
  std::uint32_t target = 0;
  std::uint32_t choice = 0;  // choose: which of RecordPlan::choices()
  ItemIndex item = 0;        // for messages
  // field: the picture of an edited number, which the plan keeps; null for all others, and for what is shown as text.
  const EditedPicture* edited = nullptr;
};

}  // namespace oxr::rec
