#pragma once

#include <deque>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "records/plan/choice.hpp"
#include "records/plan/condition.hpp"

namespace oxr::rec {

// A condition that applies in a layout: the item that it names there.
struct AreaCondition {
  const Condition* condition;
  ItemIndex item;
};

// The conditions on the areas of a layout, in their order, by the item that all others of the area redefine.
using AreaConditions = std::map<ItemIndex, std::vector<AreaCondition>>;

// Leaves out the conditions that name no such item of this layout. Throws PlanError for one that names several.
AreaConditions areaConditionsOf(const Layout& layout, std::span<const Condition> conditions);
// Throws PlanError if the condition names no such item of any layout.
void requireArea(const Condition& condition, const std::deque<Layout>& layouts);

// What turns a field into a step that reads it in silence, and knows what kind of value that gives.
class QuestionMaker {
 public:
  virtual ~QuestionMaker() = default;
  virtual Step fieldStep(const Layout& layout, ItemIndex field, std::uint32_t offset) = 0;
  virtual bool givesNumber(const Step& field) const = 0;
};

// Adds the condition to the choice: to a question that there is, or a new one. `area` is the item before which the walk
// asks, or kNoItem before the record. Throws PlanError for a field that is not there, or has no place to look at, and
// for values that it never has.
void addCondition(Choice& choice, const Condition& condition, std::uint32_t alternative, const Layout& layout,
                  ItemIndex area, bool arraysAtFullSize, QuestionMaker& maker);

}  // namespace oxr::rec
