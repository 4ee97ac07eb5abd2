#include "records/json/json.hpp"

#include <cmath>
#include <cstdint>

namespace oxr::rec {

namespace {

UnitView withoutTrailingBlanks(UnitView text) {
  std::size_t size = text.size();
  while (size != 0 && text[size - 1] == ' ')
    --size;
  return text.substr(0, size);
}

}  // namespace

JsonHandler::JsonHandler(const std::vector<unsigned short>& names, const Options& options)
    : names_(names.data()), keyCount_(names.size()), keyAt_(names.size()), options_(options) {
  for (std::size_t at = 0; at < names.size();) {
    const UnitView name(names_ + at);
    keyAt_[at] = &keys_.emplace_back(name);
    at += name.size() + 1;
  }
  open_.reserve(64);
}

void JsonHandler::startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) {
  lineStart_ = out_.GetSize();
  isInRecord_ = true;
  open_.clear();
  isInField_ = false;
  line_.Reset(out_);
  line_.StartObject();
}

void JsonHandler::endMessage(const WorkerInfoPtr&) {
  if (isInField_ || !open_.empty()) throw FIHandlerException();
  line_.EndObject();
  out_.Put('\n');
  isInRecord_ = false;
}

const JsonKey& JsonHandler::foreignKey(const unsigned short* name) {
  return foreignKey_ = JsonKey(name == nullptr ? UnitView() : UnitView(name));
}

void JsonHandler::startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr&, int index, int) {
  if (isInField_) throw FIHandlerException();
  if (type != kFieldElement) return startContainer(name, type, index);
  isInField_ = true;
  hasData_ = false;
  if (index < 0)
    line_.beginMember(keyFor(name));
  else
    line_.beginElement();
}

void JsonHandler::startContainer(const unsigned short* name, unsigned short type, int index) {
  if (index < 0) line_.beginContainer(keyFor(name));
  if (type == kGroupElement)
    line_.StartObject();
  else if (type == kArrayElement)
    line_.StartArray();
  else
    throw FIHandlerException();
  open_.push_back(type);
}

void JsonHandler::data(const PWFData& value, const WorkerInfoPtr&, int, int) {
  if (!isInField_ || hasData_) throw FIHandlerException();
  hasData_ = true;
  if (value.isNull() || value.isNothing()) {
    line_.null();
    return;
  }
  switch (value.getDataLogicalType()) {
    case STRING:
      return line_.text(withoutTrailingBlanks(value.getPWFStringValue().view()));
    case DECIMAL:
      return line_.decimal({value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())},
                           options_.pointsAsText);
    case INTEGER:
      return line_.integer(value.getInt64Value());
    case FLOAT:
      if (!std::isfinite(value.getDoubleValue())) throw FIHandlerException();
      return line_.real(value.getDoubleValue());
    default:
      throw FIHandlerException();
  }
}

void JsonHandler::endElement(const unsigned short*, const WorkerInfoPtr&) {
  if (!isInField_) return endContainer();
  if (!hasData_) line_.null();
  isInField_ = false;
}

void JsonHandler::endContainer() {
  if (open_.empty()) throw FIHandlerException();
  if (open_.back() == kGroupElement)
    line_.EndObject();
  else
    line_.EndArray();
  open_.pop_back();
}

void JsonHandler::discard() {
  out_.Pop(out_.GetSize() - lineStart_);
  isInRecord_ = false;
}

void JsonHandler::clear() {
  out_.Clear();
  lineStart_ = 0;
}

}  // namespace oxr::rec
