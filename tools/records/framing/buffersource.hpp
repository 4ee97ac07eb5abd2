#pragma once

#include "bytebffr.hpp"

namespace oxr::rec {

// The rest of an input that is longer than one buffer.
class BufferSource {
 public:
  virtual ~BufferSource() = default;
  // A buffer that begins `consumed` bytes after the start of the last one and holds at least `wanted` bytes, or all
  // that is left of the input. The last one, with all pointers into it, is gone. Throws ToolError if reading fails.
  virtual const BitstreamBuffer* slide(int consumed, int wanted) = 0;
};

}  // namespace oxr::rec
