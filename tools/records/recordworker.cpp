#include "records/recordworker.hpp"

#include <algorithm>
#include <limits>

// A record is read by one loop over the steps of the plan. Their offsets hold with all arrays at their largest; shift_
// makes up the difference. An open array adds the size of an occurrence at each turn; when it closes, an array whose
// unused room is not in the record leaves shift_ short by that room, and any other restores it.
//
// What kind a record is, and which alternative of an area is walked, is told in recordkind.cpp.
//
// A count that cannot be used makes its array null. If arrays take only the room that they use, the walk is then lost:
// it goes on to the end, so that all elements are reported, with nulls for their values.

namespace oxr::rec {

namespace {

const WorkerInfoPtr& kNoInfo = WorkerInfoPtr::defaultWIP;

constexpr std::int64_t kNotACount = -1;

// The whole number that a count field holds, or kNotACount, which a number beyond all array sizes gives too.
std::int64_t countIn(const PWFData& value) {
  if (value.isNull()) return kNotACount;
  if (value.getDataLogicalType() == INTEGER) return value.getInt64Value();
  const UnitView text(static_cast<const unsigned short*>(value.getDataValue()),
                      static_cast<std::size_t>(value.getStringLength()));
  std::int64_t count = 0;
  for (const unsigned short unit : text) {
    if (unit < '0' || unit > '9' || count > std::numeric_limits<std::uint32_t>::max()) return kNotACount;
    count = 10 * count + (unit - '0');
  }
  return text.empty() ? kNotACount : count;
}

FaultReason reasonOf(const KelException& failure) {
  return {.code = FaultCode::library, .message = failure.oxrMessageNumber(), .detail = faultText(failure)};
}

}  // namespace

RecordForm recordForm(const RecordPlan& plan, RecordForm form) {
  form.isVariable = plan.isVariable();
  form.maxSize = plan.maxSize();
  setLineCharacters(form, plan.forms().front().ccsid);
  return form;
}

RecordWorker::Owner RecordWorker::make(const RecordPlan& plan, const Settings& settings, FaultListener& listener) {
  return Owner(new RecordWorker(plan, settings, listener));
}

RecordWorker::RecordWorker(const RecordPlan& plan, const Settings& settings, FaultListener& listener)
    : plan_(plan),
      settings_(settings),
      listener_(listener),
      reader_(recordForm(plan, settings.form)),
      kind_(plan.kinds().data()),
      isMistrusted_(plan.steps().size()),
      counters_(plan.counters()) {
  for (const PhysicalForm& form : plan.forms())
    converters_.push_back(std::make_unique<FieldConverter>(form));
  if (plan.recordChoice() != nullptr) recordChooser_.emplace(*plan.recordChoice());
  for (const Choice& choice : plan.choices())
    choosers_.emplace_back(choice);
  decisions_.resize(choosers_.size());
}

void RecordWorker::initializeParse(int, MessageInfo*, int) {
  isOpen_ = false;
}

void RecordWorker::setFIHandler(FIHandler* handler, bool adopt) {
  if (handler != adopted_.get()) adopted_.reset(adopt ? handler : nullptr);
  handler_ = handler;
  records_ = dynamic_cast<RecordHandler*>(handler);
}

void RecordWorker::parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset, int flags) {
  parseFirst(buffer, path, true, offset, flags);
  while (hasNext())
    parseNext();
}

void RecordWorker::parseFirst(const BitstreamBuffer* buffer, std::vector<int>*, bool, int offset, int) {
  if (handler_ == nullptr || buffer == nullptr) throw FIParseException();
  reader_.open(buffer, offset, source_);
  isOpen_ = true;
  if (!reader_.atEnd()) readRecord();
}

void RecordWorker::parseNext() {
  if (!hasNext()) throw FIParseException();
  readRecord();
}

