#include "records/recordplan.hpp"

#include <algorithm>
#include <array>
#include <map>

#include "kelwstringconvertor.hpp"

// One walk over the tree of items emits the steps. It keeps the offset so far and the scope of names: the object that
// the fields of a group go to, which is the enclosing one's for a group without a name. Where the scope is null nothing
// is shown, and only what other steps need is emitted: counts, and arrays that move what follows.

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
std::string refusal(const Item& item) {
  if (item.kind == Kind::shortFloat || item.kind == Kind::longFloat)
    return "a floating-point field (COMP-1, COMP-2) cannot be decoded yet";
  if (item.kind == Kind::edited && item.isSigned)
    return "the picture " + item.picture + " has an S among editing symbols, where no character shows the sign";
  if (item.kind >= Kind::national)
    return "a field of this usage (" + std::string(kindName(item.kind)) + ") cannot be decoded yet";
  if (item.isWideBinary())
    return "a binary number of " + std::to_string(item.digits) + " digits (" + std::to_string(item.size) +
           " bytes) is wider than the 8 bytes that can be decoded";
  return {};
}

}  // namespace

class PlanCompiler {
 public:
  PlanCompiler(RecordPlan& plan, const Layout& layout, const RecordPlan::Options& options)
      : plan_(plan), layout_(layout), items_(layout.items), options_(options) {}

  void run() {
    RecordKind kind{layout_.recordName,
                    &layout_,
                    static_cast<std::uint32_t>(plan_.steps_.size()),
                    0,
                    layout_.maxSize(),
                    layout_.record().hasVariableSize && !options_.arraysAtFullSize};
    Scope record;
    children(0, 0, options_.isSilent ? nullptr : &record);
    if (!refusals_.empty()) throw PlanError(refusals_);
    kind.end = static_cast<std::uint32_t>(plan_.steps_.size());
    plan_.kinds_.push_back(kind);
    plan_.counters_ += layout_.counters.size();
    plan_.maxSize_ = std::max(plan_.maxSize_, kind.maxSize);
    plan_.isVariable_ = plan_.isVariable_ || kind.isVariable;
  }

 private:
  // The names of one object and how often each was taken. A null scope is that of what is walked in silence.
  using Scope = std::map<std::string, unsigned>;

  void children(ItemIndex group, std::uint32_t base, Scope* scope) {
    for (ItemIndex child = group + 1; child < items_[group].next; child = items_[child].next)
      item(child, base + items_[child].offset, scope);
  }

  void item(ItemIndex index, std::uint32_t offset, Scope* scope) {
    const Item& entry = items_[index];
    if (entry.isAlternative() && entry.isVariable())
      refuse(entry, "an array with DEPENDING ON in a redefinition cannot be decoded yet");
    if (entry.isFiller() && !(entry.isGroup() ? hasNames(index) : options_.showsFillers)) scope = nullptr;
    if (scope == nullptr && !mustBeWalked(entry)) return;
    if (entry.occurs.isArray)
      array(index, offset, scope);
    else
      single(index, offset, scope, scope == nullptr ? Step::kNoName : nameIn(scope, entry), false);
  }

  void array(ItemIndex index, std::uint32_t offset, Scope* scope) {
    const Item& entry = items_[index];
    Step begin = stepFor(Op::beginArray, index, offset);
    begin.name = scope == nullptr ? Step::kNoName : newName(*scope, shownName(entry));
    begin.min = entry.occurs.min;
    begin.max = entry.occurs.max;
    begin.slot = entry.occurs.counter;
    const std::size_t opened = add(begin);
    // In silence the occurrences matter only for what lies in them.
    if (scope != nullptr || entry.hasVariableSize || entry.holdsCounter) single(index, offset, scope, begin.name, true);
    Step end = begin;
    end.op = Op::endArray;
    end.moves = entry.movesWhatFollows() && !options_.arraysAtFullSize;
    end.target = static_cast<std::uint32_t>(opened + 1);
    add(end);
    plan_.steps_[opened].target = static_cast<std::uint32_t>(plan_.steps_.size());
  }

  // Emits one occurrence. A group without a name of its own gives its children to the object around it.
  void single(ItemIndex index, std::uint32_t offset, Scope* scope, std::uint32_t name, bool isOccurrence) {
    const Item& entry = items_[index];
    Step step = stepFor(entry.isGroup() ? Op::beginGroup : Op::field, index, offset);
    step.name = name;
    step.isOccurrence = isOccurrence;
    if (!entry.isGroup()) {
      refuse(entry, refusal(entry));
      step.slot = entry.counterSlot;
      add(step);
    } else if (name == Step::kNoName) {
      children(index, offset, scope);
    } else {
      Scope inner;
      add(step);
      children(index, offset, &inner);
      step.op = Op::endGroup;
      add(step);
    }
  }

  Step stepFor(Op op, ItemIndex index, std::uint32_t offset) const {
    const Item& entry = items_[index];
    Step step;
    step.op = op;
    step.kind = entry.kind;
    step.sign = signOf(entry);
    step.isBlankWhenZero = entry.isBlankWhenZero;
    step.scale = entry.scale;
    step.offset = offset;
    step.size = entry.size;
    step.item = index;
    return step;
  }

  std::size_t add(const Step& step) {
    plan_.steps_.push_back(step);
    return plan_.steps_.size() - 1;
  }

  static bool mustBeWalked(const Item& entry) {
    return entry.movesWhatFollows() || entry.holdsCounter || entry.counterSlot != kNoSlot;
  }

  // Whether anything below a group is shown.
  bool hasNames(ItemIndex group) const {
    for (ItemIndex i = group + 1; i < items_[group].next; ++i)
      if (!items_[i].isFiller() || (options_.showsFillers && !items_[i].isGroup())) return true;
    return false;
  }

  static std::string shownName(const Item& entry) { return entry.isFiller() ? "FILLER" : entry.name; }

  // The name of an entry that does not repeat; none for a group whose children go to the object around it.
  std::uint32_t nameIn(Scope* scope, const Item& entry) {
    if (entry.isGroup() && (entry.isFiller() || options_.flat)) return Step::kNoName;
    return newName(*scope, shownName(entry));
  }

  std::uint32_t newName(Scope& scope, const std::string& name) {
    const unsigned taken = ++scope[name];
    const std::string shown = taken == 1 ? name : name + '(' + std::to_string(taken) + ')';
    const auto [known, isNew] = nameAt_.emplace(shown, static_cast<std::uint32_t>(plan_.names_.size()));
    if (isNew) {
      const KelWstring text = fromUtf8(shown);
      plan_.names_.insert(plan_.names_.end(), text.characters(), text.characters() + text.length() + 1);
    }
    return known->second;
  }

  void refuse(const Item& entry, const std::string& reason) {
    if (reason.empty()) return;
    if (!refusals_.empty()) refusals_ += '\n';
    refusals_ += layout_.placeOf(entry) + ": " + (entry.isFiller() ? "FILLER" : entry.name) + ": " + reason;
  }

  RecordPlan& plan_;
  const Layout& layout_;
  const std::vector<Item>& items_;
  const RecordPlan::Options& options_;
  std::map<std::string, std::uint32_t> nameAt_;  // where each name stands in the plan's row of names
  std::string refusals_;
};

RecordPlan::RecordPlan(const Layout& layout, const Options& options) : forms_{options.form} {
  PlanCompiler(*this, layout, options).run();
}

}  // namespace oxr::rec
