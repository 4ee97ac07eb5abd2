#include "core/base64.hpp"

#include <algorithm>
#include <cstring>

#include "core/vectors.hpp"

namespace oxr::core {

constexpr std::array<unsigned short, 64> kBase64Alphabet = [] {
  constexpr char kUnits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<unsigned short, 64> alphabet{};
  for (std::size_t value = 0; value < alphabet.size(); ++value)
    alphabet[value] = static_cast<unsigned char>(kUnits[value]);
  return alphabet;
}();

// A byte for each unit there is, so that the test and the value of a unit are one load.
constexpr std::array<unsigned char, 0x10000> kBase64Values = [] {
  std::array<unsigned char, 0x10000> values{};
  for (unsigned char& value : values)
    value = kForeignUnit;
  for (std::size_t value = 0; value < kBase64Alphabet.size(); ++value)
    values[kBase64Alphabet[value]] = static_cast<unsigned char>(value);
  values['='] = 0;
  return values;
}();

namespace {

constexpr unsigned short kPad = '=';

void encodeGroup(unsigned a, unsigned b, unsigned c, unsigned short* out) {
  const unsigned bits = a << 16 | b << 8 | c;
  out[0] = kBase64Alphabet[bits >> 18];
  out[1] = kBase64Alphabet[bits >> 12 & 0x3F];
  out[2] = kBase64Alphabet[bits >> 6 & 0x3F];
  out[3] = kBase64Alphabet[bits & 0x3F];
}

// The 24 bits of four units, or kForeignGroup and more if one of them is foreign.
std::uint32_t bitsOf(const unsigned short* units) {
  const auto value = [units](int i) { return std::uint32_t{kBase64Values[units[i]]}; };
  const std::uint32_t foreign = (value(0) | value(1) | value(2) | value(3)) & kForeignUnit;
  return value(0) << 18 | value(1) << 12 | value(2) << 6 | value(3) | foreign << 24;
}
constexpr std::uint32_t kForeignGroup = std::uint32_t{kForeignUnit} << 24;

using Group = std::array<unsigned short, 4>;

// Takes the next four units that are not foreign, fewer at the end of the text. Moves `next` past all it looked at.
std::size_t takeGroup(const unsigned short*& next, const unsigned short* end, Group& group) {
  if (end - next >= 4 && bitsOf(next) < kForeignGroup) {
    std::memcpy(group.data(), next, sizeof group);
    next += group.size();
    return group.size();
  }
  std::size_t found = 0;
  for (; next != end && found < group.size(); ++next)
    if (kBase64Values[*next] < kForeignUnit) group[found++] = *next;
  return found;
}

// Only the last two places are looked at for padding: CPBase64Converter.ReadsAndWritesText.
std::size_t bytesIn(const Group& group) {
  return group[2] == kPad ? 1 : group[3] == kPad ? 2 : 3;
}

void writeBytes(std::uint32_t bits, std::size_t count, unsigned char* out) {
  out[0] = static_cast<unsigned char>(bits >> 16);
  if (count > 1) out[1] = static_cast<unsigned char>(bits >> 8);
  if (count > 2) out[2] = static_cast<unsigned char>(bits);
}

}  // namespace

void encodeBase64(std::span<const unsigned char> data, unsigned short* out) {
  const std::size_t taken = vectorLoops().encodeBase64(data.data(), data.size(), out);
  out += taken / 3 * 4;
  data = data.subspan(taken);
  for (; data.size() >= 3; data = data.subspan(3), out += 4)
    encodeGroup(data[0], data[1], data[2], out);
  if (data.empty()) return;
  encodeGroup(data[0], data.size() == 2 ? data[1] : 0, 0, out);
  if (data.size() == 1) out[2] = kPad;
  out[3] = kPad;
}

Base64Decoded decodeBase64(UnitView text, std::span<unsigned char> target) {
  const unsigned short* next = text.data();
  const unsigned short* const end = next + text.size();
  std::size_t written = 0;
  // The vectors stop at a block that they cannot read. From there it goes by groups, up to the first clean one after
  // the foreign units that are the reason.
  bool cleanAgain = true;
  for (bool passedForeign = false;;) {
    if (cleanAgain) {
      const auto length = static_cast<std::size_t>(end - next);
      const std::size_t taken =
          vectorLoops().decodeBase64(next, length, target.data() + written, target.size() - written);
      next += taken;
      written += taken / 4 * 3;
      passedForeign = false;
    }
    Group group;
    const unsigned short* const start = next;
    const std::size_t found = takeGroup(next, end, group);
    if (found < group.size()) return {written, found == 0 ? Base64Fault::none : Base64Fault::incomplete};
    const bool clean = next - start == 4;
    cleanAgain = clean && passedForeign;
    passedForeign |= !clean;

    const std::size_t count = bytesIn(group);
    if (count > target.size() - written) return {written, Base64Fault::targetFull};
    writeBytes(bitsOf(group.data()), count, target.data() + written);
    written += count;
    if (count < 3) return {written, Base64Fault::none};
  }
}

}  // namespace oxr::core
