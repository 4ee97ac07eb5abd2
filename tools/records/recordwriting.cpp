#include "records/recordwriting.hpp"

#include <algorithm>
#include <cstring>

#include "kelwstringconvertor.hpp"
#include "records/counted.hpp"
#include "records/rawbytes.hpp"

// A record is written by the same loop over the steps of the plan that reads one, with the same shift. Bytes between
// fields are filled when the walk comes to what follows them. Areas are written in recordwritingareas.cpp.

namespace oxr::rec {

namespace {

// The whole number that a count field holds; nothing if it holds none, or one that no array has.
std::optional<std::int64_t> countIn(const PWFData& value) {
  if (value.isNull()) return std::nullopt;
  if (value.getDataLogicalType() == INTEGER) return value.getInt64Value();
  if (value.getDataLogicalType() != DECIMAL && value.getDataLogicalType() != STRING) return std::nullopt;
  const UnitView text(static_cast<const unsigned short*>(value.getDataValue()));
  std::int64_t count = 0;
  for (const unsigned short unit : text) {
    if (unit < '0' || unit > '9' || count > kMaxRecordBytes) return std::nullopt;
    count = 10 * count + (unit - '0');
  }
  return text.empty() ? std::nullopt : std::optional(count);
}

bool hasName(const std::vector<unsigned short>& names, UnitView wanted) {
  for (std::size_t at = 0; at < names.size();) {
    const UnitView name(names.data() + at);
    if (name == wanted) return true;
    at += name.size() + 1;
  }
  return false;
}

std::string elements(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " element" : " elements");
}

}  // namespace

RecordWriter::RecordWriter(const RecordPlan& plan, const Settings& settings)
    : plan_(plan),
      settings_(settings),
      treeKinds_(plan, writers_, converters_),
      inArea_(plan.steps().size()),
      kind_(plan.kinds().data()),
      record_(plan.maxSize()),
      counters_(plan.counters()) {
  for (const PhysicalForm& form : plan.forms()) {
    writers_.emplace_back(form);
    converters_.emplace_back(form);
  }
  for (const Choice& choice : plan.choices())
    choosers_.emplace_back(choice);
  for (const RecordKind& kind : plan.kinds()) {
    templates_.emplace_back(*kind.layout, writers_.front(), settings.filler);
    for (std::uint32_t i = kind.begin; i < kind.end; ++i)
      for (ItemIndex at = plan.steps()[i].item; at != kNoItem && !inArea_[i]; at = kind.layout->items[at].parent)
        inArea_[i] = kind.layout->items[at].isAlternative();
  }
  hasAreas_ = std::find(inArea_.begin(), inArea_.end(), true) != inArea_.end();
  if (hasAreas_) owners_.resize(plan.maxSize());
  canBeRaw_ = (plan.recordChoice() != nullptr || !plan.choices().empty()) && !hasName(plan.names(), kRawName);
}

std::span<const unsigned char> RecordWriter::write(const FIMessageTree& tree) {
  original_.reset();
  return writeTree(tree);
}

std::span<const unsigned char> RecordWriter::write(const FIMessageTree& tree, std::span<const unsigned char> original) {
  original_ = original;
  return writeTree(tree);
}

std::span<const unsigned char> RecordWriter::writeTree(const FIMessageTree& tree) {
  if (canBeRaw_ && readRaw(tree, raw_)) {
    if (settings_.onUnknown != OnUnknown::isRaw) refuseUnknown();
    return writeRaw();
  }
  kind_ = treeKinds_.kindOf(tree);
  if (kind_ == nullptr) {
    kind_ = plan_.kinds().data();
    refuseUnknown();
  }
  tree_ = &tree;
  filled_ = givenEnd_ = 0;
  isLost_ = false;
  shift_ = shrink_ = 0;
  arrays_.clear();
  loops_.clear();
  kept_.clear();
  end_.reset();
  cutAt_.reset();
  for (Counter& counter : counters_)
    counter.isKnown = false;
  if (hasAreas_) {
    std::fill(owners_.begin(), owners_.end(), 0);
    given_.clear();
    absent_.clear();
    hasOverwritten_ = false;
  }
  cursor_.begin(tree);
  walk();
  const std::uint64_t size = sizeOfRecord();
  fillTo(size);
  if (hasAreas_) checkAreas();
  return {record_.data(), size};
}

