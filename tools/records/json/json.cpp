#include "records/json/json.hpp"

#include <cmath>
#include <cstdint>

namespace oxr::rec {

namespace {

inline UnitView withoutTrailingBlanks(UnitView text) {
  while (!text.empty() && text.back() == ' ')
    text.remove_suffix(1);
  return text;
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
  lineStart_ = line_.buffer().size();
  place_ = Place::inRecord;
  open_.clear();
  line_.open('{');
}

void JsonHandler::endMessage(const WorkerInfoPtr&) {
  if (place_ != Place::inRecord || !open_.empty()) throw FIHandlerException();
  line_.close('}');
  line_.buffer().put('\n');
  place_ = Place::outside;
}

const JsonKey& JsonHandler::foreignKey(const unsigned short* name) {
  return foreignKey_ = JsonKey(name == nullptr ? UnitView() : UnitView(name));
}

void JsonHandler::startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr&, int index, int) {
  if (place_ != Place::inRecord) throw FIHandlerException();
  if (type < kGroupElement || type > kArrayElement) throw FIHandlerException();
  begin(name, index);
  if (type == kFieldElement) {
    place_ = Place::inField;
    return;
  }
  line_.open(type == kGroupElement ? '{' : '[');
  open_.push_back(type);
}

inline void JsonHandler::put(const PWFData& value) {
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

void JsonHandler::data(const PWFData& value, const WorkerInfoPtr&, int, int) {
  if (place_ != Place::inField) throw FIHandlerException();
  place_ = Place::afterValue;
  put(value);
}

void JsonHandler::field(const unsigned short* name, const PWFData& value, int index) {
  if (place_ != Place::inRecord) throw FIHandlerException();
  begin(name, index);
  put(value);
}

void JsonHandler::endElement(const unsigned short*, const WorkerInfoPtr&) {
  if (place_ == Place::inRecord) return endContainer();
  if (place_ == Place::outside) throw FIHandlerException();
  if (place_ == Place::inField) line_.null();
  place_ = Place::inRecord;
}

void JsonHandler::endContainer() {
  if (open_.empty()) throw FIHandlerException();
  line_.close(open_.back() == kGroupElement ? '}' : ']');
  open_.pop_back();
}

void JsonHandler::discard() {
  line_.buffer().cutTo(lineStart_);
  place_ = Place::outside;
}

void JsonHandler::clear() {
  line_.buffer().cutTo(0);
  lineStart_ = 0;
}

}  // namespace oxr::rec
