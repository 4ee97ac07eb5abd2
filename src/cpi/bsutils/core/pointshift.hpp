#pragma once

#include <cstdint>

namespace oxr::core {

// How the point of a decimal text moves, worked out on lengths alone, so that a text can be rebuilt in place or written
// in one go. The text loses its point and then gets zeros on either side and, perhaps, a new point:
//
//   "12345", 7 places:  frontZeros 3, point 1     "000" "12345" -> "0.0012345"
//   "123.45", -5:       backZeros 3, no point     "12345" "000"
//
// Invariant: `point`, when there is one, counts in the text with its zeros.
struct PointShift {
  static constexpr std::uint32_t kNoPoint = 0xFFFFFFFFu;

  std::uint32_t frontZeros = 0;    // before the first unit
  std::uint32_t backZeros = 0;     // after the last unit
  std::uint32_t point = kNoPoint;  // units and zeros before the point

  constexpr bool hasPoint() const { return point != kNoPoint; }
  // The length of the whole result, for a text of `units` units without its point.
  constexpr std::uint64_t length(std::uint32_t units) const {
    return std::uint64_t{frontZeros} + units + backZeros + (hasPoint() ? 1 : 0);
  }
};

// The shift by `places` (positive: to the left, a smaller number) of a text of `units` units, its point not counted,
// that had its point before unit `point`, or kNoPoint. 0 places and an empty text are not for this function: the caller
// leaves those texts as they are. The result may begin or end with the point.
constexpr PointShift shiftPoint(std::uint32_t units, std::uint32_t point, std::int32_t places) {
  const std::int64_t from = point == PointShift::kNoPoint ? units : point;
  const std::int64_t to = from - places;
  PointShift shift;
  if (to < 0) {
    shift.frontZeros = static_cast<std::uint32_t>(1 - to);
    shift.point = 1;
  } else if (to > units) {
    shift.backZeros = static_cast<std::uint32_t>(to - units);
  } else {
    shift.point = static_cast<std::uint32_t>(to);
  }
  return shift;
}

// The shift of a text without a point, by some places, with a digit before a point that comes first.
constexpr PointShift shiftWholeNumber(std::uint32_t units, std::int32_t places) {
  const PointShift shift = shiftPoint(units, PointShift::kNoPoint, places);
  return shift.point == 0 ? PointShift{1, 0, 1} : shift;
}

static_assert(shiftWholeNumber(5, 7).frontZeros == 3);
static_assert(shiftWholeNumber(5, -2).backZeros == 2);
static_assert(shiftWholeNumber(5, 5).length(5) == 7);
static_assert(shiftPoint(5, 3, -5).backZeros == 3);

}  // namespace oxr::core
