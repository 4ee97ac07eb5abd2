#include <algorithm>

#include "records/rawbytes.hpp"
#include "records/recordworker.hpp"

// What a record is, and what its areas hold. All that has a fixed place is decided before the walk, so that a record of
// no kind makes no message; an area in an array, or behind one, is decided when the walk comes to it.

namespace oxr::rec {

namespace {

const WorkerInfoPtr& kNoInfo = WorkerInfoPtr::defaultWIP;

KelWstring hexText(std::span<const unsigned char> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  KelWstring text;
  unsigned short* units = text.resizeForOverwrite(static_cast<unsigned>(2 * bytes.size()));
  for (const unsigned char byte : bytes) {
    *units++ = static_cast<unsigned char>(kDigits[byte >> 4]);
    *units++ = static_cast<unsigned char>(kDigits[byte & 15]);
  }
  return text;
}

}  // namespace

// Sets the kind of the record in hand; false if it is of none.
bool RecordWorker::findKind() {
  kind_ = plan_.kinds().data();
  kindName_ = {};
  if (recordChooser_) {
    undecided_ = plan_.recordChoice();
    const std::int32_t answer = decide(*recordChooser_);
    if (answer == Chooser::kNone) return false;
    const Choice::Alternative& alternative = undecided_->alternatives[static_cast<std::size_t>(answer)];
    kind_ += alternative.target;
    nameKind(alternative.name);
  }
  for (std::size_t i = kind_->firstChoice; i < kind_->endChoice; ++i) {
    const Choice& choice = plan_.choices()[i];
    if (!choice.isOfRecord) continue;
    undecided_ = &choice;
    decisions_[i] = decide(choosers_[i]);
    if (decisions_[i] == Chooser::kNone) return false;
    nameKind(choice.alternatives[static_cast<std::size_t>(decisions_[i])].name);
  }
  return true;
}

// A record has the name of its level 01 entry and of each of its areas.
void RecordWorker::nameKind(std::string_view name) {
  const auto isOfInterest = [this](std::string_view known) {
    return std::find(kindsOfInterest_.begin(), kindsOfInterest_.end(), known) != kindsOfInterest_.end();
  };
  if (kindsOfInterest_.empty() || !isOfInterest(kindName_) || isOfInterest(name)) kindName_ = name;
}

// Goes behind a record of no kind. Returns whether it is shown.
bool RecordWorker::passUnknown() {
  if (!reader_.isFramed() && plan_.isVariable())
    reader_.fail("no condition (--when) tells what it is, so the next record cannot be found");
  const bool isSkipped = settings_.onUnknown == OnUnknown::isSkipped;
  if (settings_.onUnknown == OnUnknown::isError) {
    const Question* const question = undecided_->questions.empty() ? nullptr : undecided_->questions.data();
    FieldFault told =
        fault(question == nullptr ? kNoItem : question->field.item, question == nullptr ? 0 : question->field.offset,
              question == nullptr ? 0 : question->field.size, {.code = FaultCode::noKind});
    if (question != nullptr) told.layout = question->layout;
    report(told);
  }
  if (isSkipped) {
    ++skipped_;
  } else {
    handler_->startMessage(kNoInfo, kNoInfo);
    showRaw({record_.data, record_.size - record_.padding});
    handler_->endMessage(kNoInfo);
  }
  reader_.finish(record_.size);
  return !isSkipped;
}

void RecordWorker::showRaw(std::span<const unsigned char> bytes) {
  tell(kRawName, PWFData(hexText(bytes)), -1);
}

std::int32_t RecordWorker::decide(Chooser& chooser) {
  return chooser.choose(
      [this](const Question& question) { return bytesAt(placeOf(question), question.field.size); },
      [this](const Step& step, std::span<const unsigned char> bytes) { return valueOrNull(step, bytes.data()); });
}

std::uint64_t RecordWorker::placeOf(const Question& question) const {
  switch (question.from) {
    case PlaceFrom::occurrence:
      return loops_.back().at + question.field.offset;
    case PlaceFrom::here:
      return static_cast<std::uint64_t>(question.field.offset + shift_);
    default:
      return question.field.offset;
  }
}

PWFData RecordWorker::valueOrNull(const Step& step, const unsigned char* bytes) {
  FieldConverter& converter = *converters_[step.form];
  if (converter.diagnose(step, bytes)) return FieldConverter::null(step);
  try {
    return converter.convert(step, bytes);
  } catch (const KelRecoverableException&) {
    return FieldConverter::null(step);
  } catch (const FieldRefused&) {
    return FieldConverter::null(step);
  }
}

// Returns the step to go on with.
const Step* RecordWorker::choose(const Step& step) {
  const Choice& choice = plan_.choices()[step.choice];
  const Step* const after = plan_.steps().data() + step.target;
  if (isLost_ && !choice.isOfRecord) return after;
  const std::int32_t answer = choice.isOfRecord ? decisions_[step.choice] : decide(choosers_[step.choice]);
  if (answer != Chooser::kNone)
    return plan_.steps().data() + choice.alternatives[static_cast<std::size_t>(answer)].target;
  passArea(step, choice);
  return after;
}

// Passes over an area that holds none of its alternatives. Where its field is cut off, that is the fault.
void RecordWorker::passArea(const Step& step, const Choice& choice) {
  const Question& question = choice.questions.front();
  const std::uint64_t at = placeOf(question);
  if (at + question.field.size > record_.size) {
    cutOff(question.field, at);
  } else if (settings_.onUnknown == OnUnknown::isError) {
    report(fault(question.field.item, at, question.field.size, {.code = FaultCode::noKind}));
  } else if (settings_.onUnknown == OnUnknown::isRaw && !plan_.isSilent()) {
    showRaw(bytesAt(static_cast<std::uint64_t>(step.offset + shift_), choice.size));
  }
}

}  // namespace oxr::rec
