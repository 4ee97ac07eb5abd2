#include "core/utf16.hpp"

#include "core/vectors.hpp"

namespace oxr::core {

// Most text has no surrogates. A block with surrogates goes unit by unit, so that a half that stands alone ends the
// conversion right before it.

namespace {

using utf16::Order;

constexpr std::size_t kBlock = 32;

// Copies up to `count` units, and one more where the last one begins a pair; fewer where a half stands alone.
template <Order kOrder>
std::size_t copyPairs(const unsigned char* in, unsigned char* out, std::size_t count, std::size_t available) {
  const auto unitAt = [in](std::size_t index) { return load<unsigned short>(in + 2 * index); };
  const auto look = [&](std::size_t index) {
    return kOrder == Order::output ? utf16::swapped<kOrder>(unitAt(index)) : unitAt(index);
  };
  std::size_t done = 0;
  while (done < count) {
    std::size_t size = 1;
    if (isSurrogate(look(done))) {
      if (available - done < 2 || !isLead(look(done)) || !isTrail(look(done + 1))) break;
      size = 2;
    }
    for (; size != 0; --size, ++done) {
      const unsigned short unit = utf16::swapped<kOrder>(unitAt(done));
      std::memcpy(out + 2 * done, &unit, sizeof unit);
    }
  }
  return done;
}

}  // namespace

template <Order kOrder>
std::size_t utf16::copyGeneral(const unsigned char* in, unsigned char* out, std::size_t count) {
  const auto copyPlainBlocks = vectorLoops().copyUtf16[static_cast<std::size_t>(kOrder)];
  for (std::size_t done = 0;;) {
    done += copyPlainBlocks(in + 2 * done, out + 2 * done, count - done);
    const std::size_t size = std::min(count - done, kBlock);
    const std::size_t copied = copyPairs<kOrder>(in + 2 * done, out + 2 * done, size, count - done);
    done += copied;
    if (done == count || copied < size) return done;
  }
}

template std::size_t utf16::copyGeneral<Order::both>(const unsigned char*, unsigned char*, std::size_t);
template std::size_t utf16::copyGeneral<Order::input>(const unsigned char*, unsigned char*, std::size_t);
template std::size_t utf16::copyGeneral<Order::output>(const unsigned char*, unsigned char*, std::size_t);

}  // namespace oxr::core
