#include "columnhandler.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>

#include "digits.hpp"
#include "kelwstringconvertor.hpp"
#include "tapehandler.hpp"

namespace oxr::python {

namespace {

// Doubles hold these exactly, and all whole numbers up to the bound: a quotient of two of them is as near to the
// decimal as a double can be.
constexpr std::array<double, 23> kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                            1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::int64_t kExactInDoubles = std::int64_t{1} << 53;

// A decimal as a whole number of units of the place `scale`; nothing if it has more digits than 64 bits take, or more
// places.
std::optional<std::int64_t> scaledBy(UnitView text, int scale) {
  std::int64_t value = 0;
  int digits = 0;
  int places = -1;
  const bool isNegative = !text.empty() && text[0] == '-';
  for (const unsigned short unit : text.substr(isNegative ? 1 : 0)) {
    if (unit == '.' && places < 0) {
      places = 0;
      continue;
    }
    if (!isDigit(unit)) return std::nullopt;
    if (places >= 0) ++places;
    if (digits != 0 || unit != '0') ++digits;
    if (digits > kDigitsOfInteger) return std::nullopt;
    value = 10 * value + (unit - '0');
  }
  for (places = std::max(places, 0); places < scale; ++places) {
    if (value != 0 && ++digits > kDigitsOfInteger) return std::nullopt;
    value *= 10;
  }
  if (places > scale) return std::nullopt;
  return isNegative ? -value : value;
}

UnitView decimalIn(const PWFData& value) {
  return {value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())};
}

double nearest(UnitView decimal, int scale) {
  const std::optional<std::int64_t> units = scaledBy(decimal, scale);
  if (units && *units > -kExactInDoubles && *units < kExactInDoubles && scale < static_cast<int>(kPowers.size()))
    return static_cast<double>(*units) / kPowers[static_cast<std::size_t>(scale)];
  const std::string text = toUtf8(decimal);
  double value = std::nan("");
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// The number that the digits from `at` on are.
int digitsAt(UnitView text, std::size_t at, std::size_t count) {
  int value = 0;
  for (const unsigned short unit : text.substr(at, count))
    value = 10 * value + (unit - '0');
  return value;
}

// "2026-11-22", of years with four digits.
bool isDay(UnitView text) {
  constexpr std::size_t kSize = 10;
  if (text.size() < kSize || text[4] != '-' || text[7] != '-') return false;
  for (const std::size_t at : {0U, 1U, 2U, 3U, 5U, 6U, 8U, 9U})
    if (!isDigit(text[at])) return false;
  return true;
}

std::int64_t dayIn(UnitView text) {
  const std::chrono::year_month_day day{std::chrono::year(digitsAt(text, 0, 4)),
                                        std::chrono::month(static_cast<unsigned>(digitsAt(text, 5, 2))),
                                        std::chrono::day(static_cast<unsigned>(digitsAt(text, 8, 2)))};
  return std::chrono::sys_days(day).time_since_epoch().count();
}

// Of "2026-11-22T12:34:56.789": microseconds since the day began.
std::int64_t microsecondsIn(UnitView text) {
  const std::int64_t seconds =
      (digitsAt(text, 11, 2) * std::int64_t{60} + digitsAt(text, 14, 2)) * 60 + digitsAt(text, 17, 2);
  std::int64_t fraction = 0;
  for (std::size_t place = 0; place < 6; ++place)
    fraction = 10 * fraction + (20 + place < text.size() ? text[20 + place] - '0' : 0);
  return seconds * 1'000'000 + fraction;
}

}  // namespace

ColumnHandler::ColumnHandler(const rec::RecordPlan& plan, DecimalForm form) : table_(plan), columns_(table_.count()) {
  const std::vector<ColumnShape> shapes = columnShapes(table_, plan, form);
  // Each node has the columns of all occurrences of the arrays around it.
  const auto& nodes = table_.nodes();
  const auto set = [&](const auto& self, std::uint32_t node, std::uint32_t column) -> void {
    if (nodes[node].type == rec::kFieldElement) columns_[column].shape = shapes[node];
    const std::uint32_t times = nodes[node].type == rec::kArrayElement ? nodes[node].max : 1;
    for (std::uint32_t i = 0; i < times; ++i)
      for (const std::uint32_t child : nodes[node].children)
        self(self, child, column + i * nodes[child].width + nodes[child].column);
  };
  set(set, 0, 0);
}

void ColumnHandler::clear() {
  clearObjects();
  rows_ = 0;
}

void ColumnHandler::clearObjects() {
  for (Column& column : columns_)
    column.objects.resize(0);
  rowOf_.clear();
}

void ColumnHandler::discard() {
  rowOf_.back() = kNoRow;
  --rows_;
  prepare(rows_, rows_ + 1);
}

void ColumnHandler::prepare(std::uint32_t from, std::uint32_t to) {
  if (to <= from) return;
  const std::size_t count = to - from;
  for (Column& column : columns_) {
    if (column.isMissing != nullptr) std::fill_n(column.isMissing + from, count, 1);
    if (column.reals != nullptr) std::fill_n(column.reals + from, count, std::nan(""));
    if (column.numbers != nullptr)
      std::fill_n(column.numbers + from, count, column.isMissing == nullptr ? kNoInstant : 0);
  }
}

void ColumnHandler::startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) {
  rowOf_.push_back(rows_);
  walk_.begin();
}

void ColumnHandler::data(const PWFData& value, const WorkerInfoPtr&, int, int) {
  if (value.isNull() || value.isNothing() || !walk_.hasColumn()) return;
  put(columns_[walk_.column()], value);
}

void ColumnHandler::put(Column& column, const PWFData& value) {
  switch (column.shape.type) {
    case ColumnType::integer:
      if (value.getDataLogicalType() == INTEGER) return putInteger(column, value.getInt64Value());
      return putDecimal(column, value);
    case ColumnType::scaled:
      return putDecimal(column, value);
    case ColumnType::decimal:
      column.reals[rows_] = nearest(decimalIn(value), column.shape.scale);
      return;
    case ColumnType::real:
      column.reals[rows_] = value.getDoubleValue();
      return;
    case ColumnType::days:
    case ColumnType::instants:
      if (putMoment(column, value.getPWFStringValue().view())) return;
      break;
    case ColumnType::object:
      break;
  }
  putValue(column.objects, static_cast<std::uint32_t>(rowOf_.size() - 1), value, column.shape.isDate);
}

void ColumnHandler::putInteger(Column& column, std::int64_t value) {
  column.numbers[rows_] = value;
  column.isMissing[rows_] = 0;
}

void ColumnHandler::putDecimal(Column& column, const PWFData& value) {
  if (const auto units = scaledBy(decimalIn(value), column.shape.scale)) return putInteger(column, *units);
  putValue(column.objects, static_cast<std::uint32_t>(rowOf_.size() - 1), value, false);
}

bool ColumnHandler::putMoment(Column& column, UnitView text) {
  constexpr std::int64_t kMicrosecondsOfDay = 86'400'000'000;
  if (!isDay(text)) return false;
  column.numbers[rows_] =
      column.shape.type == ColumnType::days ? dayIn(text) : dayIn(text) * kMicrosecondsOfDay + microsecondsIn(text);
  return true;
}

}  // namespace oxr::python
