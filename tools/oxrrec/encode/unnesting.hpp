#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "records/json/tree.hpp"
#include "records/recordplan.hpp"

namespace oxr::rec {

// Takes the records of a line apart that stand in each other: the way back of Nesting. Children come after their
// parent, those of one kind in their order; what lay between children of different kinds is not known any more.
class Unnesting {
 public:
  // An unknown record is left out without a word.
  enum class Written : std::uint8_t { isGood, isBad, isUnknown };
  // How many children were left out with their parents.
  struct Left {
    std::uint64_t withBad = 0;
    std::uint64_t withUnknown = 0;
  };
  // Writes the record that the tree's root is, and tells how that went. `path` tells which one of the line it
  // is: "ORDER(1).ITEM(3)"; it is empty for the line's own object.
  using Write = std::function<Written(const JsonTree& tree, const std::string& path)>;

  // As Nesting has them. Throws ToolError.
  Unnesting(const std::vector<std::string>& pairs, const RecordPlan& plan);

  // Writes the records of a line. A record that is not written takes its children along, since they would go to another
  // one; unless `goesOn` a bad one is the last.
  Left writeAll(JsonTree& tree, bool goesOn, const Write& write) const;

 private:
  struct Line {
    JsonTree& tree;
    const bool goesOn;
    const Write& write;
    Left left;
  };
  bool writeRecord(Line& line, std::uint32_t node, const std::string& path) const;
  std::vector<std::uint32_t> takeChildren(JsonTree& tree, std::uint32_t node) const;
  std::uint64_t childrenBelow(const JsonTree& tree, std::uint32_t array) const;
  bool isChildren(const JsonTree& tree, std::uint32_t node) const;

  std::vector<std::string> children_;  // names of kinds, in capitals
};

}  // namespace oxr::rec
