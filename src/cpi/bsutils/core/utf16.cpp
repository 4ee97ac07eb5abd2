#include "core/utf16.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace oxr::core {

// Most text has no surrogates: 16 units at a time are looked at for any, swapped if need be, and stored. A block with
// surrogates goes unit by unit, so that a half that stands alone ends the conversion right before it.

namespace {

// Vectors in the notation that gcc and clang share; they find the instructions.
using Vector [[gnu::vector_size(16)]] = unsigned short;
using WordPair [[gnu::vector_size(16)]] = std::uint64_t;
constexpr std::size_t kBlock = 16;
constexpr std::size_t kHalfBlock = sizeof(Vector) / 2;

template <bool kSwap, class Units>
Units inOrder(Units units) {
  return kSwap ? static_cast<Units>(units << 8 | units >> 8) : units;
}

Vector loadVector(const unsigned char* from) {
  Vector units;
  std::memcpy(&units, from, sizeof units);
  return units;
}
bool hasSurrogate(Vector first, Vector second) {
  const auto found = ((first & 0xF800) == 0xD800) | ((second & 0xF800) == 0xD800);
  WordPair words;
  std::memcpy(&words, &found, sizeof words);
  return (words[0] | words[1]) != 0;
}

unsigned short load(const unsigned char* from) {
  unsigned short unit;
  std::memcpy(&unit, from, sizeof unit);
  return unit;
}

// Copies up to `count` units, and one more where the last one begins a pair; fewer where a half stands alone.
// `kLookAfter`: the units are looked at as they go out, else as they come in.
template <bool kSwap, bool kLookAfter>
std::size_t copyPairs(const unsigned char* in, unsigned char* out, std::size_t count, std::size_t available) {
  const auto look = [in](std::size_t index) { return inOrder < kSwap && kLookAfter > (load(in + 2 * index)); };
  std::size_t done = 0;
  while (done < count) {
    std::size_t size = 1;
    if (isSurrogate(look(done))) {
      if (available - done < 2 || !isLead(look(done)) || !isTrail(look(done + 1))) break;
      size = 2;
    }
    for (; size != 0; --size, ++done) {
      const unsigned short unit = inOrder<kSwap>(load(in + 2 * done));
      std::memcpy(out + 2 * done, &unit, sizeof unit);
    }
  }
  return done;
}

// Copies up to `count` units, in the other order if `kSwap`; the result is the number of units of whole characters.
// `kLookAfter`: it is the output that is in this machine's order, else the input.
template <bool kSwap, bool kLookAfter>
std::size_t copyUnits(const unsigned char* in, unsigned char* out, std::size_t count) {
  std::size_t done = 0;
  while (count - done >= kBlock) {
    const Vector first = loadVector(in + 2 * done), second = loadVector(in + 2 * (done + kHalfBlock));
    const Vector newFirst = inOrder<kSwap>(first), newSecond = inOrder<kSwap>(second);
    if (kLookAfter ? hasSurrogate(newFirst, newSecond) : hasSurrogate(first, second)) [[unlikely]] {
      const std::size_t copied = copyPairs<kSwap, kLookAfter>(in + 2 * done, out + 2 * done, kBlock, count - done);
      done += copied;
      if (copied < kBlock) return done;
    } else {
      std::memcpy(out + 2 * done, &newFirst, sizeof newFirst);
      std::memcpy(out + 2 * (done + kHalfBlock), &newSecond, sizeof newSecond);
      done += kBlock;
    }
  }
  if (done == count) return done;
  return done + copyPairs<kSwap, kLookAfter>(in + 2 * done, out + 2 * done, count - done, count - done);
}

unsigned char* bytesOf(unsigned short* units) {
  return reinterpret_cast<unsigned char*>(units);
}
const unsigned char* bytesOf(const unsigned short* units) {
  return reinterpret_cast<const unsigned char*>(units);
}

}  // namespace

Advance decodeUtf16(std::span<const unsigned char> bytes, std::span<unsigned short> units, bool swap) {
  const std::size_t count = std::min(bytes.size() / 2, units.size());
  unsigned char* const out = bytesOf(units.data());
  const std::size_t done =
      swap ? copyUnits<true, true>(bytes.data(), out, count) : copyUnits<false, true>(bytes.data(), out, count);
  return {2 * done, done};
}

Advance encodeUtf16(std::span<const unsigned short> units, std::span<unsigned char> bytes, bool swap) {
  const std::size_t count = std::min(bytes.size() / 2, units.size());
  const unsigned char* const in = bytesOf(units.data());
  const std::size_t done =
      swap ? copyUnits<true, false>(in, bytes.data(), count) : copyUnits<false, false>(in, bytes.data(), count);
  return {done, 2 * done};
}

}  // namespace oxr::core
