#include "records/recordplan.hpp"

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
  PlanCompiler(RecordPlan& plan, const RecordPlan::Options& options)
      : plan_(plan), items_(plan.layout().items), options_(options) {}

  void run() {
    Scope record;
    children(0, 0, &record);
    if (!refusals_.empty()) throw PlanError(refusals_);
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
    if (entry.isFiller() && (entry.redefines != kNoItem || !entry.isGroup() || !hasNames(index))) scope = nullptr;
    if (scope == nullptr && !mustBeWalked(entry)) return;
    if (entry.occurs.isArray)
      array(index, offset, scope);
    else
      single(index, offset, scope, scope == nullptr ? Step::kNoName : nameIn(scope, entry), false);
  }

  void array(ItemIndex index, std::uint32_t offset, Scope* scope) {
    const Item& entry = items_[index];
    Step begin = stepFor(Op::beginArray, index, offset);
    begin.name = scope == nullptr ? Step::kNoName : newName(*scope, entry.isFiller() ? "FILLER" : entry.name);
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
      refuse(entry);
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

  bool hasNames(ItemIndex group) const {
    for (ItemIndex i = group + 1; i < items_[group].next; ++i)
      if (!items_[i].isFiller()) return true;
    return false;
  }

  // The name of an entry that does not repeat; none for a group whose children go to the object around it.
  std::uint32_t nameIn(Scope* scope, const Item& entry) {
    if (entry.isGroup() && (entry.isFiller() || options_.flat)) return Step::kNoName;
    return newName(*scope, entry.name);
  }

  std::uint32_t newName(Scope& scope, const std::string& name) {
    const unsigned taken = ++scope[name];
    const KelWstring text = fromUtf8(taken == 1 ? name : name + '(' + std::to_string(taken) + ')');
    const auto at = static_cast<std::uint32_t>(plan_.names_.size());
    plan_.names_.insert(plan_.names_.end(), text.characters(), text.characters() + text.length() + 1);
    return at;
  }

  void refuse(const Item& entry) {
    const std::string reason = refusal(entry);
    if (reason.empty()) return;
    if (!refusals_.empty()) refusals_ += '\n';
    refusals_ += plan_.layout().fileName + ':' + std::to_string(entry.line) + ": " +
                 (entry.isFiller() ? "FILLER" : entry.name) + ": " + reason;
  }

  RecordPlan& plan_;
  const std::vector<Item>& items_;
  const RecordPlan::Options& options_;
  std::string refusals_;
};

RecordPlan::RecordPlan(const Layout& layout, const Options& options)
    : layout_(&layout), isVariable_(layout.record().hasVariableSize && !options.arraysAtFullSize) {
  PlanCompiler(*this, options).run();
}

}  // namespace oxr::rec
