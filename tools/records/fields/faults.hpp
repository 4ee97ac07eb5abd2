#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

#include "kelexception.hpp"
#include "records/fields/reasons.hpp"
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

// What a conversion said, on one line: its inserts, and its number behind in brackets.
std::string faultText(const KelException& failure);

// A field that cannot be read, or a record that does not fit its layout. Made for the time of a call only: what it
// points at goes with the record. Text is made when it is asked for.
struct FieldFault {
  const Layout* layout = nullptr;
  std::uint64_t record = 0;              // from 1
  std::uint64_t offset = 0;              // in the input, from 0, of the field
  ItemIndex item = kNoItem;              // kNoItem if the record as a whole is at fault
  std::span<const OpenArray> arrays;     // the open ones, outermost first
  std::span<const unsigned char> bytes;  // of the field; empty if it has none
  FaultReason reason;

  std::string path() const;  // see fieldPath; empty for a record as a whole
  // "not a packed decimal: half byte A in byte 2 of 4 (OXR5505)"
  std::string reasonText() const;
  // "record 3, byte 245, ORDER(3).AMOUNT: not a packed decimal: ... (OXR5505); bytes 00 1A": complete, on one line. Of
  // a long field the first bytes are shown.
  std::string text() const;
};

// Thrown where a fault ends the work. what() is the fault's text().
class FieldError : public std::runtime_error {
 public:
  explicit FieldError(const FieldFault& fault) : std::runtime_error(fault.text()) {}
};

// Hears of each fault of a worker.
class FaultListener {
 public:
  virtual ~FaultListener() = default;
  // True to go on, with a null in the place of the field; false to end with a FieldError.
  virtual bool goOnAfter(const FieldFault& fault) = 0;
};

}  // namespace oxr::rec
