#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "kelexception.hpp"
#include "records/layout.hpp"

namespace oxr::rec {

// The index of an open array's current occurrence, from 0.
struct OpenArray {
  ItemIndex item;
  std::uint32_t index;
};

// Where an item stands, as in "ORDER(3).LINE(2).AMOUNT": names from the record down, the record itself left out,
// occurrences counted from 1. Groups without a name do not show, other items without one are called FILLER.
std::string fieldPath(const Layout& layout, ItemIndex item, std::span<const OpenArray> arrays);

// "OXR5505: insert; insert": what a conversion said, on one line.
std::string faultText(const KelException& failure);

// A field that cannot be read, or a record that does not fit its layout.
struct FieldFault {
  std::uint64_t record = 0;          // from 1
  std::uint64_t offset = 0;          // in the input, from 0, of the field
  std::string path;                  // see fieldPath; empty if the record as a whole is at fault
  std::vector<unsigned char> bytes;  // of the field; empty if it has none
  int message = 0;  // number in the message catalogue, such as 5505; 0 if no conversion told of the fault
  std::string reason;

  // "record 3, byte 245, ORDER(3).AMOUNT: OXR5505: ...; bytes 00 1A": complete, on one line. Of a long field the first
  // bytes are shown.
  std::string text() const;
};

// Thrown where a fault ends the work.
class FieldError : public std::runtime_error {
 public:
  explicit FieldError(FieldFault fault) : std::runtime_error(fault.text()), fault_(std::move(fault)) {}
  const FieldFault& fault() const { return fault_; }

 private:
  FieldFault fault_;
};

// Hears of each fault of a worker.
class FaultListener {
 public:
  virtual ~FaultListener() = default;
  // True to go on, with a null in the place of the field; false to end with a FieldError.
  virtual bool goOnAfter(const FieldFault& fault) = 0;
};

}  // namespace oxr::rec
