#include <algorithm>
#include <cstring>

#include "records/counted.hpp"
#include "records/rawbytes.hpp"
#include "records/recordwriting.hpp"

// Areas: where items redefine each other, or a condition chooses one of them.
//
// Fields of an area where items redefine each other are kept until the record is there. A field whose bytes read as its
// value already leaves them as they are, since they may say more than the value does: which half byte stands for plus,
// what lies behind the end of a short alternative. What overwrites bytes of others has them all looked at again.

namespace oxr::rec {

// Goes to the alternative that the values so far, or those of the record's fixed fields, tell of.
const Step* RecordWriter::choose(const Step& step) {
  const Choice& choice = plan_.choices()[step.choice];
  const Step* const after = plan_.steps().data() + step.target;
  if (isLost_ && !choice.isOfRecord) return after;
  const std::int32_t answer = choosers_[step.choice].choose(
      [this](const Question& question) { return bytesFor(question); },
      [this](const Step& field, std::span<const unsigned char> bytes) { return treeKinds_.valueOf(field, bytes); });
  if (answer == Chooser::kNone) {
    if (putRaw(step, choice)) return after;
    if (original_ || settings_.onUnknown == OnUnknown::isSkipped) {
      fillTo(placeOf(step) + choice.size);
      return after;
    }
    fail(step, "no condition (--when) tells which of the items that share its bytes is meant");
  }
  const Choice::Alternative& alternative = choice.alternatives[static_cast<std::size_t>(answer)];
  const Item& item = layout().items[alternative.item];
  if (settings_.isFramed && arrays_.empty() && choice.offset + choice.size == kind_->maxSize) {
    end_ = static_cast<std::uint64_t>(choice.offset + item.totalSize() + shift_);
    endShift_ = shift_;
  }
  return plan_.steps().data() + alternative.target;
}

// Gives an area the bytes that the tree has for it; false if it has none.
bool RecordWriter::putRaw(const Step& step, const Choice& choice) {
  if (!canBeRaw_ || !cursor_.find(kRawName) || !readRaw(cursor_.value(), raw_)) return false;
  if (settings_.onUnknown != OnUnknown::isRaw) return false;
  const bool isCutOff = settings_.isFramed && raw_.size() < choice.size;
  if (raw_.size() != choice.size && !isCutOff)
    fail(step, "RAW has " + counted(raw_.size(), "byte") + ", not the " + std::to_string(choice.size) + " of it");
  const std::uint64_t at = placeOf(step);
  fillTo(at);
  if (isCutOff) cutAt_ = at + raw_.size();
  std::copy(raw_.begin(), raw_.end(), record_.begin() + static_cast<std::ptrdiff_t>(at));
  filled_ = std::max(filled_, at + raw_.size());
  return true;
}

// The bytes of the record in hand, once it was walked. An original that is longer than what was chosen, or that ends
// behind the last value, is kept so long.
std::uint64_t RecordWriter::sizeOfRecord() const {
  if (isLost_) return filled_;
  // Without anything around records, all have the length of the longest kind, unless each tells its own.
  const bool isAligned = !settings_.isFramed && !plan_.isVariable();
  const std::uint64_t most = isAligned ? plan_.maxSize() : static_cast<std::uint64_t>(kind_->maxSize + shift_);
  std::uint64_t least = std::min({end_.value_or(most), cutAt_.value_or(most), most});
  if (!original_) return least;
  if (settings_.isFramed) least = std::min(least, givenEnd_);
  return std::clamp<std::uint64_t>(original_->size(), least, most);
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
  if (absent.lack == Lack::value && original_) return;
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
    FieldConverter& converter = converters_[step.form];
    return meanTheSame(step, converter.convert(step, bytes), converter.convert(step, written));
  } catch (const KelRecoverableException&) {
  } catch (const FieldRefused&) {
  }
  return false;
}

}  // namespace oxr::rec