void RecordWriter::refuseUnknown() const {
  const char* const why = "no condition (--when) tells what record this is";
  if (settings_.onUnknown == OnUnknown::isSkipped) throw UnknownRecord(why);
  throw WriteError(why);
}

// Without anything around records, each has the length of the layout.
std::span<const unsigned char> RecordWriter::writeRaw() {
  if (!settings_.isFramed && raw_.size() != plan_.maxSize())
    throw WriteError(
        "it has " + counted(raw_.size(), "byte") + ", not the " + std::to_string(plan_.maxSize()) + " of a record",
        "RAW");
  return raw_;
}

void RecordWriter::walk() {
  const Step* step = plan_.steps().data() + kind_->begin;
  const Step* const end = plan_.steps().data() + kind_->end;
  cursor_.enter();
  while (step != end)
    step = walkOne(*step);
  checkNames(nullptr);
  cursor_.leave();
}

const Step* RecordWriter::walkOne(const Step& step) {
  switch (step.op) {
    case Op::field:
      return field(step);
    case Op::beginGroup:
      return beginGroup(step);
    case Op::endGroup:
      checkNames(&step);
      cursor_.leave();
      return &step + 1;
    case Op::beginArray:
      return beginArray(step);
    case Op::endArray:
      return endArray(step);
    case Op::choose:
      return choose(step);
    case Op::jump:
      return plan_.steps().data() + step.target;
    case Op::keepPlace:
      kept_.push_back({shift_, shrink_});
      return &step + 1;
    case Op::restorePlace:
      if (end_) *end_ = static_cast<std::uint64_t>(static_cast<std::int64_t>(*end_) + shift_ - endShift_);
      endShift_ = kept_.back().shift;
      shift_ = kept_.back().shift;
      shrink_ = kept_.back().shrink;
      kept_.pop_back();
      return &step + 1;
  }
  return &step + 1;
}

// To be called before the cursor leaves an object: that of a group, or of the record.
void RecordWriter::checkNames(const Step* group) {
  const TreeCursor::Stray stray = cursor_.stray();
  if (stray.name == nullptr) return;
  const std::string path = group == nullptr ? "" : fieldPath(layout(), group->item, arrays_) + '.';
  throw WriteError(stray.isSecond ? "it is given twice" : "the copybook has no such name here",
                   path + toUtf8(UnitView(stray.name)));
}

const Step* RecordWriter::field(const Step& step) {
  const unsigned short* const name = plan_.name(step);
  const std::uint64_t at = placeOf(step);
  if (name == nullptr) {
    fillTo(at + step.size);
  } else if (!step.isOccurrence && !cursor_.find(name)) {
    noValue(step, at, Lack::name);
  } else {
    const PWFData value = cursor_.value();
    if (value.isNothing()) fail(step, "a value is wanted, not an object or an array");
    if (value.isNull())
      noValue(step, at, Lack::value);
    else
      put(step, at, value);
  }
  if (step.slot != kNoSlot && !isLost_) keepCount(step, at);
  return &step + 1;
}

const Step* RecordWriter::beginGroup(const Step& step) {
  if (!step.isOccurrence && !cursor_.find(plan_.name(step))) return absent(step, Lack::name);
  const PWFData value = cursor_.value();
  if (value.isNull()) return absent(step, Lack::value);
  if (!value.isNothing() || cursor_.isOnArray()) fail(step, "an object is wanted, as in {\"NAME\": ...}");
  cursor_.enter();
  return &step + 1;
}

