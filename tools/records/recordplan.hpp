#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "records/layout.hpp"

namespace oxr::rec {

// What a walk through a record does next.
enum class Op : std::uint8_t {
  field,       // read a field
  beginGroup,  // open a nested object
  endGroup,
  beginArray,  // open an array and enter its first occurrence, or pass over all of it
  endArray,    // go back for the next occurrence, or close the array
};

// One step of a plan. A step without a name is done in silence: it only finds counts and moves what follows.
struct Step {
  static constexpr std::uint32_t kNoName = 0xFFFFFFFFU;

  Op op = Op::field;
  Kind kind = Kind::group;
  ESign sign = eSignNone;     // external, packed: where it is; binary: eSignLeadingIncluded if signed
  bool isOccurrence = false;  // field, beginGroup: one of the innermost open array
  bool isBlankWhenZero = false;
  bool moves = false;      // endArray: what follows stands after the last occurrence that there is
  std::int16_t scale = 0;  // decimal places, as in Item
  std::uint32_t name = kNoName;
  // Bytes from the start of the record to the first occurrence in every array around the step, with all earlier arrays
  // at their largest. A walk adds its shift to get the true place.
  std::uint32_t offset = 0;
  std::uint32_t size = 0;      // bytes of one occurrence
  std::uint32_t min = 1;       // beginArray: bounds of the count
  std::uint32_t max = 1;       // beginArray, endArray
  CounterSlot slot = kNoSlot;  // field: where its value is kept; beginArray: where the count is
  std::uint32_t target = 0;    // beginArray: the step after its endArray; endArray: the first step of the body
  ItemIndex item = 0;          // for messages
};

// Something in the layout that cannot be decoded. what() names file and line and is complete for people.
class PlanError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A layout compiled into a flat list of steps, so that reading a record is one loop over an array.
//
// Names are what the JSON shows: FILLER items and FILLER redefinitions have no step, unless a count lies below; a
// FILLER group that repeats is called FILLER. Two names that would meet in one object are told apart: "TOTAL",
// "TOTAL(2)". Not changed once built. Keeps a pointer to the layout, which must outlive it.
class RecordPlan {
 public:
  struct Options {
    // A group that does not repeat gives its fields to the object around it.
    bool flat = false;
    // Arrays are stored at full size whatever the count says.
    bool arraysAtFullSize = false;
  };

  // Throws PlanError for a float or a binary number wider than 8 bytes that would have to be read.
  RecordPlan(const Layout& layout, const Options& options);
  RecordPlan(const RecordPlan&) = delete;
  RecordPlan& operator=(const RecordPlan&) = delete;

  const Layout& layout() const { return *layout_; }
  const std::vector<Step>& steps() const { return steps_; }
  std::size_t counters() const { return layout_->counters.size(); }
  // Whether records differ in length.
  bool isVariable() const { return isVariable_; }
  std::uint32_t maxSize() const { return layout_->maxSize(); }

  // Null for a step without a name, else its name in UTF-16, zero-terminated. The pointer is the same in each record.
  const unsigned short* name(const Step& step) const {
    return step.name == Step::kNoName ? nullptr : names_.data() + step.name;
  }
  // All names in a row, each with its terminator.
  const std::vector<unsigned short>& names() const { return names_; }

 private:
  friend class PlanCompiler;

  const Layout* layout_;
  bool isVariable_;
  std::vector<Step> steps_;
  std::vector<unsigned short> names_;
};

}  // namespace oxr::rec
