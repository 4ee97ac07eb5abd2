#pragma once

#include <cstdint>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

#include "reading.hpp"
#include "recordtype.hpp"
#include "tapehandler.hpp"

namespace oxr::python {

// Some records of an input on a tape, with what is told of them, ready to be made into dicts. Filled without the
// interpreter.
class Batch {
 public:
  struct Entry {
    std::size_t at;  // on the tape
    RecordPlace place;
    std::string_view kind;
    std::size_t firstBadField;
    std::size_t endBadField;
  };

  // `leavesBadOut`: records with a bad field do not come.
  Batch(Reading& reading, bool leavesBadOut)
      : reading_(reading), handler_(reading.plan(), reading.worker()), leavesBadOut_(leavesBadOut) {
    reading.setHandler(handler_, handler_.isObserver() ? &handler_ : nullptr);
  }

  // Takes the next records in the place of those that were there; maybe none, and none at the input's end. What ends
  // the work is kept behind the records before it.
  void fill();

  const std::vector<Entry>& entries() const { return entries_; }
  const std::vector<BadField>& badFields() const { return badFields_; }
  const char* tapeAt(const Entry& entry) { return handler_.tape().data() + entry.at; }
  // What comes after the last record: null if others may.
  std::exception_ptr takeEnding() { return std::exchange(ending_, nullptr); }
  bool isAtEnd() const { return isAtEnd_; }

 private:
  bool add();

  Reading& reading_;
  TapeHandler handler_;
  const bool leavesBadOut_;
  std::vector<Entry> entries_;
  std::vector<BadField> badFields_;  // of all entries
  std::exception_ptr ending_;
  bool isAtEnd_ = false;
};

}  // namespace oxr::python
