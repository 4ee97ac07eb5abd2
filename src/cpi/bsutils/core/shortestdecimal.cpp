#include "core/shortestdecimal.hpp"

#include <array>
#include <bit>
#include <cstddef>

#include "core/numbertextwrite.hpp"

// Most doubles of records are decimals of a few digits, and a multiplication and a division tell which. For all others:
//
// A decimal reads back as a double when it lies between the middles to its two neighbours. The algorithm scales the
// double and both middles, four times each, to the power of ten at which the distance of the middles is between one and
// ten units: then one of two integers of up to 17 digits lies between them, or a multiple of ten does and has a digit
// less. (R. Giulietti, The Schubfach way to render doubles, 2020.)
//
//   lower middle        the double         upper middle
//   ----|-----------+-------|------+-----------|--------
//                   s             s + 1
//
// Scaling is one multiplication by a power of ten of 128 bits, rounded up. What is cut off the product only counts as
// something or nothing: the lowest bit of the result is set where there is more ("rounding to odd"), so that no
// comparison goes wrong. There is no branch on the double's kind and none on how many digits it has but the choices at
// the end.

namespace oxr::core {

namespace {

__extension__ using Product = unsigned __int128;

constexpr std::int32_t kLeastPower = -292;
constexpr std::int32_t kGreatestPower = 324;

// 128 bits of a power of ten, the highest one set. Exact, or else rounded up.
struct Power {
  std::uint64_t high;
  std::uint64_t low;
};

// A natural number of many words, the lowest first, for making the table.
class ManyWords {
 public:
  static constexpr std::size_t kWords = 14;

  constexpr explicit ManyWords(std::size_t bit) { words_[bit / 64] = std::uint64_t{1} << bit % 64; }

  constexpr void multiplyByFive() {
    std::uint64_t carry = 0;
    for (std::uint64_t& word : words_) {
      const Product product = Product{word} * 5 + carry;
      word = static_cast<std::uint64_t>(product);
      carry = static_cast<std::uint64_t>(product >> 64);
    }
  }
  constexpr void divideByFive() {
    std::uint64_t rest = 0;
    for (std::size_t i = kWords; i-- != 0;) {
      const Product dividend = Product{rest} << 64 | words_[i];
      words_[i] = static_cast<std::uint64_t>(dividend / 5);
      rest = static_cast<std::uint64_t>(dividend % 5);
    }
  }
  // The highest 128 bits, and one more if anything follows them, or `isCut`.
  constexpr Power upperBound(bool isCut) const {
    std::size_t top = kWords - 1;
    while (words_[top] == 0)
      --top;
    const int free = std::countl_zero(words_[top]);
    const auto word = [this, top](std::size_t below) { return below <= top ? words_[top - below] : 0; };
    const auto shifted = [&](std::size_t below) {
      return free == 0 ? word(below) : word(below) << free | word(below + 1) >> (64 - free);
    };
    bool isMore = isCut || (word(2) << free) != 0;
    for (std::size_t below = 3; below <= top; ++below)
      isMore |= word(below) != 0;
    const Product bits = (Product{shifted(0)} << 64 | shifted(1)) + isMore;
    return {static_cast<std::uint64_t>(bits >> 64), static_cast<std::uint64_t>(bits)};
  }

