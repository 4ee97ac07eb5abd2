#pragma once

#include <cstddef>

// The vector loops of Base64: as many whole blocks as there are, in the widest vectors of the processor that the
// program finds itself on. They may do nothing; what they leave is the caller's to do.
namespace oxr::core {

// Encodes blocks of `data` to `out` (4 units for 3 bytes). The bytes taken: a multiple of 3, at most `size`.
std::size_t encodeBase64Blocks(const unsigned char* data, std::size_t size, unsigned short* out);

// Decodes blocks up to the first that holds anything but letters, digits, "+" and "/", or that `room`, in bytes, is too
// short for. The units taken: a multiple of 4, at most `length`; each 4 wrote 3 bytes.
std::size_t decodeBase64Blocks(const unsigned short* text, std::size_t length, unsigned char* out, std::size_t room);

}  // namespace oxr::core
