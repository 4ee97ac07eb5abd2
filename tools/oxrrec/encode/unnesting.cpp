#include "oxrrec/encode/unnesting.hpp"

#include <algorithm>

#include "kelwstringconvertor.hpp"
#include "oxrrec/nesting.hpp"

// The arrays of children are hidden from whoever walks the tree, and their elements become its root, one by one.

namespace oxr::rec {

namespace {

std::string inCapitals(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
  return text;
}

}  // namespace

Unnesting::Unnesting(const std::vector<std::string>& pairs, const RecordPlan& plan) {
  const Nesting known(pairs, plan);  // refuses pairs that are none
  children_.reserve(pairs.size());
  for (const std::string& pair : pairs)
    children_.push_back(inCapitals(pair.substr(0, pair.find(':'))));
}

Unnesting::Left Unnesting::writeAll(JsonTree& tree, bool goesOn, const Write& write) const {
  Line line{tree, goesOn, write, {}};
  writeRecord(line, tree.root(), {});
  return line.left;
}

// False if the work ends here.
bool Unnesting::writeRecord(Line& line, std::uint32_t node, const std::string& path) const {
  const JsonTree& tree = line.tree;
  const std::vector<std::uint32_t> arrays = takeChildren(line.tree, node);
  line.tree.setRoot(node);
  if (const Written written = line.write(tree, path); written != Written::isGood) {
    for (const std::uint32_t array : arrays)
      (written == Written::isBad ? line.left.withBad : line.left.withUnknown) += childrenBelow(tree, array);
    return written == Written::isUnknown || line.goesOn;
  }
  for (const std::uint32_t array : arrays) {
    const std::string name = (path.empty() ? "" : path + '.') + toUtf8(tree.nameOf(array)) + '(';
    std::uint32_t number = 0;
    for (std::uint32_t at = array + 1; at < tree.node(array).end; at = tree.node(at).end)
      if (!writeRecord(line, at, name + std::to_string(++number) + ')')) return false;
  }
  return true;
}

std::vector<std::uint32_t> Unnesting::takeChildren(JsonTree& tree, std::uint32_t node) const {
  std::vector<std::uint32_t> arrays;
  for (std::uint32_t at = node + 1; at < tree.node(node).end; at = tree.node(at).end) {
    if (!isChildren(tree, at)) continue;
    tree.hide(at);
    arrays.push_back(at);
  }
  return arrays;
}

// The records in an array, and those in their own arrays.
std::uint64_t Unnesting::childrenBelow(const JsonTree& tree, std::uint32_t array) const {
  std::uint64_t count = 0;
  for (std::uint32_t at = array; at < tree.node(array).end; ++at) {
    if (!isChildren(tree, at)) continue;
    for (std::uint32_t child = at + 1; child < tree.node(at).end; child = tree.node(child).end)
      ++count;
  }
  return count;
}

bool Unnesting::isChildren(const JsonTree& tree, std::uint32_t node) const {
  if (tree.node(node).kind != JsonNode::Kind::array) return false;
  const std::string name = inCapitals(toUtf8(tree.nameOf(node)));
  return std::find(children_.begin(), children_.end(), name) != children_.end();
}

}  // namespace oxr::rec
