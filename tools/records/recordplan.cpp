#include "records/recordplan.hpp"

#include <algorithm>
#include <iterator>

#include "records/copybook/copybook.hpp"
#include "records/plan/compiler.hpp"

// Conditions that name a level 01 entry choose between records, the others between items of a record that share their
// bytes. A plan has the entries that conditions name, in the order of the conditions; without any it has one.

namespace oxr::rec {

namespace {

std::vector<Condition> readConditions(const std::vector<std::string>& texts) {
  std::vector<Condition> conditions;
  conditions.reserve(texts.size());
  for (const std::string& text : texts)
    conditions.push_back(readCondition(text));
  return conditions;
}

std::string nameAmong(const std::vector<std::string>& names, const std::string& name) {
  const auto found = std::find_if(names.begin(), names.end(), [&](const auto& n) { return isSameName(n, name); });
  return found == names.end() ? std::string() : *found;
}

}  // namespace

RecordPlan::RecordPlan(const Layout& layout, const Options& options)
    : forms_{options.form}, isSilent_(options.isSilent) {
  const std::vector<Condition> conditions = readConditions(options.conditions);
  for (const Condition& condition : conditions)
    requireArea(condition, {layout});
  PlanCompiler compiler(*this, options, conditions);
  compiler.add(layout);
  compiler.requireSettingsUsed();
}

RecordPlan::RecordPlan(const Copybook& copybook, std::string_view record, const Options& options)
    : forms_{options.form}, isSilent_(options.isSilent) {
  const std::vector<std::string> names = copybook.recordNames();
  std::vector<Condition> ofRecords, ofAreas;
  std::vector<std::uint32_t> kinds;  // of each of ofRecords
  std::vector<std::string> chosen;
  for (Condition& condition : readConditions(options.conditions)) {
    const std::string name = nameAmong(names, condition.name.text());
    (name.empty() ? ofAreas : ofRecords).push_back(std::move(condition));
    if (name.empty()) continue;
    kinds.push_back(static_cast<std::uint32_t>(std::find(chosen.begin(), chosen.end(), name) - chosen.begin()));
    if (kinds.back() == chosen.size()) chosen.push_back(name);
  }
  if (chosen.empty())
    chosen.emplace_back(record);
  else if (!record.empty())
    throw PlanError("--record cannot be said where --when names records");
  for (const std::string& name : chosen)
    layouts_.push_back(copybook.layout(name));
  for (const Condition& condition : ofAreas)
    requireArea(condition, layouts_);
  PlanCompiler compiler(*this, options, ofAreas);
  for (const Layout& layout : layouts_)
    compiler.add(layout);
  compiler.requireSettingsUsed();
  if (!ofRecords.empty()) compiler.addRecordChoice(ofRecords, kinds);
  if (ofRecords.empty() && record.empty())
    std::copy_if(names.begin(), names.end(), std::back_inserter(recordsNotTaken_),
                 [&](const std::string& name) { return name != kinds_.front().name; });
}

}  // namespace oxr::rec
