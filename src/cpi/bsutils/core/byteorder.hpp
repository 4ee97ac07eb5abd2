#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <type_traits>

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

// The 64 bits of a narrower integer, signed or not.
template <std::unsigned_integral T>
constexpr std::uint64_t widened(T value, bool isSigned) {
  return isSigned ? static_cast<std::uint64_t>(std::int64_t{static_cast<std::make_signed_t<T>>(value)}) : value;
}
static_assert(widened(std::uint8_t{0xFE}, true) == ~std::uint64_t{1} && widened(std::uint8_t{0xFE}, false) == 0xFE);

// The 64 bits of an integer of `size` bytes, isIntegerSize(size).
inline std::uint64_t loadInteger(const unsigned char* bytes, int size, bool little, bool isSigned) {
  switch (size) {
    case 1:
      return widened(*bytes, isSigned);
    case 2:
      return widened(loadBytes<std::uint16_t>(bytes, little), isSigned);
    case 4:
      return widened(loadBytes<std::uint32_t>(bytes, little), isSigned);
    default:
      return loadBytes<std::uint64_t>(bytes, little);
  }
}

// The low bits of `value` as an integer of `size` bytes, isIntegerSize(size).
inline void storeInteger(unsigned char* bytes, std::uint64_t value, int size, bool little) {
  switch (size) {
    case 1:
      *bytes = static_cast<unsigned char>(value);
      break;
    case 2:
      storeBytes(bytes, static_cast<std::uint16_t>(value), little);
      break;
    case 4:
      storeBytes(bytes, static_cast<std::uint32_t>(value), little);
      break;
    default:
      storeBytes(bytes, value, little);
  }
}

}  // namespace oxr::core
