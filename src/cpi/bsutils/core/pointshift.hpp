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
// leaves those texts as they are. The result may begin or end with the point; see trimmed().
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

// The same shift with a digit before a point that came first, and without a point that came last. It serves texts that
// hold no further point.
constexpr PointShift trimmed(PointShift shift, std::uint32_t units) {
  if (shift.point == 0) return {1, 0, 1};
  if (shift.hasPoint() && shift.point == shift.frontZeros + units) shift.point = PointShift::kNoPoint;
  return shift;
}

static_assert(trimmed(shiftPoint(5, PointShift::kNoPoint, 7), 5).frontZeros == 3);
static_assert(trimmed(shiftPoint(5, 3, -5), 5).backZeros == 3);
static_assert(!trimmed(shiftPoint(5, 3, -2), 5).hasPoint());
static_assert(trimmed(shiftPoint(5, PointShift::kNoPoint, 5), 5).length(5) == 7);

}  // namespace oxr::core
