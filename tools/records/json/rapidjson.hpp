#pragma once

// RapidJSON's writer. All code that uses RapidJSON includes this header before any of the library's own.
//
// Its stacks ask whether there is room by adding to their pointer, which is null at first. clang's sanitizer calls that
// undefined; the functions that do it carry this macro.
#if defined(__has_feature)
#if __has_feature(undefined_behavior_sanitizer)
#define RAPIDJSON_FORCEINLINE __attribute__((no_sanitize("pointer-overflow")))
#endif
#endif

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace oxr::rec {

// RapidJSON does not look at memory that it did not get. Here std::bad_alloc is thrown, and what was there stays.
class CheckedMemory {
 public:
  static constexpr bool kNeedFree = true;
  void* Malloc(std::size_t size) { return size != 0 ? Realloc(nullptr, 0, size) : nullptr; }
  void* Realloc(void* memory, std::size_t, std::size_t size) {
    if (size == 0) {
      Free(memory);
      return nullptr;
    }
    void* const larger = std::realloc(memory, size);
    if (larger == nullptr) throw std::bad_alloc();
    return larger;
  }
  static void Free(void* memory) { std::free(memory); }
};

using JsonBuffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, CheckedMemory>;
template <class SourceEncoding>
using JsonWriter = rapidjson::Writer<JsonBuffer, SourceEncoding, rapidjson::UTF8<>, CheckedMemory>;

}  // namespace oxr::rec
