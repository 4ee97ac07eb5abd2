#include "records/treecursor.hpp"

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

const unsigned short* TreeCursor::strayName() {
  Level& level = levels_.back();
  if (level.isInOrder) {
    const bool isAhead = level.isOnMember && !level.isTaken;
    return isAhead || step() ? place_.getTagName() : nullptr;
  }
  for (std::size_t at = level.marks; at < taken_.size(); ++at) {
    if (taken_[at]) continue;
    goTo(static_cast<std::uint32_t>(at - level.marks));
    return place_.getTagName();
  }
  return nullptr;
}

}  // namespace oxr::rec