const unsigned short* RecordWorker::getWorkerName() const {
  static constexpr unsigned short kName[] = {'R', 'E', 'C', 'O', 'R', 'D', 'S', 0};
  return kName;
}

// Reads one message: records that are skipped make none.
void RecordWorker::readRecord() {
  bool isShown = false;
  do {
    beginRecord();
    isShown = findKind();
    if (isShown)
      readKnown();
    else
      isShown = passUnknown();
  } while (!isShown && !reader_.atEnd());
}

void RecordWorker::beginRecord() {
  record_ = reader_.next();
  shift_ = 0;
  isLost_ = isShort_ = false;
  isPlain_ = observer_ == nullptr && records_ != nullptr && !hasMistrust_;
  arrays_.clear();
  loops_.clear();
  keptShifts_.clear();
  for (Counter& counter : counters_)
    counter.state = Counter::State::unread;
}

void RecordWorker::readKnown() {
  handler_->startMessage(kNoInfo, kNoInfo);
  walk();
  checkLength();
  handler_->endMessage(kNoInfo);
  const bool hasOwnLength = !reader_.isFramed() && plan_.isVariable();
  reader_.finish(hasOwnLength ? static_cast<std::uint32_t>(kind_->maxSize + shift_) : record_.size);
}

void RecordWorker::walk() {
  const Step* step = plan_.steps().data() + kind_->begin;
  const Step* const end = plan_.steps().data() + kind_->end;
  while (step != end) {
    if (step->op == Op::field) [[likely]] {
      field(*step);
      ++step;
    } else {
      step = pass(*step);
    }
  }
}

// Does what a step says that is no field. Returns the step to go on with.
const Step* RecordWorker::pass(const Step& step) {
  switch (step.op) {
    case Op::beginGroup:
      handler_->startElement(plan_.name(step), kGroupElement, kNoInfo, occurrence(step), -1);
      return &step + 1;
    case Op::endGroup:
      handler_->endElement(plan_.name(step), kNoInfo);
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
      keptShifts_.push_back(shift_);
      return &step + 1;
    default:  // restorePlace
      shift_ = keptShifts_.back();
      keptShifts_.pop_back();
      return &step + 1;
  }
}

int RecordWorker::occurrence(const Step& step) const {
  return step.isOccurrence ? static_cast<int>(arrays_.back().index) : -1;
}

// Part of the walk: as a call of its own it would cost as much as many a conversion.
[[gnu::always_inline]] inline void RecordWorker::field(const Step& step) {
  const auto at = static_cast<std::uint64_t>(step.offset + shift_);
  if (!isPlain_ || at + step.size > record_.size) [[unlikely]]
    return fieldWithCare(step);
  const PWFData value = convert(step, at);
  if (step.slot != kNoSlot) keepCount(step, value);
  if (step.name != Step::kNoName) records_->field(plan_.name(step), value, occurrence(step));
}

// An observer sees a field between its start and its value.
void RecordWorker::fieldWithCare(const Step& step) {
  const unsigned short* const name = plan_.name(step);
  const bool isObserved = observer_ != nullptr;
  if (isObserved && name != nullptr) handler_->startElement(name, kFieldElement, kNoInfo, occurrence(step), -1);
  const PWFData value = read(step);
  if (isObserved && hasValue_) observe(step, static_cast<std::uint64_t>(step.offset + shift_), value, nullptr);
  if (step.slot != kNoSlot) keepCount(step, value);
  if (name == nullptr) return;
  if (!isObserved) return tell(name, value, occurrence(step));
  handler_->data(value, kNoInfo, -1, -1);
  handler_->endElement(name, kNoInfo);
}

void RecordWorker::tellInEvents(const unsigned short* name, const PWFData& value, int index) {
  handler_->startElement(name, kFieldElement, kNoInfo, index, -1);
  handler_->data(value, kNoInfo, -1, -1);
  handler_->endElement(name, kNoInfo);
}

