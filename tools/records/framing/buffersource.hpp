#pragma once

#include <cstdint>
#include <optional>

#include "bytebffr.hpp"

namespace oxr::rec {

struct InputStart;

// What comes before the first byte that a source gives. Messages count from the file's start.
struct Origin {
  std::uint64_t bytes = 0;
  std::uint64_t records = 0;
};

// The rest of an input that is longer than one buffer.
class BufferSource {
 public:
  virtual ~BufferSource() = default;
  // A buffer that begins `consumed` bytes after the start of the last one and holds at least `wanted` bytes, or all
  // that is left of the input. The last one, with all pointers into it, is gone. Throws ToolError if reading fails.
  virtual const BitstreamBuffer* slide(int consumed, int wanted) = 0;
  virtual Origin origin() const { return {}; }
  // The start of the file, for hints, where this is a part of it; else null, and the reader keeps its own.
  virtual const InputStart* start() const { return nullptr; }
  // Bytes of all that slide() gives; nothing for a pipe, whose end is not known.
  virtual std::optional<std::uint64_t> totalSize() const { return std::nullopt; }
};

}  // namespace oxr::rec
