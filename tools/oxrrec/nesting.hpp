#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "records/recordplan.hpp"

namespace oxr::rec {

// The names that records of the plan can have: what conditions call them, as the copybook spells it.
std::vector<std::string> namedKinds(const RecordPlan& plan);

// Puts the objects of child records into an array of their parent's: what hierarchical files mean by the order of their
// records. A child belongs to the last record of its parent's kind. A line is done when no child can come any more, so
// that a record of a kind that is no part of any hierarchy overtakes an open parent. Memory is one open record of each
// kind that has children, with them.
//
// Example, of the pairs "ORDER:CUSTOMER" and "ITEM:ORDER":
//   {"ID":1,"ORDER":[{"NO":7,"ITEM":[{"SKU":"A"},{"SKU":"B"}]}]}
class Nesting {
 public:
  // `pairs` as "CHILD:PARENT", which are held to the names that records of the plan can have. Throws ToolError, also
  // where a child has the name of a field of its parent.
  Nesting(const std::vector<std::string>& pairs, const RecordPlan& plan);

  // Child and parent, in the order of the pairs, by the names that the records have.
  std::vector<std::pair<std::string, std::string>> pairs() const;

  // All of these: a record that has several names goes by one of them.
  std::vector<std::string> names() const;

  // Where a record was put. A child without a parent stands on a line of its own.
  enum class Put : std::uint8_t { inPlace, beforeParent, withoutParent };  // withoutParent: that was left out

  // Takes the line of a record, with its newline, and appends to `lines` what is done by that.
  Put add(std::string_view kind, std::string_view line, std::string& lines);
  // The same for a record that is left out: its children must not go to an earlier one of its kind.
  void leaveOut(std::string_view kind, std::string& lines);
  // Appends what is still open.
  void finish(std::string& lines);

 private:
  struct Kind {
    std::string name;
    std::optional<std::size_t> parent{};
    std::vector<std::size_t> children{};
    bool isOpen = false;      // children may still come
    bool isLeftOut = false;   // they may, but the record is left out
    std::string object{};     // of the open record, without its last brace
    std::string collected{};  // finished objects of this kind for the open parent, with commas
  };

  std::size_t named(const std::string& name, const std::vector<std::string>& kinds);
  Kind* find(std::string_view name);
  void close(Kind& kind, std::string& lines);
  void deliver(const Kind& kind, std::string_view object, std::string& lines);

  std::vector<Kind> kinds_;
  std::vector<std::pair<std::size_t, std::size_t>> pairs_;  // child and parent
};

}  // namespace oxr::rec
