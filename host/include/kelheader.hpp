#pragma once

#include <cstdint>

// Four words at the head of an object, by which a person finds it and tells its class in a memory dump. No logic reads
// them.
//
// A destroyed header shows "0OXR", so a dead object is recognisable. A class that derives from one with a header adds a
// header of its own.
struct objectHeader {
  // `classTag` names the class with four characters; `startOffset` and `endOffset` tell where the class's own fields
  // lie. The offsets are the numbers that dump readers know for the class, whatever the size of the class in this
  // build.
  constexpr objectHeader(const char (&classTag)[5], std::uint32_t startOffset, std::uint32_t endOffset)
      : tag{classTag[0], classTag[1], classTag[2], classTag[3]}, start(startOffset), end(endOffset) {}
  constexpr objectHeader(const objectHeader&) = default;
  objectHeader& operator=(const objectHeader&) = default;

  // Through a volatile pointer: the object ends here, and the compiler would drop an ordinary store.
  ~objectHeader() { *static_cast<volatile char*>(marker) = '0'; }

  char marker[4] = {'>', 'O', 'X', 'R'};  // "0OXR" once the object is gone
  char tag[4];                            // of the class; not terminated
  std::uint32_t start;                    // bytes from the start of the class
  std::uint32_t end;                      // bytes; the size of the object as this class sees it
};
static_assert(sizeof(objectHeader) == 16);
