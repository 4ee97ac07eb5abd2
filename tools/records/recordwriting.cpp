#include "records/recordwriting.hpp"

#include <algorithm>
#include <cstring>

#include "kelwstringconvertor.hpp"

// A record is written by the same loop over the steps of the plan that reads one, with the same shift. Bytes between
// fields are filled when the walk comes to what follows them.
//
// Fields of an area where items redefine each other are kept until the record is there. A field whose bytes read as its
// value already leaves them as they are, since they may say more than the value does: which half byte stands for plus,
// what lies behind the end of a short alternative. What overwrites bytes of others has them all looked at again.

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
}

std::span<const unsigned char> RecordWriter::write(const FIMessageTree& tree) {
  return write(tree, {});
}

std::span<const unsigned char> RecordWriter::write(const FIMessageTree& tree, std::span<const unsigned char> original) {
  kind_ = treeKinds_.kindOf(tree);
  if (kind_ == nullptr) {
    kind_ = plan_.kinds().data();
    throw WriteError("no condition (--when) tells what record this is");
  }
  tree_ = &tree;
  original_ = original;
  filled_ = 0;
  shift_ = shrink_ = 0;
  arrays_.clear();
  loops_.clear();
  kept_.clear();
  end_.reset();
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
  fillTo(sizeOfRecord());
  if (hasAreas_) checkAreas();
  return {record_.data(), filled_};
}

void RecordWriter::walk() {
  const Step* step = plan_.steps().data() + kind_->begin;
  const Step* const end = plan_.steps().data() + kind_->end;
  cursor_.enter();
  while (step != end)
    step = walkOne(*step);
  checkNames();
  cursor_.leave();
}

const Step* RecordWriter::walkOne(const Step& step) {
  switch (step.op) {
    case Op::field:
      return field(step);
    case Op::beginGroup:
      return beginGroup(step);
    case Op::endGroup:
      checkNames();
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
      shift_ = kept_.back().shift;
      shrink_ = kept_.back().shrink;
      kept_.pop_back();
      return &step + 1;
  }
  return &step + 1;
}

// Goes to the alternative that the values so far, or those of the record's fixed fields, tell of.
const Step* RecordWriter::choose(const Step& step) {
  const std::int32_t answer = choosers_[step.choice].choose(
      [this](const Question& question) { return bytesFor(question); },
      [this](const Step& field, std::span<const unsigned char> bytes) { return treeKinds_.valueOf(field, bytes); });
  if (answer == Chooser::kNone)
    fail(step, "no condition (--when) tells which of the items that share its bytes is meant");
  const Choice& choice = plan_.choices()[step.choice];
  const Choice::Alternative& alternative = choice.alternatives[static_cast<std::size_t>(answer)];
  const Item& item = layout().items[alternative.item];
  if (settings_.isFramed && arrays_.empty() && choice.offset + choice.size == kind_->maxSize && !item.isVariable())
    end_ = static_cast<std::uint64_t>(choice.offset + item.totalSize() + shift_);
  return plan_.steps().data() + alternative.target;
}

// The bytes of the record in hand, once it was walked. An original that is longer than what was chosen is kept so long.
std::uint64_t RecordWriter::sizeOfRecord() const {
  const auto most = static_cast<std::uint64_t>(kind_->maxSize + shift_);
  return end_ ? std::clamp<std::uint64_t>(original_.size(), std::min(*end_, most), most) : most;
}

// The bytes of a field that tells of an area: they are written already, or come later and are asked of the tree.
std::span<const unsigned char> RecordWriter::bytesFor(const Question& question) {
  const Step& field = question.field;
  std::uint64_t at = field.offset;
  if (question.from == PlaceFrom::occurrence) at += loops_.back().at;
  if (question.from == PlaceFrom::here) at = static_cast<std::uint64_t>(field.offset + shift_);
  if (at + field.size <= filled_) return std::span(record_).subspan(at, field.size);
  if (question.from != PlaceFrom::record) return {};
  return treeKinds_.bytesIn(*tree_, *kind_, field);
}

// To be called before the cursor leaves an object.
void RecordWriter::checkNames() {
  const unsigned short* const stray = cursor_.strayName();
  if (stray != nullptr)
    throw WriteError(toUtf8(UnitView(stray)) + ": " +
                     (arrays_.empty() ? "" : "in " + fieldPath(layout(), arrays_.back().item, arrays_) + ", ") +
                     "the copybook has no such name here, or it is given twice");
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
  if (step.slot != kNoSlot) keepCount(step, at);
  return &step + 1;
}

const Step* RecordWriter::beginGroup(const Step& step) {
  if (!step.isOccurrence && !cursor_.find(plan_.name(step))) return absent(step, Lack::name);
  if (const PWFData value = cursor_.value(); !value.isNothing()) {
    if (value.isNull()) return absent(step, Lack::value);
    fail(step, "an object is wanted, as in {\"NAME\": ...}");
  }
  cursor_.enter();
  return &step + 1;
}

