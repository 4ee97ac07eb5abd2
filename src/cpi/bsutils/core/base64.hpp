#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "kelunits.hpp"

// Base64 between bytes and UTF-16 text, with the standard alphabet. Clean stretches go through vectors.
namespace oxr::core {

// The code unit of each 6-bit value.
extern const std::array<unsigned short, 64> kBase64Alphabet;

// The value of each code unit: 0 to 63, 0 for "=", and kForeignUnit for one outside the alphabet.
extern const std::array<unsigned char, 0x10000> kBase64Values;
inline constexpr unsigned char kForeignUnit = 0x80;

// Code units of the text of `bytes` bytes.
constexpr std::uint64_t base64Length(std::uint64_t bytes) {
  return (bytes + 2) / 3 * 4;
}

// Writes base64Length(data.size()) units to `out`, without line ends. `out` does not overlap `data`.
void encodeBase64(std::span<const unsigned char> data, unsigned short* out);

enum class Base64Fault {
  none,
  incomplete,  // the text ends inside a group of four
  targetFull,  // a group has more bytes than the target has room for
};
struct Base64Decoded {
  std::size_t size;  // bytes written, before a fault too
  Base64Fault fault;
};

// Decodes groups of four units up to the end or through the first padded group; what follows that is not read. Foreign
// units are skipped wherever they stand. "=" pads as third or fourth unit of a group and counts as the value 0
// elsewhere. A target of text.size() * 3 / 4 bytes holds any text. Beyond `size` the target's contents are unspecified;
// it does not overlap `text`.
Base64Decoded decodeBase64(UnitView text, std::span<unsigned char> target);

}  // namespace oxr::core
