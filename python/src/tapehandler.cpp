#include "tapehandler.hpp"

#include <algorithm>

#include "narrow.hpp"
#include "records/rawbytes.hpp"

namespace oxr::python {

void putValue(Tape& tape, std::uint32_t name, const PWFData& value, bool isDate) {
  if (value.isNull() || value.isNothing()) {
    tape.put(name, Token::null);
    return;
  }
  switch (value.getDataLogicalType()) {
    case STRING: {
      const UnitView text = trimmed(value.getPWFStringValue().view());
      if (!isDate) return tape.putText(name, text);
      narrow(text, tape.put(name, Token::date, text.size()));
      return;
    }
    case DECIMAL:
      return tape.putDecimal(name, {value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())});
    case INTEGER:
      return tape.putInteger(name, value.getInt64Value());
    case FLOAT:
      return tape.putReal(name, value.getDoubleValue());
    default:
      throw FIHandlerException();
  }
}

bool TapeHandler::isObserver() const {
  return std::any_of(plan_.forms().begin(), plan_.forms().end(), [](const auto& form) { return !form.date.empty(); });
}

std::uint32_t TapeHandler::placeOf(const unsigned short* name) const {
  return static_cast<std::uint32_t>(name == rec::kRawName ? plan_.names().size() : name - names_);
}

void TapeHandler::open(std::uint32_t name, Token begin, Token end) {
  if (!open_.empty()) ++open_.back().count;
  open_.push_back({tape_.size(), 0, end});
  tape_.put(name, begin);
}

void TapeHandler::close() {
  tape_.setSize(open_.back().at, open_.back().count);
  tape_.put(0, open_.back().end);
  open_.pop_back();
}

void TapeHandler::startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) {
  begin_ = tape_.size();
  offset_ = worker_.offsetInInput();
  open_.clear();
  isInField_ = false;
  open(0, Token::beginGroup, Token::endGroup);
}

void TapeHandler::endMessage(const WorkerInfoPtr&) {
  close();
}

void TapeHandler::startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr&, int, int) {
  const std::uint32_t place = placeOf(name);
  if (type == rec::kGroupElement) return open(place, Token::beginGroup, Token::endGroup);
  if (type == rec::kArrayElement) return open(place, Token::beginArray, Token::endArray);
  name_ = place;
  isInField_ = true;
  hasData_ = isDate_ = false;
  ++open_.back().count;
}

void TapeHandler::endElement(const unsigned short*, const WorkerInfoPtr&) {
  if (!isInField_) return close();
  if (!hasData_) tape_.put(name_, Token::null);
  isInField_ = false;
}

void TapeHandler::data(const PWFData& value, const WorkerInfoPtr&, int, int) {
  hasData_ = true;
  putValue(tape_, name_, value, isDate_);
}

void TapeHandler::seen(const rec::FieldSeen& field) {
  isDate_ = !plan_.forms()[field.step.form].date.empty();
}

}  // namespace oxr::python