// What the conversions return goes out as it is: a copy would cost as much as many a conversion.
inline PWFData RecordWorker::read(const Step& step) {
  const auto at = static_cast<std::uint64_t>(step.offset + shift_);
  hasValue_ = !isLost_ && at + step.size <= record_.size;
  if (!hasValue_) return isLost_ ? FieldConverter::null(step) : cutOff(step, at);
  if (isMistrusted_[indexOf(step)])
    if (FaultReason reason = converters_[step.form]->diagnose(step, record_.data + at))
      return failed(step, at, std::move(reason));
  return convert(step, at);
}

inline PWFData RecordWorker::convert(const Step& step, std::uint64_t at) {
  try {
    return converters_[step.form]->convert(step, record_.data + at);
  } catch (const KelRecoverableException& failure) {
    return refused(step, at, failure.oxrMessageNumber(), faultText(failure));
  } catch (const FieldRefused& refusal) {
    return refused(step, at, 0, refusal.what());
  }
}

// A field that its conversion refused. What that said is told where the bytes do not show the reason.
PWFData RecordWorker::refused(const Step& step, std::uint64_t at, int message, std::string said) {
  hasMistrust_ = isMistrusted_[indexOf(step)] = true;
  isPlain_ = false;
  FieldConverter& converter = *converters_[step.form];
  const unsigned char* const bytes = record_.data + at;
  FaultReason reason = converter.diagnose(step, bytes);
  return failed(step, at, reason ? std::move(reason) : converter.refusal(step, bytes, message, std::move(said)));
}

// A field that the record ends before. The first one is bad, the others nobody expects.
PWFData RecordWorker::cutOff(const Step& step, std::uint64_t at) {
  if (!reader_.isFramed()) reader_.refuseShort(at + step.size);
  if (isShort_) return FieldConverter::null(step);
  if (at < record_.size && FieldConverter::canBeCut(step) && plan_.forms()[step.form].date.empty())
    return readStart(step, at);
  isShort_ = true;
  return failed(step, at, {.code = FaultCode::recordEnds, .numbers = {record_.size}});
}

// Reads what there is of a field.
PWFData RecordWorker::readStart(const Step& step, std::uint64_t at) {
  hasValue_ = true;
  try {
    return converters_[step.form]->convertStart(step, record_.data + at, static_cast<std::uint32_t>(record_.size - at));
  } catch (const KelRecoverableException& failure) {
    return failed(step, at, reasonOf(failure));
  }
}

PWFData RecordWorker::failed(const Step& step, std::uint64_t at, FaultReason reason) {
  hasValue_ = false;
  const FieldFault told = fault(step.item, at, step.size, std::move(reason));
  PWFData value = FieldConverter::null(step);
  if (observer_ != nullptr) observe(step, at, value, &told);
  report(told);
  return value;
}

void RecordWorker::observe(const Step& step, std::uint64_t at, const PWFData& value, const FieldFault* fault) {
  observer_->seen({step, at, arrays_, bytesAt(at, step.size), value, fault});
}

// The bytes of a field as far as the record has them.
std::span<const unsigned char> RecordWorker::bytesAt(std::uint64_t offset, std::uint32_t size) const {
  if (offset >= record_.size) return {};
  return {record_.data + offset, std::min<std::uint64_t>(size, record_.size - offset)};
}

// A field of the blanks that a line is filled up with stands where the line ends.
FieldFault RecordWorker::fault(ItemIndex item, std::uint64_t offset, std::uint32_t size, FaultReason reason) const {
  const std::uint64_t place =
      record_.padding == 0 ? offset : std::min(offset, std::uint64_t{record_.size} - record_.padding);
  return {kind_->layout,         reader_.recordNumber(), reader_.offsetInInput(place), item, arrays_,
          bytesAt(offset, size), std::move(reason)};
}

void RecordWorker::report(const FieldFault& fault) {
  if (!listener_.goOnAfter(fault)) throw FieldError(fault);
}

