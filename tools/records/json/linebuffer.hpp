#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace oxr::rec {

// Text that grows at its end, written in place: room is asked for once for a whole value, and what was not needed is
// given back by telling where the value ends. What it shows stays until it grows.
//
//   char* const to = buffer.room(20);
//   buffer.endAt(std::to_chars(to, to + 20, value).ptr);
class LineBuffer {
 public:
  // Where the next `count` bytes go. Throws std::bad_alloc, and what was there stays.
  char* room(std::size_t count) {
    if (count > static_cast<std::size_t>(limit_ - end_)) [[unlikely]]
      grow(count);
    return end_;
  }
  // The text ends there, within the room that was given last.
  void endAt(char* end) { end_ = end; }
  void put(char character) {
    *room(1) = character;
    ++end_;
  }

  std::size_t size() const { return static_cast<std::size_t>(end_ - memory_.get()); }
  std::string_view text() const { return {memory_.get(), size()}; }
  // REQUIRES: it is not empty.
  char last() const { return end_[-1]; }
  // REQUIRES: it has that size or more.
  void cutTo(std::size_t size) { end_ = memory_.get() + size; }

 private:
  struct Free {
    void operator()(char* memory) const { std::free(memory); }
  };

  [[gnu::noinline]] void grow(std::size_t count);

  std::unique_ptr<char, Free> memory_;
  char* end_ = nullptr;
  char* limit_ = nullptr;  // of the memory
};

}  // namespace oxr::rec
