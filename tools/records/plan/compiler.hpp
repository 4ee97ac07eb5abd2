#pragma once

#include <map>
#include <string>
#include <vector>

#include "records/fields/settings.hpp"
#include "records/plan/conditions.hpp"
#include "records/recordplan.hpp"

namespace oxr::rec {

// Emits the steps of one layout after another into a plan.
class PlanCompiler final : private QuestionMaker {
 public:
  // The conditions are those of areas. Nothing of the arguments but the plan is used after the last call.
  PlanCompiler(RecordPlan& plan, const RecordPlan::Options& options, std::span<const Condition> conditions);

  // Throws PlanError.
  void add(const Layout& layout);
  // Adds the choice between the kinds. `kinds[i]` is the index of the one that conditions[i] names.
  void addRecordChoice(std::span<const Condition> conditions, std::span<const std::uint32_t> kinds);

  // Throws PlanError for a setting of a field that no layout has, or that changes nothing there.
  void requireSettingsUsed() const;

 private:
  // The names of one object and how often each was taken. A null scope is that of what is walked in silence.
  using Scope = std::map<std::string, unsigned>;

  void children(ItemIndex group, std::uint32_t base, Scope* scope);
  void item(ItemIndex index, std::uint32_t offset, Scope* scope);
  void array(ItemIndex index, std::uint32_t offset, Scope* scope);
  void single(ItemIndex index, std::uint32_t offset, Scope* scope, std::uint32_t name, bool isOccurrence);
  void area(ItemIndex index, std::uint32_t offset, Scope* scope);
  Choice choiceFor(ItemIndex index, std::uint32_t offset);
  Step stepFor(Op op, ItemIndex index, std::uint32_t offset);
  void edit(Step& step, const Item& entry);
  Step fieldStep(const Layout& layout, ItemIndex field, std::uint32_t offset) override;
  bool givesNumber(const Step& field) const override;
  std::uint32_t addStep(const Step& step);
  void refuse(ItemIndex index);
  void findForms();
  bool hasNames(ItemIndex group) const;
  std::uint32_t nameIn(Scope* scope, const Item& entry);
  std::uint32_t newName(Scope& scope, const std::string& name);

  RecordPlan& plan_;
  const RecordPlan::Options& options_;
  const std::span<const Condition> conditions_;
  std::map<std::string, std::uint32_t> nameAt_;  // where each name stands in the plan's row of names
  std::vector<FieldSetting> settings_;
  enum class Use : std::uint8_t { none, found, effective };
  std::vector<Use> uses_;                                       // of each setting
  std::map<const Layout*, std::vector<std::uint16_t>> formOf_;  // of each item, in plan_.forms_
  // Of the layout in hand:
  const Layout* layout_ = nullptr;
  const std::vector<Item>* items_ = nullptr;
  AreaConditions areas_;
  std::string refusals_;      // of all fields that cannot be read, a line each
  unsigned areasAround_ = 0;  // alternatives that are being emitted, one in another
};

}  // namespace oxr::rec
