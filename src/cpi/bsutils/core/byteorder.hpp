#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

// Integers and the bytes of a field, in either byte order, on a machine of either byte order.
namespace oxr::core {

template <std::unsigned_integral T>
constexpr T byteSwapped(T value) {
  if constexpr (sizeof(T) == 2) return __builtin_bswap16(value);
  if constexpr (sizeof(T) == 4) return __builtin_bswap32(value);
  if constexpr (sizeof(T) == 8) return __builtin_bswap64(value);
  return value;
}

// The value of the sizeof(T) bytes at `bytes`, least significant first when `little`. Compiles to a load and a swap.
template <std::unsigned_integral T>
T loadBytes(const unsigned char* bytes, bool little) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return little == (std::endian::native == std::endian::little) ? value : byteSwapped(value);
}

template <std::unsigned_integral T>
void storeBytes(unsigned char* bytes, T value, bool little) {
  if (little != (std::endian::native == std::endian::little)) value = byteSwapped(value);
  std::memcpy(bytes, &value, sizeof value);
}

constexpr bool isIntegerSize(int size) {
  return size == 1 || size == 2 || size == 4 || size == 8;
}

// An integer of `size` bytes, isIntegerSize(size), zero-extended.
inline std::uint64_t loadInteger(const unsigned char* bytes, int size, bool little) {
  switch (size) {
    case 1:
      return *bytes;
    case 2:
      return loadBytes<std::uint16_t>(bytes, little);
    case 4:
      return loadBytes<std::uint32_t>(bytes, little);
    default:
      return loadBytes<std::uint64_t>(bytes, little);
  }
}

// The low `size` bytes, 1 to 8, of a value taken as a signed integer.
constexpr std::int64_t signExtended(std::uint64_t value, int size) {
  const int unused = 64 - 8 * size;
  return static_cast<std::int64_t>(value << unused) >> unused;
}
static_assert(signExtended(0xFE, 1) == -2 && signExtended(0xFE, 2) == 0xFE && signExtended(~std::uint64_t{0}, 8) == -1);

}  // namespace oxr::core