 private:
  std::array<std::uint64_t, kWords> words_{};
};

// A power of ten has the bits of the same power of five.
constexpr auto kPowers = [] {
  std::array<Power, kGreatestPower - kLeastPower + 1> powers{};
  ManyWords power(0);
  for (std::int32_t exponent = 0; exponent <= kGreatestPower; ++exponent, power.multiplyByFive())
    powers[static_cast<std::size_t>(exponent - kLeastPower)] = power.upperBound(false);
  ManyWords reciprocal(64 * ManyWords::kWords - 1);  // cutting what a division leaves does not change later quotients
  for (std::int32_t exponent = -1; exponent >= kLeastPower; --exponent) {
    reciprocal.divideByFive();
    powers[static_cast<std::size_t>(exponent - kLeastPower)] = reciprocal.upperBound(true);
  }
  return powers;
}();
static_assert(kPowers[0].high == 0xFF77B1FCBEBCDC4F && kPowers[0].low == 0x25E8E89C13BB0F7B);
static_assert(kPowers[-kLeastPower].high == std::uint64_t{1} << 63 && kPowers[-kLeastPower].low == 0);

// The exponents of two and of ten that a power of the other base is at least, for all exponents of a double.
constexpr std::int32_t binaryExponentOfTen(std::int32_t power) {
  return power * 1741647 >> 19;
}
constexpr std::int32_t decimalExponentOfTwo(std::int32_t power, bool isThreeQuarters) {
  return (power * 1262611 - (isThreeQuarters ? 524031 : 0)) >> 22;
}

// The upper 64 bits of the product, its lowest bit set if it is not all of it.
std::uint64_t scaled(const Power& power, std::uint64_t number) {
  const Product low = Product{power.low} * number;
  const Product high = Product{power.high} * number + static_cast<std::uint64_t>(low >> 64);
  return static_cast<std::uint64_t>(high >> 64) | (static_cast<std::uint64_t>(high) > 1);
}

// The exponent of the power of two that a normal number is at least.
std::int32_t binaryExponent(double value) {
  return static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(value) >> 52) - 1023;
}

// Serves numbers of up to 15 digits and of usual size. No two of them are the same double, so that the one that reads
// back as the double is its shortest decimal. Scaled to 15 digits before the point, such a number is off by less than a
// quarter after the multiplication, and the division, of two exact numbers, is what reading does.
bool hasFewDigits(double value, Decimal& decimal) {
  constexpr double kLimit = 1e15;
  constexpr double kHalf = 0.5;
  if (value < 1e-7 || value >= kLimit) return false;
  // The guess is the number of places that fit or one more, and 22 at most.
  std::int32_t places = 14 - (binaryExponent(value) * 1233 >> 12);
  double scaled = value * kExactPowers[static_cast<std::size_t>(places)];
  if (scaled >= kLimit) scaled = value * kExactPowers[static_cast<std::size_t>(--places)];
  // Where this is not the nearest integer, the division tells.
  const auto number = static_cast<std::int64_t>(scaled + kHalf);
  decimal = {static_cast<std::uint64_t>(number), -places};
  return static_cast<double>(number) / kExactPowers[static_cast<std::size_t>(places)] == value;
}

Decimal anyShortestDecimal(double value) {
  constexpr std::uint64_t kHidden = std::uint64_t{1} << 52;
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const std::uint64_t fraction = bits & (kHidden - 1);
  const auto biased = static_cast<std::int32_t>(bits >> 52);
  const std::uint64_t significand = biased != 0 ? fraction | kHidden : fraction;
  const std::int32_t exponent = (biased != 0 ? biased : 1) - 1075;
  // Below a power of two the doubles lie twice as close.
  const bool isLowerCloser = fraction == 0 && biased > 1;

  const std::int32_t place = decimalExponentOfTwo(exponent, isLowerCloser);
  const Power& power = kPowers[static_cast<std::size_t>(-place - kLeastPower)];
  const int shift = exponent + binaryExponentOfTen(-place) + 1;
  const std::uint64_t middle = scaled(power, 4 * significand << shift);
  // A middle reads back as the double whose significand is even.
  const std::uint64_t isOdd = significand & 1;
  const std::uint64_t lower = scaled(power, (4 * significand - 2 + isLowerCloser) << shift) + isOdd;
  const std::uint64_t upper = scaled(power, (4 * significand + 2) << shift) - isOdd;

  const std::uint64_t below = middle / 4;
  const std::uint64_t tens = below / 10;
  const bool isTensInside = lower <= 40 * tens, isNextTensInside = 40 * tens + 40 <= upper;
  const bool isBelowInside = lower <= 4 * below, isAboveInside = 4 * below + 4 <= upper;
  // Where both or neither lie inside, the nearer one counts, and the even one of two that are equally near. All choices
  // are made by masks: they can't be foreseen, and compilers would make branches of them.
  const bool isUp = middle + (below & 1) > 4 * below + 2;
  const bool isOneInside = isBelowInside != isAboveInside;
  const bool isAbove = (isOneInside & isAboveInside) | (!isOneInside & isUp);
  const bool areTens = (below >= 10) & (isTensInside != isNextTensInside);
  const std::uint64_t ifTens = 0 - std::uint64_t{areTens};
  return {((tens + isNextTensInside) & ifTens) | ((below + isAbove) & ~ifTens), place + areTens};
}

}  // namespace

Decimal shortestDecimal(double value) {
  Decimal decimal;
  return hasFewDigits(value, decimal) ? decimal : anyShortestDecimal(value);
}

}  // namespace oxr::core
