#pragma once

#include <algorithm>
#include <climits>
#include <memory>
#include <string>

#include "fuzz/harness/choices.hpp"
#include "kelbuffer.hpp"

namespace oxr::fuzz {

// Moves, growths and shrinkings of a window, bounded or not, held against a model that counts in 64 bits.
inline void checkKelBuffer(Choices& choices) {
  static constexpr char kBytes[] = "0123456789";
  const auto number = [&]() -> int {
    const std::size_t kind = choices.upTo(15);
    return kind == 0 ? INT_MAX : kind == 1 ? INT_MIN : choices.between(-2, 12);
  };
  const int size = choices.between(-1, 10);
  const bool hasBytes = choices.upTo(9) != 0, isBounded = choices.coin(), locks = choices.coin();
  KelBuffer buffer(hasBytes ? kBytes : nullptr, size);
  const long total = hasBytes ? std::max(size, 0) : 0;
  require(buffer.size(true) == total, "size");

  const int offset = number(), length = number();
  const auto window = isBounded ? std::make_unique<KelBufferPointer>(&buffer, offset, length, locks)
                                : std::make_unique<KelBufferPointer>(&buffer);
  const long boundStart = isBounded ? std::clamp<long>(offset, 0, total) : 0;
  const long end = isBounded ? boundStart + std::clamp<long>(length, 0, total - boundStart) : total;
  long start = boundStart, shown = isBounded ? end - boundStart : 0;
  require(window->isBounded() == isBounded && window->boundStart() == boundStart && window->boundEnd() == end, "bound");
  require(window->hasNoLock() != (isBounded && locks), "lock");
  require(buffer.isLocked(static_cast<int>(boundStart)) == (isBounded && locks), "lock of the bound's start");

  while (!choices.isEmpty()) {
    enum Operation { move, extend, set };
    static constexpr Operation kOperations[] = {move, extend, set};
    const Operation operation = choices.oneOf(kOperations);
    const int to = number(), count = number();
    const bool acceptShorter = choices.coin();
    const long from = operation == move ? to : start, before = operation == extend ? shown : 0;
    const long asked = before + count;
    const bool possible = from >= 0 && from <= end && count >= 0;
    const bool expected = possible && (asked <= end - from || (acceptShorter && end - from > before));
    char *first = nullptr, *last = nullptr;
    const bool done = operation == move     ? window->moveOffsetWindow(to, count, acceptShorter, &first, &last, false)
                      : operation == extend ? window->extendLength(count, acceptShorter)
                                            : window->setLength(count, acceptShorter);
    if (expected) start = from, shown = std::min(asked, end - from);
    const std::string what = "operation " + std::to_string(operation) + " to " + std::to_string(to) + ", length " +
                             std::to_string(count) + (acceptShorter ? " or shorter" : "");
    require(done == expected, "result of " + what);
    require(window->windowOffset() == start && window->windowLength() == shown, "window after " + what);
    if (operation == move) require(last - first == (done ? shown : 0), "range of " + what);

    const char* const bytes = hasBytes ? kBytes : nullptr;
    const auto isThere = [&](long at, long limit) { return at >= 0 && at < limit; };
    const bool isShown = isThere(to - start, shown);
    require(window->getEndPointer() == (hasBytes ? bytes + start + shown : nullptr), "end after " + what);
    require(window->getOffsetPointer(to) == (isShown ? bytes + to : window->getEndPointer()), "byte after " + what);
    require(window->offsetAvailable(to) == isThere(to, end), "a byte at " + std::to_string(to));
    require(window->offsetAvailable(to, count) == (to >= 0 && count >= -1 && long{to} + count < end),
            std::to_string(count) + " bytes after that at " + std::to_string(to));
    int remaining = 0;
    require(buffer.getData(&remaining, to) == (hasBytes && to >= 0 && to <= total ? bytes + to : nullptr), "data");
    require(remaining == (isThere(to, total) ? total - to : 0), "remaining bytes");
  }
}

}  // namespace oxr::fuzz
