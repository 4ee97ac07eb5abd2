#pragma once

#include <array>
#include <cstddef>

#include "core/advance.hpp"

// The loops that gain by wider vectors than every machine has, or by shuffles of bytes: each stands once for each kind
// of vectors, and the widest that the processor has are taken. They may do nothing; what they leave is the caller's.
namespace oxr::core {

// The loops for one kind of vectors.
struct VectorLoops {
  // Encodes blocks of `data` to `out` (4 units for 3 bytes). The bytes taken: a multiple of 3, at most `size`.
  std::size_t (*encodeBase64)(const unsigned char* data, std::size_t size, unsigned short* out);
  // Decodes blocks up to the first that holds anything but letters, digits, "+" and "/", or that `room`, in bytes, is
  // too short for. The units taken: a multiple of 4, at most `length`; each 4 wrote 3 bytes.
  std::size_t (*decodeBase64)(const unsigned short* text, std::size_t length, unsigned char* out, std::size_t room);
  // Copies units of UTF-16 up to a block with surrogates, whose units are not counted but may be overwritten; by
  // utf16::Order.
  std::size_t (*copyUtf16[3])(const unsigned char* in, unsigned char* out, std::size_t count);
  // Converts whole characters, at most up to the first that is not well formed, or that `room`, in elements of the
  // output, is too short for. The rest of the room may be overwritten.
  Advance (*decodeUtf8)(const unsigned char* bytes, std::size_t size, unsigned short* units, std::size_t room);
  Advance (*encodeUtf8)(const unsigned short* units, std::size_t size, unsigned char* bytes, std::size_t room);
};

// Those that the processor can run, the widest vectors first, and the ones in use.
struct Vectors {
  std::array<VectorLoops, 5> kinds{};
  std::size_t count = 0;
  std::size_t used = 0;

  void add(const VectorLoops& loops) { kinds[count++] = loops; }
};

// The ones of this process. They are chosen when the library is loaded, so that no call looks whether they are and no
// fork comes in between; what is loaded before that finds the loops that every machine can run. Only a test changes
// which are used.
extern constinit Vectors vectors;
inline const VectorLoops& vectorLoops() {
  return vectors.kinds[vectors.used];
}

}  // namespace oxr::core
