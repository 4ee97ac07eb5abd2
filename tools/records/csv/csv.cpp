#include "records/csv/csv.hpp"

#include <algorithm>
#include <cmath>

#include "kelwstringconvertor.hpp"

// The values of a record are written one after the other into a buffer, with their places by column, and put in the
// order of the columns at its end: kinds of record that share columns need not have them in the same order.

namespace oxr::rec {

std::string csvQuoted(std::string_view value) {
  if (value.find_first_of("\",\r\n") == std::string_view::npos) return std::string(value);
  std::string quoted = "\"";
  for (const char c : value)
    quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

CsvHandler::CsvHandler(const RecordPlan& plan) : columns_(plan), cells_(columns_.count()) {}

std::string CsvHandler::header() const {
  std::string row;
  for (const std::string& name : columns_.names())
    row += (row.empty() ? "" : ",") + csvQuoted(name);
  return row + '\n';
}

void CsvHandler::startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) {
  lineStart_ = lines_.size();
  isInRecord_ = true;
  std::fill(cells_.begin(), cells_.end(), Cell{});
  values_.buffer().cutTo(0);
  walk_.begin();
}

void CsvHandler::endMessage(const WorkerInfoPtr&) {
  if (walk_.isInElement()) throw FIHandlerException();
  const char* const values = values_.buffer().text().data();
  for (const Cell& cell : cells_) {
    lines_.append(values + cell.begin, cell.end - cell.begin);
    lines_ += ',';
  }
  // A row without a column is an empty line.
  if (cells_.empty()) lines_ += ',';
  lines_.back() = '\n';
  isInRecord_ = false;
}

void CsvHandler::startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr&, int index, int) {
  walk_.enter(name, type, index);
}

void CsvHandler::endElement(const unsigned short*, const WorkerInfoPtr&) {
  walk_.leave();
}

void CsvHandler::data(const PWFData& value, const WorkerInfoPtr&, int, int) {
  if (value.isNull() || value.isNothing() || !walk_.hasColumn()) return;
  if (walk_.node().type != kFieldElement) throw FIHandlerException();
  Cell& cell = cells_.at(walk_.column());
  cell.begin = values_.buffer().size();
  if (value.getDataLogicalType() == STRING) {
    const UnitView text = value.getPWFStringValue().view();
    std::size_t size = text.size();
    while (size != 0 && text[size - 1] == ' ')
      --size;
    const std::string quoted = size == 0 ? "\"\"" : csvQuoted(toUtf8(text.substr(0, size)));
    values_.buffer().endAt(std::copy(quoted.begin(), quoted.end(), values_.buffer().room(quoted.size())));
  } else {
    number(value);
  }
  cell.end = values_.buffer().size();
}

void CsvHandler::number(const PWFData& value) {
  switch (value.getDataLogicalType()) {
    case DECIMAL:
      return values_.decimal({value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())}, false);
    case INTEGER:
      return values_.integer(value.getInt64Value());
    case FLOAT:
      if (!std::isfinite(value.getDoubleValue())) throw FIHandlerException();
      return values_.real(value.getDoubleValue());
    default:
      throw FIHandlerException();
  }
}

void CsvHandler::discard() {
  lines_.resize(lineStart_);
  isInRecord_ = false;
}

void CsvHandler::discardUnfinished() {
  if (isInRecord_) discard();
}

void CsvHandler::clear() {
  lines_.clear();
  lineStart_ = 0;
}

}  // namespace oxr::rec
