#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/recordplan.hpp"

namespace oxr::rec {

// The columns of a table with a row for each record: a tree of what a plan shows, with the kinds of record laid over
// each other. An array has columns for as many occurrences as it may have.
//
// A column is called as its field is by its path in the JSON: "HOME-ADDRESS.TOWN", "MOVEMENT(2).AMOUNT".
class CsvColumns {
 public:
  // More columns than this are no table that anybody wants: they are refused.
  static constexpr std::uint64_t kMaxColumns = 1U << 16;

  struct Node {
    const unsigned short* name = nullptr;  // as the plan has it
    unsigned short type = 0;               // an ElementType
    std::uint32_t max = 1;                 // array: the most occurrences
    std::uint32_t column = 0;              // from the first column of the node around it
    std::uint32_t width = 0;               // columns; of one occurrence if it stands in an array
    std::vector<std::uint32_t> children;   // an array has one: its element
  };

  // Keeps the plan's names. Throws PlanError if there are too many columns.
  explicit CsvColumns(const RecordPlan& plan);

  // The record as a whole is the first.
  const std::vector<Node>& nodes() const { return nodes_; }
  std::uint32_t count() const { return nodes_.front().width; }
  // The name of each column.
  std::vector<std::string> names() const;

 private:
  void addKind(const RecordPlan& plan, std::uint32_t begin, std::uint32_t end);
  std::uint32_t childOf(std::uint32_t parent, const unsigned short* name, unsigned short type, std::uint32_t max);
  std::uint64_t setWidths(std::uint32_t node);
  void addNames(std::uint32_t node, const std::string& path, std::vector<std::string>& names) const;

  std::vector<Node> nodes_;
};

}  // namespace oxr::rec
