#include "records/plan/conditions.hpp"

#include <algorithm>
#include <tuple>

#include "records/plan/error.hpp"
#include "records/plan/place.hpp"

namespace oxr::rec {

namespace {

[[noreturn]] void refuse(const Condition& condition, const std::string& what) {
  throw PlanError("--when " + condition.text + ": " + what);
}

struct Found {
  ItemIndex item;
  Place place;
};

bool canBeCompared(const Item& item) {
  constexpr Kind kOthers[] = {Kind::group, Kind::shortFloat, Kind::longFloat, Kind::opaque};
  return std::find(std::begin(kOthers), std::end(kOthers), item.kind) == std::end(kOthers);
}

// Kinds of record have the same field in layouts of their own.
bool asksTheSame(const Question& a, const Question& b) {
  const auto what = [](const Question& q) {
    return std::tie(q.from, q.field.offset, q.field.size, q.field.kind, q.field.sign, q.field.scale, q.field.form);
  };
  return what(a) == what(b);
}

// Of several fields of that name the one is meant that can be looked at.
Found find(const Condition& condition, const Layout& layout, ItemIndex area, bool arraysAtFullSize) {
  const std::string& name = condition.field.text();
  std::vector<ItemIndex> named = condition.field.in(layout);
  if (named.empty()) refuse(condition, "there is no item " + name + condition.field.hint(layout));
  std::erase_if(named, [&](ItemIndex i) { return !canBeCompared(layout.items[i]); });
  if (named.empty()) refuse(condition, name + " is no text and no integer or decimal number");
  std::vector<ItemIndex> found;
  std::optional<Place> there;
  for (const ItemIndex item : named) {
    const auto place =
        area == kNoItem ? placeInRecord(layout, item, arraysAtFullSize) : placeOf(layout, item, area, arraysAtFullSize);
    if (!place) continue;
    found.push_back(item);
    there = place;
  }
  if (found.empty()) refuse(condition, name + " has no fixed place to look at");
  if (found.size() > 1) refuse(condition, name + ": " + severalItems(layout, found));
  return {found.front(), *there};
}

bool sharesBytes(const Item& item) {
  return item.isRedefined || item.redefines != kNoItem;
}

}  // namespace

AreaConditions areaConditionsOf(const Layout& layout, std::span<const Condition> conditions) {
  AreaConditions areas;
  for (const Condition& condition : conditions) {
    std::vector<ItemIndex> named = condition.name.in(layout);
    std::erase_if(named, [&](ItemIndex i) { return !sharesBytes(layout.items[i]); });
    if (named.size() > 1) refuse(condition, condition.name.text() + ": " + severalItems(layout, named));
    if (named.empty()) continue;
    const Item& item = layout.items[named.front()];
    areas[item.redefines == kNoItem ? named.front() : item.redefines].push_back({&condition, named.front()});
  }
  return areas;
}

void requireArea(const Condition& condition, const std::deque<Layout>& layouts) {
  bool isThere = false;
  for (const Layout& layout : layouts)
    for (const ItemIndex item : condition.name.in(layout)) {
      if (sharesBytes(layout.items[item])) return;
      isThere = true;
    }
  const std::string& name = condition.name.text();
  if (isThere) refuse(condition, name + " is no record, and neither redefines an item nor is redefined");
  std::string records;
  for (const Layout& layout : layouts)
    records += (records.empty() ? "" : " and ") + layout.recordName;
  refuse(condition,
         "there is no record " + name + ", and no such item in " + records + condition.name.hint(layouts.front()));
}

void addCondition(Choice& choice, const Condition& condition, std::uint32_t alternative, const Layout& layout,
                  ItemIndex area, bool arraysAtFullSize, QuestionMaker& maker) {
  if (!condition.values) {
    choice.otherwise = choice.otherwise.value_or(alternative);
    return;
  }
  const Found found = find(condition, layout, area, arraysAtFullSize);
  Question question{&layout, maker.fieldStep(layout, found.item, found.place.offset), found.place.from, {}};
  if (const std::string fault = condition.values->fault(maker.givesNumber(question.field)); !fault.empty())
    refuse(condition, fault);
  if (choice.questions.empty() || !asksTheSame(choice.questions.back(), question))
    choice.questions.push_back(std::move(question));
  choice.questions.back().answers.push_back({*condition.values, alternative});
}

}  // namespace oxr::rec
