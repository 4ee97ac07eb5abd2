#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "bitstreamworkercall.hpp"

// What the two machines of a worker's checker are written with. A machine is a table with a row for each state, made to
// be read: a row tells which calls lead where. The compiler turns the rows into cells, one for each state and call, so
// that a step is one look into an array.
namespace oxr::core {

inline constexpr std::size_t kCallCount = CALL_END_EMBEDDED + 1;

// A set of calls; one call is a set too.
class Calls {
 public:
  constexpr Calls(EBitstreamWorkerCall call) : bits_(std::uint64_t{1} << call) {}  // NOLINT: one call is a set
  constexpr Calls(std::initializer_list<EBitstreamWorkerCall> calls) {
    for (const EBitstreamWorkerCall call : calls)
      bits_ |= Calls(call).bits_;
  }
  constexpr bool has(EBitstreamWorkerCall call) const { return (bits_ & Calls(call).bits_) != 0; }
  constexpr bool areAllIn(const Calls& other) const { return (bits_ & ~other.bits_) == 0; }
  // A bit for each call, by its number.
  constexpr std::uint64_t bits() const { return bits_; }

 private:
  std::uint64_t bits_ = 0;
};
static_assert(kCallCount <= 64);

// Any of these calls leads to that state.
struct Arrow {
  Calls on;
  int to;
};

// The arrows that leave one state.
class Arrows {
 public:
  constexpr Arrows() = default;
  constexpr Arrows(std::initializer_list<Arrow> arrows) : count_(arrows.size()) {
    std::size_t i = 0;
    for (const Arrow& arrow : arrows)
      arrows_.at(i++) = arrow;
  }
  constexpr const Arrow* begin() const { return arrows_.data(); }
  constexpr const Arrow* end() const { return arrows_.data() + count_; }

 private:
  static constexpr std::size_t kMost = 4;
  std::array<Arrow, kMost> arrows_{{{{}, 0}, {{}, 0}, {{}, 0}, {{}, 0}}};
  std::size_t count_ = 0;
};

// Makes the cells of a machine: `cellOf(row, call)` for each of its rows and each call.
template <class Rows, class CellOf>
constexpr auto cellsOf(const Rows& rows, CellOf cellOf) {
  using Cell = decltype(cellOf(rows[0], EBitstreamWorkerCall{}));
  std::array<std::array<Cell, kCallCount>, std::tuple_size_v<Rows>> cells{};
  for (std::size_t state = 0; state < rows.size(); ++state)
    for (std::size_t call = 0; call < kCallCount; ++call)
      cells[state][call] = cellOf(rows[state], static_cast<EBitstreamWorkerCall>(call));
  return cells;
}

// Says that each row stands where its number says.
template <class Rows>
constexpr bool areInOrder(const Rows& rows) {
  for (std::size_t state = 0; state < rows.size(); ++state)
    if (rows[state].state != static_cast<int>(state)) return false;
  return true;
}

}  // namespace oxr::core
