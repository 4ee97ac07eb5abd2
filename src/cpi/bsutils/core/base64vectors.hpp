#pragma once

#include <array>
#include <cstddef>

// The vector loops of Base64: as many whole blocks as there are, in the widest vectors of the processor that the
// program finds itself on. They may do nothing; what they leave is the caller's to do.
namespace oxr::core {

// The loops for one kind of vectors.
struct Base64Loops {
  // Encodes blocks of `data` to `out` (4 units for 3 bytes). The bytes taken: a multiple of 3, at most `size`.
  std::size_t (*encode)(const unsigned char* data, std::size_t size, unsigned short* out);
  // Decodes blocks up to the first that holds anything but letters, digits, "+" and "/", or that `room`, in bytes, is
  // too short for. The units taken: a multiple of 4, at most `length`; each 4 wrote 3 bytes.
  std::size_t (*decode)(const unsigned short* text, std::size_t length, unsigned char* out, std::size_t room);
};

// Those that the processor can run, the widest vectors first, and the ones in use.
struct Base64Vectors {
  std::array<Base64Loops, 5> kinds{};
  std::size_t count = 0;
  std::size_t used = 0;

  void add(const Base64Loops& loops) { kinds[count++] = loops; }
  const Base64Loops& loops() const { return kinds[used]; }
};

// The one of this process. Only a test changes what is used.
Base64Vectors& base64Vectors();

}  // namespace oxr::core
