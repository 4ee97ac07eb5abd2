#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace oxr::test {

// The header with `tag` as it lies in `size` bytes of memory: "tag start end", with the marker before it where it is
// not
// ">OXR"; "none" where there is none. Finds a dead one too.
inline std::string headerIn(const void* memory, std::size_t size, const char* tag) {
  const auto* const bytes = static_cast<const char*>(memory);
  for (std::size_t at = 0; at + 16 <= size; at += 4) {
    if (std::memcmp(bytes + at + 1, "OXR", 3) != 0 || std::memcmp(bytes + at + 4, tag, 4) != 0) continue;
    unsigned words[2];
    std::memcpy(words, bytes + at + 8, sizeof words);
    const std::string marker = bytes[at] == '>' ? "" : std::string(bytes + at, 4) + ' ';
    return marker + tag + ' ' + std::to_string(words[0]) + ' ' + std::to_string(words[1]);
  }
  return "none";
}

// The header of a living T made with `arguments`, and after " / " the same one once T is gone.
template <class T, class... Arguments>
std::string headerOfA(const char* tag, const Arguments&... arguments) {
  alignas(T) unsigned char memory[sizeof(T)] = {};
  T* const object = new (memory) T(arguments...);
  std::string text = headerIn(memory, sizeof memory, tag);
  std::destroy_at(object);
  return text + " / " + headerIn(memory, sizeof memory, tag);
}

}  // namespace oxr::test
