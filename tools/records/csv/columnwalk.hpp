#pragma once

#include <cstdint>
#include <vector>

#include "records/csv/columns.hpp"

namespace oxr::rec {

// Which column a value of a record goes to: follows the elements of a record through the tree of a table's columns.
class ColumnWalk {
 public:
  // The columns must outlive the object.
  explicit ColumnWalk(const CsvColumns& columns) : columns_(columns) {}

  // Begins a record.
  void begin() { open_.assign(1, {0, 0, 0}); }
  // Goes into an element, as startElement tells of it. Throws FIHandlerException for one that the table has not.
  void enter(const unsigned short* name, unsigned short type, int index);
  // Goes out of the element that was entered last. Throws FIHandlerException if all were left.
  void leave();
  bool isInElement() const { return open_.size() > 1; }
  // Not so in the element that has the bytes of a record of no kind.
  bool hasColumn() const { return open_.back().node != kNoNode; }
  // Of the element that was entered last: its node, and its first column. REQUIRES: hasColumn().
  const CsvColumns::Node& node() const { return columns_.nodes()[open_.back().node]; }
  std::uint32_t column() const { return open_.back().column; }

 private:
  struct Open {
    std::uint32_t node;
    std::uint32_t column;  // its first
    std::size_t next;      // the child that is expected: they come in their order
  };

  static constexpr std::uint32_t kNoNode = 0xFFFFFFFFU;

  std::uint32_t childOf(Open& around, const unsigned short* name, unsigned short type) const;

  const CsvColumns& columns_;
  std::vector<Open> open_;  // the record as a whole, and in it the open elements
};

}  // namespace oxr::rec
