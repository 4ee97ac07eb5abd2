#pragma once

#include <algorithm>
#include <string>

#include "fuzz/harness/choices.hpp"
#include "growingbytebuffer.hpp"

namespace oxr::fuzz {

// Any changes, some with the buffer's own bytes, beside a string that undergoes the same.
inline void checkGrowingByteBuffer(Choices& choices) {
  GrowingByteBuffer buffer(choices.between(-1, 200));
  std::string model;
  for (int step = 0; step < 60 && !choices.isEmpty(); ++step) {
    const std::size_t count = choices.upTo(80), at = choices.upTo(model.size()), beyond = at + choices.upTo(200);
    const int length = static_cast<int>(count);
    const bool own = choices.upTo(2) == 0 && count <= model.size();
    const std::string given = own ? model.substr(0, count) : std::string(count, choices.any<char>());
    const char* const bytes = own ? buffer.getData(0) : given.data();
    switch (choices.upTo(4)) {
      case 0:
        buffer.appendBytes(bytes, length);
        model += given;
        break;
      case 1:
        buffer.insertBytesAt(bytes, length, static_cast<int>(at));
        model.insert(at, given);
        break;
      case 2:
        buffer.writeBytesAt(bytes, length, static_cast<int>(beyond));
        model.resize(std::max(model.size(), beyond + count));
        model.replace(beyond, count, given);
        break;
      case 3:
        buffer.setLength(static_cast<int>(beyond));
        model.resize(beyond);
        break;
      default:
        std::copy_n(given.data(), count, buffer.reserveForAppend(length + 5));
        buffer.commitAppend(length);
        model += given;
    }
    require(buffer.bytes() == model, "the bytes of a growing buffer");
  }
}

}  // namespace oxr::fuzz
