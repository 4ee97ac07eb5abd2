#include "textcache.hpp"

#include <cstring>
#include <functional>
#include <string_view>

#include "values.hpp"

namespace py = pybind11;

namespace oxr::python {

py::object TextCache::get(const Head& head, const char* bytes) {
  constexpr std::uint32_t kTried = 4096;
  const auto made = [&] { return py::reinterpret_steal<py::object>(newScalar(head, bytes)); };
  if (head.size > kLongest || (head.token != Token::ascii && head.token != Token::decimal)) return made();
  if (misses_ >= kTried && hits_ < misses_) return made();
  if (slots_.empty()) slots_.resize(most_);
  const std::size_t hash = std::hash<std::string_view>()({bytes, head.size});
  Slot& slot = slots_[hash & (most_ - 1)];
  if (slot.text && slot.size == head.size && std::memcmp(slot.bytes, bytes, head.size) == 0) {
    ++hits_;
    return slot.text;
  }
  ++misses_;
  slot.size = head.size;
  std::memcpy(slot.bytes, bytes, head.size);
  return slot.text = made();
}

}  // namespace oxr::python
