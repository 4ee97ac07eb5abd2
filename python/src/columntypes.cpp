#include "columntypes.hpp"

#include <algorithm>
#include <optional>

#include "digits.hpp"
#include "records/fields/datepattern.hpp"
#include "records/program/reading.hpp"

// The steps of each kind are walked like CsvColumns walks them, so that a field comes to the node that it made.

namespace oxr::python {

namespace {

using rec::Kind;
using rec::Op;

ColumnShape dateShape(const std::string& pattern) {
  const std::string iso = rec::readDatePattern(pattern).iso;
  ColumnShape shape{ColumnType::object, 0, true};
  if (iso == "yyyy-MM-dd") shape.type = ColumnType::days;
  if (iso.starts_with("yyyy-MM-dd'T'") && !iso.ends_with("ZZZ")) shape.type = ColumnType::instants;
  return shape;
}

// Whether 64 bits with a sign hold the item's whole numbers. A native binary one has all that its bytes hold: 8 of them
// as many as these bits, or twice as many without a sign.
bool fitsInteger(const rec::Item& item) {
  const int digits = item.digits - item.scale;  // with the zeros that a P in its picture stands for
  if (item.kind == Kind::nativeBinary && item.size == 8) return item.isSigned && digits <= kDigitsOfInteger + 1;
  return digits <= kDigitsOfInteger;
}

ColumnShape numberShape(const rec::Item& item, DecimalForm form) {
  if (item.scale > 0) {
    if (form == DecimalForm::exact) return {};
    return {form == DecimalForm::real ? ColumnType::decimal : ColumnType::scaled, item.scale};
  }
  return {fitsInteger(item) ? ColumnType::integer : ColumnType::object};
}

ColumnShape shapeOf(const rec::RecordPlan& plan, const rec::Step& step, DecimalForm form) {
  const std::string& date = plan.forms()[step.form].date;
  if (!date.empty()) return dateShape(date);
  switch (step.kind) {
    case Kind::external:
    case Kind::packed:
    case Kind::unsignedPacked:
    case Kind::binary:
    case Kind::nativeBinary:
      return numberShape(rec::layoutOf(plan, step).items[step.item], form);
    case Kind::shortFloat:
    case Kind::longFloat:
      return {ColumnType::real};
    default:
      return {};
  }
}

ColumnShape merged(const ColumnShape& one, const ColumnShape& other) {
  if (one.type != other.type || one.isDate != other.isDate) return {};
  return {one.type, std::max(one.scale, other.scale), one.isDate};
}

}  // namespace

std::vector<ColumnShape> columnShapes(const rec::CsvColumns& columns, const rec::RecordPlan& plan, DecimalForm form) {
  std::vector<std::optional<ColumnShape>> found(columns.nodes().size());
  std::vector<std::uint32_t> open{0};
  for (const rec::Step& step : plan.steps()) {
    if (step.op == Op::endGroup || step.op == Op::endArray) {
      if (step.name != rec::Step::kNoName) open.pop_back();
      continue;
    }
    if (step.name == rec::Step::kNoName) continue;
    const unsigned short type = step.op == Op::field        ? rec::kFieldElement
                                : step.op == Op::beginGroup ? rec::kGroupElement
                                                            : rec::kArrayElement;
    for (const std::uint32_t child : columns.nodes()[open.back()].children) {
      if (columns.nodes()[child].name != plan.name(step) || columns.nodes()[child].type != type) continue;
      if (type != rec::kFieldElement) {
        open.push_back(child);
      } else {
        const ColumnShape shape = shapeOf(plan, step, form);
        found[child] = found[child] ? merged(*found[child], shape) : shape;
      }
      break;
    }
  }
  std::vector<ColumnShape> shapes;
  shapes.reserve(found.size());
  for (const auto& shape : found)
    shapes.push_back(shape.value_or(ColumnShape{}));
  return shapes;
}

}  // namespace oxr::python