// Passes over a group or an array that the tree does not have.
const Step* RecordWriter::absent(const Step& step, Lack lack) {
  if (step.slot != kNoSlot && lack == Lack::value && original_) return keepArray(step);
  const bool isMissed = step.op == Op::beginArray && (plan_.steps()[step.target - 1].moves || step.slot != kNoSlot);
  if (isMissed || !layout().items[step.item].isAlternative()) fail(step, textOf(lack));
  absent_.push_back({&step, placeOf(step), PWFData(NOTHING), arrays_, lack});
  if (step.op == Op::beginArray) return plan_.steps().data() + step.target;
  const Step* end = &step;
  for (int depth = 1; depth != 0;) {
    ++end;
    depth += end->op == Op::beginGroup ? 1 : end->op == Op::endGroup ? -1 : 0;
  }
  return end + 1;
}

// Passes over an array whose count cannot be used. Where counts move what follows, nothing behind it has a place.
const Step* RecordWriter::keepArray(const Step& step) {
  if (!kind_->isVariable) {
    fillTo(placeOf(step) + std::uint64_t{step.size} * step.max);
  } else if (!isLost_) {
    fillTo(std::min<std::uint64_t>(original_->size(), record_.size()));
    isLost_ = true;
  }
  return plan_.steps().data() + step.target;
}

const Step* RecordWriter::beginArray(const Step& step) {
  const Step* const end = plan_.steps().data() + step.target - 1;
  const bool isShown = plan_.name(step) != nullptr;
  if (isShown) {
    if (!cursor_.find(plan_.name(step))) return absent(step, Lack::name);
    if (const PWFData value = cursor_.value(); value.isNull()) return absent(step, Lack::value);
    if (!cursor_.isOnArray()) fail(step, "an array is wanted, as in [...]");
    cursor_.enter();
  }
  const std::optional<std::uint32_t> silent = isShown ? cursor_.next() ? 1 : 0 : silentCount(step);
  if (!silent && original_) return keepArray(step);
  if (!silent)
    fail(step,
         "its count is not known, or not within " + std::to_string(step.min) + " and " + std::to_string(step.max));
  const std::uint32_t count = *silent;
  arrays_.push_back({step.item, 0});
  loops_.push_back({count, shift_, placeOf(step), isShown});
  if (count > 0 && &step + 1 != end) return &step + 1;
  // There is nothing to do in the occurrences.
  if (count > 0) arrays_.back().index = count - 1;
  shift_ += (std::int64_t{count} - 1) * step.size;
  return end;
}

const Step* RecordWriter::endArray(const Step& step) {
  OpenLoop& loop = loops_.back();
  fillTo(static_cast<std::uint64_t>(step.offset + shift_ + step.size));
  shift_ += step.size;
  if (loop.isShown ? cursor_.next() : arrays_.back().index + 1 < loop.count) {
    if (loop.isShown && ++loop.count > step.max)
      fail(step, "more than the " + elements(step.max) + " that it has room for");
    ++arrays_.back().index;
    loop.at = placeOf(step);
    return plan_.steps().data() + step.target;
  }
  arrays_.pop_back();
  if (loop.isShown) {
    checkCount(step, loop.count);
    cursor_.leave();
  }
  if (step.moves) {
    shift_ -= std::int64_t{step.max} * step.size;
    shrink_ += (std::int64_t{step.max} - loop.count) * step.size;
  } else {
    shift_ = loop.shiftBefore;
  }
  loops_.pop_back();
  return &step + 1;
}

void RecordWriter::keepCount(const Step& step, std::uint64_t at) {
  Counter& counter = counters_[step.slot];
  counter.item = step.item;
  counter.isKnown = false;
  try {
    const auto count = countIn(converters_[step.form].convert(step, record_.data() + at));
    counter.isKnown = count.has_value();
    counter.value = count.value_or(0);
  } catch (const KelRecoverableException&) {
  } catch (const FieldRefused&) {
  }
}

void RecordWriter::checkCount(const Step& array, std::uint32_t count) {
  if (array.slot == kNoSlot) {
    if (count != array.max)
      fail(array, elements(count) + ", not the " + std::to_string(array.max) + " that it always has");
    return;
  }
  const Counter& counter = counters_[array.slot];
  if (!counter.isKnown) fail(array, "its count is not known");
  if (counter.value != count)
    fail(array,
         elements(count) + ", but " + fieldPath(layout(), counter.item, {}) + " is " + std::to_string(counter.value));
  if (count < array.min || count > array.max)
    fail(array, elements(count) + ", not within " + std::to_string(array.min) + " and " + std::to_string(array.max));
}

