#include "records/plan/compiler.hpp"

#include <algorithm>
#include <array>

#include "kelwstringconvertor.hpp"
#include "records/plan/error.hpp"

// One walk over the tree of items emits the steps. It keeps the offset so far and the scope of names: the object that
// the fields of a group go to, which is the enclosing one's for a group without a name. Where the scope is null nothing
// is shown, and only what other steps need is emitted: counts, and arrays that move what follows.
//
// Items that share their bytes are walked one after the other, each from the same offset: short arrays in one of them
// move nothing behind it. If a condition speaks of one
// of them, the walk goes through a single one: the steps are a choice, then each alternative with a jump behind the
// last one. Alternatives never meet in a message, so that each takes its names as if it were alone.

namespace oxr::rec {

namespace {

constexpr std::array<ESign, 5> kSigns = {eSignNone, eSignLeadingIncluded, eSignTrailingIncluded, eSignLeadingSeparate,
                                         eSignTrailingSeparate};
static_assert(kSigns[static_cast<std::size_t>(SignPlace::trailingSeparate)] == eSignTrailingSeparate);

ESign signOf(const Item& item) {
  if (item.kind == Kind::external) return kSigns[static_cast<std::size_t>(item.sign)];
  return item.isSigned ? eSignLeadingIncluded : eSignNone;
}

// Tells why a field cannot be read; the text is empty if it can.
std::string refusal(const Item& item, const PhysicalForm& form) {
  if (item.kind == Kind::edited && item.isSigned && !form.editedAsNumber)
    return "the picture " + item.picture +
           " has an S among editing symbols, where no character shows the sign; --edited number reads it";
  if (item.kind == Kind::edited && item.isSigned && item.hasDecimalComma)
    return "the picture " + item.picture + " has an S among editing symbols, and DECIMAL-POINT IS COMMA";
  if (item.kind == Kind::edited && form.editedAsNumber && item.size > EditedPicture::kMostCharacters &&
      EditedPicture::isNumber(item.picture))
    return "the picture " + item.picture + " has too many characters for a number; --edited text reads it";
  return {};
}

// As the picture has it, or as the form puts it.
ESign signIn(const Item& item, const PhysicalForm& form) {
  if (item.kind == Kind::edited) return item.isSigned ? eSignTrailingIncluded : eSignNone;
  const ESign sign = signOf(item);
  if (item.kind != Kind::external || form.sign == SignEnd::asDeclared || sign == eSignNone) return sign;
  const bool isSeparate = sign == eSignLeadingSeparate || sign == eSignTrailingSeparate;
  if (form.sign == SignEnd::leading) return isSeparate ? eSignLeadingSeparate : eSignLeadingIncluded;
  return isSeparate ? eSignTrailingSeparate : eSignTrailingIncluded;
}

bool mustBeWalked(const Item& entry) {
  return entry.movesWhatFollows() || entry.holdsCounter || entry.counterSlot != kNoSlot;
}

std::string shownName(const Item& entry) {
  return entry.isFiller() ? "FILLER" : entry.name;
}

}  // namespace

PlanCompiler::PlanCompiler(RecordPlan& plan, const RecordPlan::Options& options, std::span<const Condition> conditions)
    : plan_(plan), options_(options), conditions_(conditions), uses_(options.fieldSettings.size()) {
  for (const FieldSettingText& text : options.fieldSettings)
    settings_.push_back(readFieldSetting(text));
}

void PlanCompiler::add(const Layout& layout) {
  layout_ = &layout;
  items_ = &layout.items;
  areas_ = areaConditionsOf(layout, conditions_);
  findForms();
  RecordKind kind;
  kind.name = layout.recordName;
  kind.layout = &layout;
  kind.begin = static_cast<std::uint32_t>(plan_.steps_.size());
  kind.firstChoice = static_cast<std::uint32_t>(plan_.choices_.size());
  kind.maxSize = layout.maxSize();
  kind.isVariable = layout.record().hasVariableSize && !options_.arraysAtFullSize;
  Scope record;
  children(0, 0, options_.isSilent ? nullptr : &record);
  if (!refusals_.empty()) throw PlanError(refusals_);
  kind.end = static_cast<std::uint32_t>(plan_.steps_.size());
  kind.endChoice = static_cast<std::uint32_t>(plan_.choices_.size());
  plan_.kinds_.push_back(std::move(kind));
  plan_.counters_ = std::max(plan_.counters_, layout.counters.size());
  plan_.maxSize_ = std::max(plan_.maxSize_, layout.maxSize());
  plan_.isVariable_ = plan_.isVariable_ || plan_.kinds_.back().isVariable;
}

// Gives each item the form that the settings make of the one for all. A setting of a group is one of all that lies in
// it.
void PlanCompiler::findForms() {
  std::vector<std::uint16_t>& forms = formOf_[layout_];
  forms.assign(items_->size(), 0);
  std::vector<ItemIndex> found(settings_.size(), kNoItem);
  for (std::size_t i = 0; i < settings_.size(); ++i) {
    const std::vector<ItemIndex> named = ItemPath(settings_[i].path).in(*layout_);
    if (named.size() > 1) refuseSetting(settings_[i], settings_[i].path + ": " + severalItems(*layout_, named));
    if (named.empty()) continue;
    found[i] = named.front();
    for (ItemIndex item = named.front(); item < (*items_)[named.front()].next; ++item) {
      PhysicalForm form = plan_.forms_[forms[item]];
      applySetting(settings_[i], form);
      const auto known = std::find(plan_.forms_.begin(), plan_.forms_.end(), form);
      forms[item] = static_cast<std::uint16_t>(known - plan_.forms_.begin());
      if (known == plan_.forms_.end()) plan_.forms_.push_back(std::move(form));
    }
  }
  // What a setting changes may hang on others.
  for (std::size_t i = 0; i < settings_.size(); ++i) {
    if (found[i] == kNoItem) continue;
    uses_[i] = std::max(uses_[i], Use::found);
    for (ItemIndex item = found[i]; item < (*items_)[found[i]].next; ++item)
      if (hasEffect(settings_[i], (*items_)[item], plan_.forms_[forms[item]])) uses_[i] = Use::effective;
  }
}

void PlanCompiler::requireSettingsUsed() const {
  const Layout& layout = *plan_.kinds_.front().layout;
  for (std::size_t i = 0; i < settings_.size(); ++i) {
    const FieldSetting& setting = settings_[i];
    if (uses_[i] == Use::none)
      refuseSetting(setting, "there is no item " + setting.path + ItemPath(setting.path).hint(layout));
    if (uses_[i] == Use::found) refuseSetting(setting, "this is only for " + whatFor(setting));
  }
}

void PlanCompiler::addRecordChoice(std::span<const Condition> conditions, std::span<const std::uint32_t> kinds) {
  auto choice = std::make_unique<Choice>();
  for (std::uint32_t i = 0; i < conditions.size(); ++i) {
    choice->alternatives.push_back({plan_.kinds_[kinds[i]].name, 0, kinds[i]});
    addCondition(*choice, conditions[i], i, *plan_.kinds_[kinds[i]].layout, kNoItem, options_.arraysAtFullSize, *this);
  }
  choice->isOfRecord = true;
  plan_.recordChoice_ = std::move(choice);
}

void PlanCompiler::children(ItemIndex group, std::uint32_t base, Scope* scope) {
  for (ItemIndex child = group + 1; child < (*items_)[group].next; child = (*items_)[child].next) {
    const Item& entry = (*items_)[child];
    const std::uint32_t offset = base + entry.offset;
    if (areas_.contains(child))
      area(child, offset, scope);
    else if (!areas_.contains(entry.redefines))
      item(child, offset, scope);
  }
}

void PlanCompiler::item(ItemIndex index, std::uint32_t offset, Scope* scope) {
  const Item& entry = (*items_)[index];
  if (entry.kind == Kind::opaque) return;
  if (entry.isFiller() && !(entry.isGroup() ? hasNames(index) : options_.showsFillers)) scope = nullptr;
  if (scope == nullptr && !mustBeWalked(entry)) return;
  if (entry.occurs.isArray) return array(index, offset, scope);
  const bool movesWithin = entry.isAlternative() && entry.hasVariableSize && !options_.arraysAtFullSize;
  if (movesWithin) addStep(stepFor(Op::keepPlace, index, offset));
  single(index, offset, scope, scope == nullptr ? Step::kNoName : nameIn(scope, entry), false);
  if (movesWithin) addStep(stepFor(Op::restorePlace, index, offset));
}

void PlanCompiler::array(ItemIndex index, std::uint32_t offset, Scope* scope) {
  const Item& entry = (*items_)[index];
  Step begin = stepFor(Op::beginArray, index, offset);
  begin.name = scope == nullptr ? Step::kNoName : newName(*scope, shownName(entry));
  begin.min = entry.occurs.min;
  begin.max = entry.occurs.max;
  begin.slot = entry.occurs.counter;
  const std::uint32_t opened = addStep(begin);
  // In silence the occurrences matter only for what lies in them.
  if (scope != nullptr || entry.hasVariableSize || entry.holdsCounter) single(index, offset, scope, begin.name, true);
  Step end = begin;
  end.op = Op::endArray;
  end.moves = entry.movesWhatFollows() && !options_.arraysAtFullSize;
  end.target = opened + 1;
  plan_.steps_[opened].target = addStep(end) + 1;
}

// Emits one occurrence. A group without a name of its own gives its children to the object around it.
void PlanCompiler::single(ItemIndex index, std::uint32_t offset, Scope* scope, std::uint32_t name, bool isOccurrence) {
  const Item& entry = (*items_)[index];
  Step step = stepFor(entry.isGroup() ? Op::beginGroup : Op::field, index, offset);
  step.name = name;
  step.isOccurrence = isOccurrence;
  if (!entry.isGroup()) {
    refuse(index);
    step.slot = entry.counterSlot;
    addStep(step);
  } else if (name == Step::kNoName) {
    children(index, offset, scope);
  } else {
    Scope inner;
    addStep(step);
    children(index, offset, &inner);
    step.op = Op::endGroup;
    addStep(step);
  }
}

// Emits the alternatives that the conditions name. The names of each are free for the others; all are taken for what
// follows.
void PlanCompiler::area(ItemIndex index, std::uint32_t offset, Scope* scope) {
  Choice choice = choiceFor(index, offset);
  Step step = stepFor(Op::choose, index, offset);
  step.choice = static_cast<std::uint32_t>(plan_.choices_.size());
  plan_.choices_.emplace_back();
  std::vector<std::uint32_t> jumps = {addStep(step)};
  const Scope before = scope == nullptr ? Scope() : *scope;
  Scope after = before;
  std::map<ItemIndex, std::uint32_t> emitted;  // the first step of each alternative
  ++areasAround_;
  for (Choice::Alternative& alternative : choice.alternatives) {
    const auto [known, isNew] = emitted.emplace(alternative.item, static_cast<std::uint32_t>(plan_.steps_.size()));
    alternative.target = known->second;
    if (!isNew) continue;
    Scope own = before;
    item(alternative.item, offset, scope == nullptr ? nullptr : &own);
    for (const auto& [name, taken] : own)
      after[name] = std::max(after[name], taken);
    step.op = Op::jump;
    jumps.push_back(addStep(step));
  }
  --areasAround_;
  if (scope != nullptr) *scope = std::move(after);
  for (const std::uint32_t jump : jumps)
    plan_.steps_[jump].target = static_cast<std::uint32_t>(plan_.steps_.size());
  plan_.choices_[step.choice] = std::move(choice);
}

Choice PlanCompiler::choiceFor(ItemIndex index, std::uint32_t offset) {
  Choice choice;
  choice.item = index;
  choice.offset = offset;
  choice.size = (*items_)[index].areaSize;
  for (const AreaCondition& condition : areas_.at(index)) {
    const auto alternative = static_cast<std::uint32_t>(choice.alternatives.size());
    choice.alternatives.push_back({condition.condition->name.spelledAs(*layout_, condition.item), condition.item, 0});
    addCondition(choice, *condition.condition, alternative, *layout_, index, options_.arraysAtFullSize, *this);
  }
  bool isInArray = false;
  for (ItemIndex i = (*items_)[index].parent; i != kNoItem; i = (*items_)[i].parent)
    isInArray = isInArray || (*items_)[i].occurs.isArray;
  choice.isOfRecord = areasAround_ == 0 && !isInArray &&
                      std::all_of(choice.questions.begin(), choice.questions.end(),
                                  [](const Question& question) { return question.from == PlaceFrom::record; });
  return choice;
}

Step PlanCompiler::stepFor(Op op, ItemIndex index, std::uint32_t offset) {
  const Item& entry = (*items_)[index];
  Step step;
  step.op = op;
  step.kind = entry.kind;
  step.isJustifiedRight = entry.isJustifiedRight;
  step.form = formOf_.at(layout_)[index];
  step.sign = signIn(entry, plan_.forms_[step.form]);
  step.isBlankWhenZero = entry.isBlankWhenZero && entry.kind == Kind::external;
  step.scale = entry.scale;
  step.offset = offset;
  step.size = entry.size;
  step.item = index;
  if (op == Op::field && entry.kind == Kind::edited && plan_.forms_[step.form].editedAsNumber) edit(step, entry);
  return step;
}

// Makes the step that of an edited number. A picture of letters is none, whatever the form says.
void PlanCompiler::edit(Step& step, const Item& entry) {
  if (!EditedPicture::isNumber(entry.picture)) {
    step.kind = Kind::text;
    return;
  }
  if (entry.size > EditedPicture::kMostCharacters) return;
  step.edited = &plan_.pictures_.emplace_back(entry.picture,
                                              EditedPicture::Clauses{entry.isBlankWhenZero, entry.hasDecimalComma});
  step.scale = static_cast<std::int16_t>(step.edited->scale());
}

Step PlanCompiler::fieldStep(const Layout& layout, ItemIndex field, std::uint32_t offset) {
  layout_ = &layout;
  items_ = &layout.items;
  return stepFor(Op::field, field, offset);
}

bool PlanCompiler::givesNumber(const Step& field) const {
  constexpr Kind kNumbers[] = {Kind::external, Kind::packed, Kind::unsignedPacked, Kind::binary, Kind::nativeBinary};
  const bool isDate = !plan_.forms_[field.form].date.empty();
  return !isDate && (field.edited != nullptr ||
                     std::find(std::begin(kNumbers), std::end(kNumbers), field.kind) != std::end(kNumbers));
}

// Returns its index.
std::uint32_t PlanCompiler::addStep(const Step& step) {
  plan_.steps_.push_back(step);
  return static_cast<std::uint32_t>(plan_.steps_.size() - 1);
}

// Whether anything below a group is shown.
bool PlanCompiler::hasNames(ItemIndex group) const {
  for (ItemIndex i = group + 1; i < (*items_)[group].next; ++i)
    if (!(*items_)[i].isFiller() || (options_.showsFillers && !(*items_)[i].isGroup())) return true;
  return false;
}

// The name of an entry that does not repeat; none for a group whose children go to the object around it.
std::uint32_t PlanCompiler::nameIn(Scope* scope, const Item& entry) {
  if (entry.isGroup() && (entry.isFiller() || options_.flat)) return Step::kNoName;
  return newName(*scope, shownName(entry));
}

void PlanCompiler::refuse(ItemIndex index) {
  const Item& entry = (*items_)[index];
  const std::string reason = refusal(entry, plan_.forms_[formOf_.at(layout_)[index]]);
  if (reason.empty()) return;
  if (!refusals_.empty()) refusals_ += '\n';
  refusals_ += layout_->placeOf(entry) + ": " + shownName(entry) + ": " + reason;
}

std::uint32_t PlanCompiler::newName(Scope& scope, const std::string& name) {
  const unsigned taken = ++scope[name];
  const std::string shown = taken == 1 ? name : name + '(' + std::to_string(taken) + ')';
  const auto [known, isNew] = nameAt_.emplace(shown, static_cast<std::uint32_t>(plan_.names_.size()));
  if (isNew) {
    const KelWstring text = fromUtf8(shown);
    plan_.names_.insert(plan_.names_.end(), text.characters(), text.characters() + text.length() + 1);
  }
  return known->second;
}

}  // namespace oxr::rec
