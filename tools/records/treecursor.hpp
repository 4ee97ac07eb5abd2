#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fimessagetree.hpp"
#include "kelunits.hpp"
#include "records/treecategory.hpp"

namespace oxr::rec {

// Walks a message tree in the order that somebody asks for, without a search where that is the order of the tree.
//
// The cursor stands in an object, or on one of its members. Names that come from the tree's maker are mostly the very
// pointers that are asked for; others are compared as text.
class TreeCursor {
 public:
  // Stands on the root of a message's content, and not yet in it.
  void begin(const FIMessageTree& tree);

  // Goes to the member of this name. False if the object has none; the cursor then stands where it stood.
  bool find(const unsigned short* name);
  // Goes to the next element of the array.
  bool next();
  // Goes into the member or the element that the cursor stands on, and back to it.
  void enter();
  void leave();

  // A member of the object that was not found: one that nobody asked for, or that the object has a second time.
  struct Stray {
    const unsigned short* name = nullptr;  // null if there is none
    bool isSecond = false;                 // another one of that name was found
  };
  // To be asked last, before leave().
  Stray stray();

  // Whether it stands on an array, not on an object or a value.
  bool isOnArray() const { return place_.getCategory() == TreeCategory::kArray; }
  PWFData value() const { return place_.getData(); }

 private:
  // Where the cursor is in an open object or array.
  struct Level {
    std::uint32_t index = 0;  // of the member that it stands on
    bool isOnMember = false;  // not so right after enter()
    bool isInOrder = true;    // all members before this one were found, one after the other
    bool isTaken = false;     // and this one; counts as long as they are in order
    std::size_t marks = 0;    // where the marks of the members begin, once they are not
  };

  bool step();
  bool isHere(const unsigned short* name) const;
  bool search(const unsigned short* name);
  void mark();
  void goTo(std::uint32_t index);
  bool isStray();
  bool wasFound(const unsigned short* name, std::uint32_t stray);

  std::vector<bool> taken_;  // marks of members that were found, of all open objects that are not in order
  FITreeIterator place_;
  std::vector<Level> levels_;
};

}  // namespace oxr::rec
