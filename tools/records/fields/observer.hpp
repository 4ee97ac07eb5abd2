#pragma once

#include <cstdint>
#include <span>

#include "pwfdata.hpp"
#include "records/fields/faults.hpp"

namespace oxr::rec {

struct Step;

// A field that was read. What it points at goes with the call.
struct FieldSeen {
  const Step& step;
  std::uint64_t offset;                  // bytes from the start of the record
  std::span<const OpenArray> arrays;     // the open ones, outermost first
  std::span<const unsigned char> bytes;  // fewer than the field's size where the record ends in it
  const PWFData& value;                  // null for a bad field, and where the form says that its bytes mean null
  const FieldFault* fault;               // null for a good field
};

// Sees each field of a walk, counts and unnamed fields among them; not those that nobody can find, behind a bad count,
// and of those behind the end of a short record only the first.
class FieldObserver {
 public:
  virtual ~FieldObserver() = default;
  virtual void seen(const FieldSeen& field) = 0;
};

}  // namespace oxr::rec
