#include "core/padding.hpp"

#include <unicode/uchar.h>

#include <algorithm>

namespace oxr::core {

namespace {

template <class Text, class Qualifies>
std::size_t leadingRun(const Text& text, Qualifies qualifies) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), qualifies) - text.begin());
}
template <class Text, class Qualifies>
std::size_t trailingRun(const Text& text, Qualifies qualifies) {
  return static_cast<std::size_t>(std::find_if_not(text.rbegin(), text.rend(), qualifies) - text.rbegin());
}

bool isSpace(unsigned short unit) {
  return u_isWhitespace(unit) != 0;
}
template <class Unit>
auto equals(Unit pad) {
  return [pad](Unit unit) { return unit == pad; };
}

}  // namespace

std::size_t leadingPads(UnitView text, unsigned short pad) {
  return leadingRun(text, equals(pad));
}
std::size_t trailingPads(UnitView text, unsigned short pad) {
  return trailingRun(text, equals(pad));
}
std::size_t leadingSpaces(UnitView text) {
  return leadingRun(text, isSpace);
}
std::size_t trailingSpaces(UnitView text) {
  return trailingRun(text, isSpace);
}
std::size_t leadingPads(std::span<const unsigned char> bytes, unsigned char pad) {
  return leadingRun(bytes, equals(pad));
}
std::size_t trailingPads(std::span<const unsigned char> bytes, unsigned char pad) {
  return trailingRun(bytes, equals(pad));
}

void repeat(std::span<unsigned char> room, std::span<const unsigned char> sequence) {
  for (std::size_t done = 0; done < room.size(); done += sequence.size())
    std::copy_n(sequence.begin(), std::min(sequence.size(), room.size() - done), room.begin() + done);
}

void repeatUpToZero(std::span<unsigned char> room, std::span<const unsigned char> sequence) {
  const auto zero = static_cast<std::size_t>(std::ranges::find(sequence, 0) - sequence.begin());
  repeat(room, sequence);
  if (zero < std::min(sequence.size(), room.size())) std::ranges::fill(room.subspan(zero), 0);
}

}  // namespace oxr::core
