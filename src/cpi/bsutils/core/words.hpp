#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

// A run of 1 to 8 bytes in a register, and back. Fields have any number of bytes, machines load 2, 4 or 8: two loads
// that overlap take any run, without a loop and without touching a byte outside it.
namespace oxr::core {

static_assert(std::endian::native == std::endian::little, "bytes are counted from the lowest one of a register");

// The `count` bytes, 1 to 8, with the last one in the uppermost place; zeros below them.
inline std::uint64_t loadUppermost(const unsigned char* bytes, std::uint32_t count) {
  const auto join = [&]<class Half>(Half first, Half last) {
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&last, bytes + count - sizeof last, sizeof last);
    return std::uint64_t{last} << (64 - 8 * sizeof last) | std::uint64_t{first} << (64 - 8 * count);
  };
  if (count >= 4) return join(std::uint32_t{}, std::uint32_t{});
  if (count >= 2) return join(std::uint16_t{}, std::uint16_t{});
  return std::uint64_t{*bytes} << 56;
}
// The same with the first byte in the lowest place, zeros above the last.
inline std::uint64_t loadLowest(const unsigned char* bytes, std::uint32_t count) {
  return loadUppermost(bytes, count) >> (64 - 8 * count);
}

// Writes the lowest `count` bytes of a register, 1 to 8, the lowest one first.
[[gnu::always_inline]] inline void storeLowest(std::uint64_t bytes, unsigned char* target, std::uint32_t count) {
  const auto split = [&]<class Half>(Half first) __attribute__((always_inline)) {
    const auto last = static_cast<Half>(bytes >> 8 * (count - sizeof(Half)));
    first = static_cast<Half>(bytes);
    std::memcpy(target, &first, sizeof first);
    std::memcpy(target + count - sizeof last, &last, sizeof last);
  };
  if (count >= 4)
    split(std::uint32_t{});
  else if (count >= 2)
    split(std::uint16_t{});
  else
    *target = static_cast<unsigned char>(bytes);
}

// The bytes that loadLowest() gave, in the opposite order.
constexpr std::uint64_t reversedBytes(std::uint64_t bytes, std::uint32_t count) {
  return __builtin_bswap64(bytes) >> (64 - 8 * count);
}

}  // namespace oxr::core
