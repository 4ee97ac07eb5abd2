#pragma once

#include <string_view>

#include "records/recordhandler.hpp"

namespace oxr::rec {

// A handler that turns each record into a line of text. Lines gather in memory: a record is there whole or not at all,
// since its user takes the lines between two records and discards one that a fault ended.
class LineHandler : public RecordHandler {
 public:
  // Forgets the last record, finished or not.
  virtual void discard() = 0;
  // Forgets a record that was begun and not finished.
  virtual void discardUnfinished() = 0;
  // The lines so far, to be taken between two records; clear() drops them.
  virtual std::string_view lines() const = 0;
  virtual void clear() = 0;
};

}  // namespace oxr::rec
