#include "core/utf8.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "core/utf16.hpp"
#include "core/vectors.hpp"

namespace oxr::core {

namespace {

// What the vectors leave: texts shorter than a block of theirs, and what comes near a fault or the end of the room.
// Runs of ASCII are copied a block at a time, in loops of a constant count that compilers turn into vectors.
constexpr std::ptrdiff_t kBlock = 8;

constexpr std::uint64_t kNoAsciiBytes = 0x8080'8080'8080'8080;
constexpr std::uint64_t kNoAsciiUnits = 0xFF80'FF80'FF80'FF80;

template <class Element>
std::uint64_t loadWord(const Element* elements) {
  std::uint64_t word;
  std::memcpy(&word, elements, sizeof word);
  return word;
}

// The number of zero bits before the first one, in the order of memory.
int bitsBeforeFirst(std::uint64_t word) {
  return std::endian::native == std::endian::little ? std::countr_zero(word) : std::countl_zero(word);
}

// How many of the next 8 bytes, or units, are ASCII up to the first that is not.
int asciiCount(const unsigned char* bytes) {
  return bitsBeforeFirst(loadWord(bytes) & kNoAsciiBytes) / 8;
}
int asciiCount(const unsigned short* units) {
  const std::uint64_t first = loadWord(units) & kNoAsciiUnits;
  return first != 0 ? bitsBeforeFirst(first) / 16 : 4 + bitsBeforeFirst(loadWord(units + 4) & kNoAsciiUnits) / 16;
}

// Copies by way of locals: input and output might overlap for all that a compiler knows.
template <std::size_t kCount, class From, class To>
void copy(const From* from, To* to) {
  std::array<From, kCount> input;
  std::array<To, kCount> output;
  std::memcpy(input.data(), from, sizeof input);
  for (std::size_t i = 0; i < kCount; ++i)
    output[i] = static_cast<To>(input[i]);
  std::memcpy(to, output.data(), sizeof output);
}

// Copies a run of ASCII.
template <class From, class To>
void copyAscii(const From*& from, const From* fromEnd, To*& to, To* toEnd) {
  std::ptrdiff_t left = std::min<std::ptrdiff_t>(fromEnd - from, toEnd - to);
  const auto advance = [&](std::ptrdiff_t count) {
    from += count;
    to += count;
    left -= count;
  };
  while (left >= kBlock) {
    const int count = asciiCount(from);
    copy<kBlock>(from, to);
    advance(count);
    if (count < kBlock) return;
  }
  while (left > 0 && *from < 0x80) {
    *to = static_cast<To>(*from);
    advance(1);
  }
}

bool isTrailByte(unsigned byte) {
  return (byte & 0xC0) == 0x80;
}

// One character of several bytes; false, and nothing has moved, when it is not well formed or finds no room. There is
// input left, and room for a unit.
bool decodeLong(const unsigned char*& in, const unsigned char* end, unsigned short*& out,
                const unsigned short* outEnd) {
  const std::ptrdiff_t left = end - in;
  const unsigned lead = in[0];
  if (left < 2 || !isTrailByte(in[1])) return false;
  if (lead < 0xE0) {
    if (lead < 0xC2) return false;  // a trail byte, or longer than need be
    *out++ = static_cast<unsigned short>((lead & 0x1F) << 6 | (in[1] & 0x3Fu));
    in += 2;
    return true;
  }
  if (left < 3 || !isTrailByte(in[2])) return false;
  const unsigned upper = (lead & 0x0F) << 12 | (in[1] & 0x3Fu) << 6 | (in[2] & 0x3Fu);
  if (lead < 0xF0) {
    if (upper < 0x800 || isSurrogate(upper)) return false;
    *out++ = static_cast<unsigned short>(upper);
    in += 3;
    return true;
  }
  if (lead > 0xF4 || left < 4 || outEnd - out < 2 || !isTrailByte(in[3])) return false;
  const unsigned character = upper << 6 | (in[3] & 0x3Fu);
  if (character < 0x10000 || character > 0x10FFFF) return false;
  *out++ = leadOf(character);
  *out++ = trailOf(character);
  in += 4;
  return true;
}

bool encodeLong(const unsigned short*& in, const unsigned short* end, unsigned char*& out,
                const unsigned char* outEnd) {
  const std::ptrdiff_t room = outEnd - out;
  const auto trail = [](unsigned bits) { return static_cast<unsigned char>(0x80 | (bits & 0x3F)); };
  const unsigned unit = in[0];
  if (unit < 0x800) {
    if (room < 2) return false;
    *out++ = static_cast<unsigned char>(0xC0 | unit >> 6);
    *out++ = trail(unit);
    in += 1;
    return true;
  }
  if (!isSurrogate(unit)) {
    if (room < 3) return false;
    *out++ = static_cast<unsigned char>(0xE0 | unit >> 12);
    *out++ = trail(unit >> 6);
    *out++ = trail(unit);
    in += 1;
    return true;
  }
  if (room < 4 || end - in < 2 || !isLead(unit) || !isTrail(in[1])) return false;
  const unsigned character = pairOf(unit, in[1]);
  *out++ = static_cast<unsigned char>(0xF0 | character >> 18);
  *out++ = trail(character >> 12);
  *out++ = trail(character >> 6);
  *out++ = trail(character);
  in += 2;
  return true;
}

// Converts runs of ASCII and runs of longer characters by turns.
template <class From, class To, class ConvertLong>
Advance convert(std::span<const From> input, std::span<To> output, ConvertLong convertLong) {
  const From* in = input.data();
  const From* const end = in + input.size();
  To* out = output.data();
  To* const outEnd = out + output.size();
  do
    copyAscii(in, end, out, outEnd);
  while (in != end && out != outEnd && convertLong(in, end, out, outEnd));
  return {static_cast<std::size_t>(in - input.data()), static_cast<std::size_t>(out - output.data())};
}

}  // namespace

Advance decodeUtf8(std::span<const unsigned char> bytes, std::span<unsigned short> units) {
  const Advance done = vectorLoops().decodeUtf8(bytes.data(), bytes.size(), units.data(), units.size());
  return done + convert(bytes.subspan(done.read), units.subspan(done.written), decodeLong);
}

Advance encodeUtf8(std::span<const unsigned short> units, std::span<unsigned char> bytes) {
  const Advance done = vectorLoops().encodeUtf8(units.data(), units.size(), bytes.data(), bytes.size());
  return done + convert(units.subspan(done.read), bytes.subspan(done.written), encodeLong);
}

}  // namespace oxr::core
