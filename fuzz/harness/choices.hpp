#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

// What the checks of this folder are written with. A check compares the library with a model, or one of its ways with
// another, on one input. Its input is a run of bytes that it draws its choices from: a fuzz target hands it what the
// fuzzer found, the test program what a seeded generator gave. So each comparison exists once.
//
// Example:
//   inline void checkPacked(Choices& choices) {
//     const auto field = choices.bytes(choices.upTo(16));
//     const int places = choices.between(-3, 40);
//     requireEqual(read(field, places), model(field, places), "digits");
//   }
namespace oxr::fuzz {

// Draws values from bytes; zeros when they are used up. Any bytes give good choices, so that no input is wasted.
class Choices {
 public:
  explicit Choices(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  bool isEmpty() const { return rest_.empty(); }
  std::size_t left() const { return rest_.size(); }

  // Any value of an unsigned integer type, or any bit pattern of a trivial type.
  template <class T>
  T any() {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    const std::size_t count = std::min(sizeof value, rest_.size());
    if (count != 0) std::memcpy(&value, rest_.data(), count);
    rest_ = rest_.subspan(count);
    return value;
  }
  bool coin() { return (any<std::uint8_t>() & 1) != 0; }
  // From 0 to `most`, both included.
  std::size_t upTo(std::size_t most) {
    if (most == 0) return 0;
    const std::size_t drawn = most < 256 ? any<std::uint8_t>() : any<std::uint32_t>();
    return drawn % (most + 1);
  }
  // From `least` to `most`, both included.
  int between(int least, int most) {
    return static_cast<int>(least +
                            static_cast<std::int64_t>(upTo(static_cast<std::size_t>(std::int64_t{most} - least))));
  }
  // One of the elements.
  template <class Range>
  const auto& oneOf(const Range& range) {
    return std::data(range)[upTo(std::size(range) - 1)];
  }
  // The next `count` bytes, fewer where there are fewer. They lie in the input.
  std::span<const std::uint8_t> bytes(std::size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::span<const std::uint8_t> allBytes() { return bytes(rest_.size()); }

 private:
  std::span<const std::uint8_t> rest_;
};

// Two ways did not give the same. what() tells how.
class Disagreement : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

[[noreturn]] inline void disagree(const std::string& what) {
  throw Disagreement(what);
}
inline void require(bool holds, const std::string& what) {
  if (!holds) disagree(what);
}
// `what` says in words what is compared; values that can be printed are shown.
template <class A, class B>
void requireEqual(const A& found, const B& expected, const std::string& what) {
  if (found == expected) return;
  std::ostringstream text;
  text << what;
  if constexpr (requires { text << found << expected; }) text << ": found " << found << ", expected " << expected;
  disagree(text.str());
}

}  // namespace oxr::fuzz
