#include "records/treecursor.hpp"

#include <algorithm>

// Members mostly come in the order that they are asked for, so the next one is looked at first. If it is another one,
// the object's members get marks, and all that have none are gone through, from here to the end and from the beginning.

namespace oxr::rec {

void TreeCursor::begin(const FIMessageTree& tree) {
  place_ = tree.getMsgContentIterator();
  levels_.clear();
}

void TreeCursor::enter() {
  levels_.emplace_back();
}

void TreeCursor::leave() {
  const Level& level = levels_.back();
  if (level.isOnMember) place_.moveToParent();
  if (!level.isInOrder) taken_.resize(level.marks);
  levels_.pop_back();
}

// Goes to the next member; false if there is none, and then nothing changes.
bool TreeCursor::step() {
  Level& level = levels_.back();
  if (!(level.isOnMember ? place_.moveToNextSibling() : place_.moveToFirstChild())) return false;
  if (level.isOnMember) ++level.index;
  level.isOnMember = true;
  level.isTaken = false;
  return true;
}

bool TreeCursor::next() {
  if (!step()) return false;
  levels_.back().isTaken = true;
  return true;
}

bool TreeCursor::isHere(const unsigned short* name) const {
  const unsigned short* const here = place_.getTagName();
  return here == name || (here != nullptr && UnitView(here) == UnitView(name));
}

bool TreeCursor::find(const unsigned short* name) {
  Level& level = levels_.back();
  if (!level.isInOrder) return search(name);
  // A member that was passed and not found stands there still.
  const bool isAhead = level.isOnMember && !level.isTaken;
  if (!isAhead && !step()) return false;
  if (isHere(name)) return level.isTaken = true;
  mark();
  return search(name);
}

// Gives each member a mark that tells whether it was found.
void TreeCursor::mark() {
  Level& level = levels_.back();
  const std::uint32_t here = level.index;
  level.isInOrder = false;
  level.marks = taken_.size();
  taken_.resize(level.marks + here, true);
  do
    taken_.push_back(false);
  while (step());
  goTo(here);
}

bool TreeCursor::search(const unsigned short* name) {
  Level& level = levels_.back();
  const std::uint32_t from = level.index;
  do {
    if (!taken_[level.marks + level.index] && isHere(name)) {
      taken_[level.marks + level.index] = true;
      return true;
    }
    if (!step()) goTo(0);
  } while (level.index != from);
  return false;
}

void TreeCursor::goTo(std::uint32_t index) {
  Level& level = levels_.back();
  place_.moveToParent();
  level.isOnMember = false;
  level.index = 0;
  for (std::uint32_t left = index + 1; left != 0; --left)
    step();
}

TreeCursor::Stray TreeCursor::stray() {
  if (!isStray()) return {};
  const unsigned short* const name = place_.getTagName();
  return {name, wasFound(name, levels_.back().index)};
}

// Goes to a member that was not found; false if all were.
bool TreeCursor::isStray() {
  const Level& level = levels_.back();
  if (level.isInOrder) return (level.isOnMember && !level.isTaken) || step();
  const auto stray = std::find(taken_.begin() + static_cast<std::ptrdiff_t>(level.marks), taken_.end(), false);
  if (stray == taken_.end()) return false;
  goTo(static_cast<std::uint32_t>(stray - taken_.begin() - static_cast<std::ptrdiff_t>(level.marks)));
  return true;
}

// Whether a member of this name was found, when the first one that was not is the member `stray`.
bool TreeCursor::wasFound(const unsigned short* name, std::uint32_t stray) {
  Level& level = levels_.back();
  place_.moveToParent();
  level.isOnMember = false;
  level.index = 0;
  while (step()) {
    const bool isFound = level.isInOrder ? level.index < stray : taken_[level.marks + level.index];
    if (isFound && isHere(name)) return true;
  }
  return false;
}

}  // namespace oxr::rec