// Passes over a group or an array that the tree does not have.
const Step* RecordWriter::absent(const Step& step, Lack lack) {
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

const Step* RecordWriter::beginArray(const Step& step) {
  const Step* const end = plan_.steps().data() + step.target - 1;
  const bool isShown = plan_.name(step) != nullptr;
  if (isShown) {
    if (!cursor_.find(plan_.name(step))) return absent(step, Lack::name);
    if (const PWFData value = cursor_.value(); !value.isNothing()) {
      if (value.isNull()) return absent(step, Lack::value);
      fail(step, "an array is wanted, as in [...]");
    }
    cursor_.enter();
  }
  const std::uint32_t count = isShown ? (cursor_.next() ? 1 : 0) : silentCount(step);
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

// The count of an array that is not shown.
std::uint32_t RecordWriter::silentCount(const Step& array) {
  if (array.slot == kNoSlot) return array.max;
  const Counter& counter = counters_[array.slot];
  if (!counter.isKnown || counter.value < array.min || counter.value > array.max)
    fail(array,
         "its count is not known, or not within " + std::to_string(array.min) + " and " + std::to_string(array.max));
  return static_cast<std::uint32_t>(counter.value);
}

void RecordWriter::put(const Step& step, std::uint64_t at, const PWFData& value) {
  fillTo(at);
  try {
    if (isInArea(step))
      putInArea(step, at, value);
    else
      writers_[step.form].write(step, value, record_.data() + at);
  } catch (const FieldRefused& refusal) {
    fail(step, refusal.what());
  } catch (const KelRecoverableException& failure) {
    fail(step, faultText(failure));
  }
  filled_ = std::max(filled_, at + step.size);
}

void RecordWriter::putInArea(const Step& step, std::uint64_t at, const PWFData& value) {
  if (field_.size() < step.size) field_.resize(step.size);
  writers_[step.form].write(step, value, field_.data());
  given_.push_back({&step, at, value, arrays_, Lack::name});
  unsigned char* const bytes = record_.data() + at;
  const auto owners = owners_.begin() + static_cast<std::ptrdiff_t>(at);
  const bool isFree = std::all_of(owners, owners + step.size, [](std::uint32_t owner) { return owner == 0; });
  if (!isFree) {
    if (at + step.size <= filled_ && readsAs(step, bytes, field_.data())) return;
    hasOverwritten_ = true;
  }
  std::memcpy(bytes, field_.data(), step.size);
  std::fill(owners, owners + step.size, static_cast<std::uint32_t>(stepIndex(step) + 1));
}

// A field that the tree has no value for.
void RecordWriter::noValue(const Step& step, std::uint64_t at, Lack lack) {
  if (isInArea(step)) {
    absent_.push_back({&step, at, PWFData(NOTHING), arrays_, lack});
    return;
  }
  fillTo(at);
  const bool isKept = lack == Lack::value && at + step.size <= original_.size();
  if (!isKept && (lack == Lack::name || !writers_[step.form].writeNull(step, record_.data() + at)))
    fail(step, textOf(lack));
  if (isKept) fillTo(at + step.size);
  filled_ = std::max(filled_, at + step.size);
}

void RecordWriter::checkAreas() {
  for (AreaField& absent : absent_)
    checkAbsent(absent);
  if (!hasOverwritten_) return;
  for (AreaField& given : given_) {
    const Step& step = *given.step;
    writers_[step.form].write(step, given.value, field_.data());
    const unsigned char* const bytes = record_.data() + given.at;
    if (readsAs(step, bytes, field_.data())) continue;
    const auto byte = std::mismatch(bytes, bytes + step.size, field_.data()).first - record_.data();
    const Step& other = plan_.steps()[owners_[static_cast<std::size_t>(byte)] - 1];
    arrays_ = given.arrays;
    fail(step,
         "its value does not agree with that of " + fieldPath(layout(), other.item, {}) + ", which has the same bytes");
  }
}

// Whether the bytes of something that is not given come from elsewhere.
void RecordWriter::checkAbsent(AreaField& absent) {
  const Step& step = *absent.step;
  const std::uint64_t size = step.op == Op::beginArray ? std::uint64_t{step.size} * step.max : step.size;
  const auto owners = owners_.begin() + static_cast<std::ptrdiff_t>(absent.at);
  const auto free = std::count(owners, owners + static_cast<std::ptrdiff_t>(size), 0U);
  if (free == 0) return;
  const bool isWhole = layout().items[step.item].isAlternative() && (absent.lack == Lack::name || step.op != Op::field);
  const bool isAlone = static_cast<std::uint64_t>(free) == size;
  if (isWhole && !isAlone) return;
  if (absent.lack == Lack::value && absent.at + size <= original_.size()) return;
  if (isAlone && absent.lack == Lack::value && step.op == Op::field &&
      writers_[step.form].writeNull(step, record_.data() + absent.at))
    return;
  arrays_ = absent.arrays;
  fail(step, std::string(textOf(absent.lack)) + ", and nothing else gives its bytes");
}

// Whether bytes of the record stand for the same value as others of their field.
bool RecordWriter::readsAs(const Step& step, const unsigned char* bytes, const unsigned char* written) {
  if (std::memcmp(bytes, written, step.size) == 0) return true;
  try {
    return converters_[step.form].convert(step, bytes) == converters_[step.form].convert(step, written);
  } catch (const KelRecoverableException&) {
  } catch (const FieldRefused&) {
  }
  return false;
}

// Gives the bytes up to there, as far as they are not there yet.
void RecordWriter::fillTo(std::uint64_t end) {
  if (end <= filled_) return;
  const std::uint64_t kept = filled_ < original_.size() ? std::min<std::uint64_t>(end, original_.size()) - filled_ : 0;
  if (kept != 0) std::memcpy(record_.data() + filled_, original_.data() + filled_, kept);
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

void RecordWriter::fail(const Step& step, const std::string& why) const {
  throw WriteError(fieldPath(layout(), step.item, arrays_) + ": " + why);
}

}  // namespace oxr::rec
