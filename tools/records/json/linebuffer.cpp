#include "records/json/linebuffer.hpp"

#include <algorithm>
#include <new>

namespace oxr::rec {

void LineBuffer::grow(std::size_t count) {
  constexpr std::size_t kLeast = 4096;
  const std::size_t used = size();
  const std::size_t capacity = std::max({used + count, used + used / 2, kLeast});
  char* const larger = static_cast<char*>(std::realloc(memory_.get(), capacity));
  if (larger == nullptr) throw std::bad_alloc();
  static_cast<void>(memory_.release());  // realloc has freed it
  memory_.reset(larger);
  end_ = larger + used;
  limit_ = larger + capacity;
}

}  // namespace oxr::rec