// The count of an array that is not shown; nothing if it cannot be used.
std::optional<std::uint32_t> RecordWriter::silentCount(const Step& array) const {
  if (array.slot == kNoSlot) return array.max;
  const Counter& counter = counters_[array.slot];
  if (isLost_ || !counter.isKnown || counter.value < array.min || counter.value > array.max) return std::nullopt;
  return static_cast<std::uint32_t>(counter.value);
}

void RecordWriter::put(const Step& step, std::uint64_t at, const PWFData& value) {
  if (isLost_) fail(step, "nobody can tell where it is: a count before it cannot be used");
  if (cutAt_ && at >= *cutAt_) fail(step, "the record ends before it");
  fillTo(at);
  try {
    if (isInArea(step))
      putInArea(step, at, value);
    else
      writers_[step.form].write(step, value, record_.data() + at);
  } catch (const FieldRefused& refusal) {
    fail(step, refusal.what());
  } catch (const KelRecoverableException& failure) {
    fail(step, failure);
  }
  filled_ = std::max(filled_, at + step.size);
  if (original_) keepEnd(step, at);
}

// Of a text that the end of the original cuts off, the blanks behind that end are none of its value.
void RecordWriter::keepEnd(const Step& step, std::uint64_t at) {
  std::uint64_t end = at + step.size;
  if (end > original_->size() && at < original_->size() && FieldConverter::canBeCut(step)) {
    std::vector<unsigned char> blanks(end - original_->size());
    writers_[step.form].fillWithBlanks(step.kind, blanks.data(), static_cast<std::uint32_t>(blanks.size()));
    if (std::memcmp(record_.data() + original_->size(), blanks.data(), blanks.size()) == 0) end = original_->size();
  }
  givenEnd_ = std::max(givenEnd_, end);
}

// A field that the tree has no value for.
void RecordWriter::noValue(const Step& step, std::uint64_t at, Lack lack) {
  if (isLost_ && lack == Lack::value) return;
  if (isInArea(step)) {
    absent_.push_back({&step, at, PWFData(NOTHING), arrays_, lack});
    return;
  }
  fillTo(at);
  const bool isKept = lack == Lack::value && original_;
  if (!isKept && (lack == Lack::name || !writers_[step.form].writeNull(step, record_.data() + at)))
    fail(step, textOf(lack));
  if (isKept) fillTo(at + step.size);
  filled_ = std::max(filled_, at + step.size);
}

// Gives the bytes up to there, as far as they are not there yet.
void RecordWriter::fillTo(std::uint64_t end) {
  if (end <= filled_ || isLost_) return;
  const std::uint64_t there = original_ ? original_->size() : 0;
  const std::uint64_t kept = filled_ < there ? std::min(end, there) - filled_ : 0;
  if (kept != 0) std::memcpy(record_.data() + filled_, original_->data() + filled_, kept);
  filled_ += kept;
  if (filled_ == end) return;
  RecordTemplate& bytes = templates_[static_cast<std::size_t>(kind_ - plan_.kinds().data())];
  bytes.copy(static_cast<std::uint64_t>(static_cast<std::int64_t>(filled_) + shrink_), end - filled_,
             record_.data() + filled_);
  filled_ = end;
}

const char* RecordWriter::textOf(Lack lack) {
  return lack == Lack::name ? "the name is missing" : "null cannot be stored";
}

void RecordWriter::fail(const Step& step, std::string_view why, int number) const {
  throw WriteError(std::string(why), fieldPath(layout(), step.item, arrays_), number);
}

void RecordWriter::fail(const Step& step, const KelRecoverableException& failure) const {
  fail(step, faultText(failure), failure.oxrMessageNumber());
}

}  // namespace oxr::rec
