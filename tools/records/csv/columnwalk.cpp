#include "records/csv/columnwalk.hpp"

#include "bitstreamworker.hpp"
#include "records/rawbytes.hpp"
#include "records/recordhandler.hpp"

namespace oxr::rec {

void ColumnWalk::enter(const unsigned short* name, unsigned short type, int index) {
  if (name == kRawName) return open_.push_back({kNoNode, 0, 0});
  Open& around = open_.back();
  const std::uint32_t child = childOf(around, name, type);
  const CsvColumns::Node& node = columns_.nodes()[child];
  const std::uint32_t occurrence = index < 0 ? 0 : static_cast<std::uint32_t>(index) * node.width;
  open_.push_back({child, around.column + node.column + occurrence, 0});
}

void ColumnWalk::leave() {
  if (!isInElement()) throw FIHandlerException();
  open_.pop_back();
}

std::uint32_t ColumnWalk::childOf(Open& around, const unsigned short* name, unsigned short type) const {
  const auto& nodes = columns_.nodes();
  const std::vector<std::uint32_t>& children = nodes[around.node].children;
  for (std::size_t tried = 0; tried < children.size(); ++tried, ++around.next) {
    if (around.next >= children.size()) around.next = 0;
    const std::uint32_t child = children[around.next];
    // An array whose count is not known comes as a field that is null.
    if (nodes[child].name == name && (nodes[child].type == type || type == kFieldElement)) {
      ++around.next;
      return child;
    }
  }
  throw FIHandlerException();
}

}  // namespace oxr::rec
