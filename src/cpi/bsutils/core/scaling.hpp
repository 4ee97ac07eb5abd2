#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

// Numbers and texts moved by a decimal scale, in time that does not depend on the scale. A scale is any 32-bit integer,
// and most of them move every number out of every range: what is done for one of those ends as soon as a further place
// changes nothing.
namespace oxr::core {

// Whether a multiplication or division by ten leaves the value as it is: a zero, an infinity, a NaN.
constexpr bool isSameAtAnyScale(double value) {
  return value == 0.0 || value - value != 0.0;
}

// `value` times ten to the `power`, by one multiplication (below 0: division) a step: each step rounds, which a single
// operation by a power of ten would not do. Any value has become a zero or an infinity within 700 steps, and then it
// ends.
constexpr double scaledByTens(double value, std::int64_t power) {
  for (; power > 0 && !isSameAtAnyScale(value); --power)
    value *= 10.0;
  for (; power < 0 && !isSameAtAnyScale(value); ++power)
    value /= 10.0;
  return value;
}

// The places by which to move the point of a text of `units` units that is then read as an integer or a double: as
// given, but no further than 65536 beyond the text. By then the text is zero or beyond every range, and what the clamp
// saves is gigabytes of zeros. An exponent in the text is taken to be small beside that.
constexpr std::int32_t clampedPlaces(std::int32_t places, std::size_t units) {
  constexpr std::int64_t kBeyondText = 65536;
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  const std::int64_t limit = std::min(static_cast<std::int64_t>(units) + kBeyondText, kMost);
  return static_cast<std::int32_t>(std::clamp(std::int64_t{places}, -limit, limit));
}

static_assert(scaledByTens(1.5, 2) == 150.0 && scaledByTens(-150.0, -2) == -1.5);
static_assert(scaledByTens(-0.0, 1'000'000'000'000) == 0.0);
static_assert(clampedPlaces(std::numeric_limits<std::int32_t>::min(), 3) == -65539 && clampedPlaces(2, 3) == 2);

}  // namespace oxr::core
