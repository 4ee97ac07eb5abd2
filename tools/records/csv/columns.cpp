#include "records/csv/columns.hpp"

#include <algorithm>

#include "kelwstringconvertor.hpp"
#include "records/recordhandler.hpp"

// A walk over the steps of a kind opens and closes nodes as a walk over a record opens and closes elements; a node that
// another kind brought is entered again. Widths are then added from the leaves up.

namespace oxr::rec {

namespace {

unsigned short typeOf(Op op) {
  if (op == Op::beginGroup) return kGroupElement;
  return op == Op::beginArray ? kArrayElement : kFieldElement;
}

}  // namespace

CsvColumns::CsvColumns(const RecordPlan& plan) : nodes_(1) {
  nodes_.front().type = kGroupElement;
  addKind(plan, 0, static_cast<std::uint32_t>(plan.steps().size()));
  if (setWidths(0) > kMaxColumns)
    throw PlanError(plan.layout().fileName + ": a table of its records would have more than " +
                    std::to_string(kMaxColumns) + " columns; JSON has arrays");
}

void CsvColumns::addKind(const RecordPlan& plan, std::uint32_t begin, std::uint32_t end) {
  std::vector<std::uint32_t> open{0};
  for (std::uint32_t i = begin; i < end; ++i) {
    const Step& step = plan.steps()[i];
    if (step.name == Step::kNoName) continue;
    switch (step.op) {
      case Op::field:
        childOf(open.back(), plan.name(step), kFieldElement, 1);
        break;
      case Op::beginGroup:
      case Op::beginArray:
        open.push_back(childOf(open.back(), plan.name(step), typeOf(step.op), step.max));
        break;
      case Op::endGroup:
      case Op::endArray:
        open.pop_back();
        break;
      case Op::choose:
      case Op::jump:
      case Op::keepPlace:
      case Op::restorePlace:
        break;
    }
  }
}

std::uint32_t CsvColumns::childOf(std::uint32_t parent, const unsigned short* name, unsigned short type,
                                  std::uint32_t max) {
  for (const std::uint32_t child : nodes_[parent].children) {
    if (nodes_[child].name != name || nodes_[child].type != type) continue;
    nodes_[child].max = std::max(nodes_[child].max, max);
    return child;
  }
  const auto added = static_cast<std::uint32_t>(nodes_.size());
  nodes_.push_back({name, type, max, 0, 0, {}});
  nodes_[parent].children.push_back(added);
  return added;
}

std::uint64_t CsvColumns::setWidths(std::uint32_t node) {
  if (nodes_[node].type == kFieldElement) return nodes_[node].width = 1;
  std::uint64_t width = 0;
  for (const std::uint32_t child : nodes_[node].children) {
    nodes_[child].column = static_cast<std::uint32_t>(width);
    width += setWidths(child);
  }
  if (nodes_[node].type == kArrayElement) width *= nodes_[node].max;
  width = std::min(width, kMaxColumns + 1);
  return nodes_[node].width = static_cast<std::uint32_t>(width);
}

std::vector<std::string> CsvColumns::names() const {
  std::vector<std::string> names;
  addNames(0, "", names);
  return names;
}

void CsvColumns::addNames(std::uint32_t node, const std::string& path, std::vector<std::string>& names) const {
  const Node& here = nodes_[node];
  if (here.type == kFieldElement) names.push_back(path);
  for (const std::uint32_t child : here.children) {
    if (here.type == kArrayElement) {
      for (std::uint32_t i = 1; i <= here.max; ++i)
        addNames(child, path + '(' + std::to_string(i) + ')', names);
    } else {
      addNames(child, path + (path.empty() ? "" : ".") + toUtf8(UnitView(nodes_[child].name)), names);
    }
  }
}

}  // namespace oxr::rec