void RecordWorker::keepCount(const Step& step, const PWFData& value) {
  Counter& counter = counters_[step.slot];
  counter.value = countIn(value);
  counter.state = value.isNull() ? Counter::State::bad : Counter::State::good;
  counter.step = &step;
  counter.at = static_cast<std::uint64_t>(step.offset + shift_);
}

// How many occurrences an array has. A count that is not known or not allowed is a fault of the count field, told once
// for each array that goes by it; from there on the walk is lost, unless all arrays have their full size.
std::int64_t RecordWorker::countFor(const Step& array) {
  if (array.slot == kNoSlot) return array.max;
  const Counter& counter = counters_[array.slot];
  if (counter.state == Counter::State::good) {
    if (counter.value >= array.min && counter.value <= array.max) return counter.value;
    report(fault(counter.step->item, counter.at, counter.step->size,
                 {.code = FaultCode::badCount, .numbers = {counter.value, array.min, array.max}, .other = array.item}));
  } else if (counter.state == Counter::State::unread) {
    report(fault(array.item, static_cast<std::uint64_t>(array.offset + shift_), 0, {.code = FaultCode::noCount}));
  }
  isLost_ = isLost_ || kind_->isVariable;
  isPlain_ = isPlain_ && !isLost_;
  return kNotACount;
}

// Opens the array, or reports it as null. Returns the step to go on with.
const Step* RecordWorker::beginArray(const Step& step) {
  const Step* const after = plan_.steps().data() + step.target;
  const Step* const body = &step + 1;
  const Step* const end = after - 1;
  const unsigned short* const name = plan_.name(step);
  const std::int64_t count = isLost_ && step.slot != kNoSlot ? kNotACount : countFor(step);
  if (name != nullptr && count == kNotACount) tell(name, PWFData(STRING), -1);
  if (count == kNotACount) return after;
  if (name != nullptr) handler_->startElement(name, kArrayElement, kNoInfo, -1, -1);
  arrays_.push_back({step.item, 0});
  loops_.push_back({static_cast<std::uint32_t>(count), shift_, static_cast<std::uint64_t>(step.offset + shift_)});
  if (count > 0 && body != end) return body;
  // There is nothing to do in the occurrences: go straight to the array's end.
  arrays_.back().index = count > 0 ? static_cast<std::uint32_t>(count - 1) : 0;
  shift_ += (count - 1) * std::int64_t{step.size};
  return end;
}

const Step* RecordWorker::endArray(const Step& step) {
  shift_ += step.size;
  OpenLoop& loop = loops_.back();
  loop.at = static_cast<std::uint64_t>(step.offset + shift_);
  if (++arrays_.back().index < loop.count) return plan_.steps().data() + step.target;
  shift_ = step.moves ? shift_ - std::int64_t{step.max} * step.size : loop.shiftBefore;
  arrays_.pop_back();
  loops_.pop_back();
  if (const unsigned short* const name = plan_.name(step); name != nullptr) handler_->endElement(name, kNoInfo);
  return &step + 1;
}

// To be called when the record has been walked. Its length is then known, and may differ from what the input says.
void RecordWorker::checkLength() {
  const bool isFramed = reader_.isFramed();
  const auto size = static_cast<std::uint64_t>(kind_->maxSize + shift_);
  if (isLost_) {
    if (isFramed) return;
    reader_.fail("its length hangs on a count that cannot be read, so the next record cannot be found");
  }
  if (size > record_.size && !isFramed) reader_.refuseShort(size);
  const std::uint64_t given = record_.size - record_.padding;
  if (size < given && isFramed && !settings_.allowExtra)
    report(fault(kNoItem, size, record_.size,
                 {.code = FaultCode::recordLonger,
                  .numbers = {static_cast<std::int64_t>(given), static_cast<std::int64_t>(given - size)}}));
}

}  // namespace oxr::rec
