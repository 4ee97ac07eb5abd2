#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// Numbers as files have them: of mixed length, one in eight negative, and so many that no processor learns them by
// heart. With 2,048 fields or fewer it does, and whatever branches on a digit or a length looks twice as fast as it is.
namespace oxr::bench {

inline constexpr std::size_t kFields = 16'384;

// Measures `body(field)` for one field after the other, over and over.
template <class Body>
void walkFields(benchmark::State& state, Body body) {
  std::size_t field = 0;
  for (auto _ : state) {
    body(field);
    field = (field + 1) % kFields;
  }
}

struct Decimal {
  std::string digits;  // without leading zeros
  bool negative;
};

inline std::vector<Decimal> decimals(std::size_t maxDigits) {
  std::mt19937_64 random(20240229);
  std::vector<Decimal> all(kFields);
  for (Decimal& decimal : all) {
    const std::size_t count = 1 + random() % maxDigits;
    decimal.digits = static_cast<char>('1' + random() % 9);
    while (decimal.digits.size() < count)
      decimal.digits += static_cast<char>('0' + random() % 10);
    decimal.negative = random() % 8 == 0;
  }
  return all;
}

// kFields fields of `width` bytes, one after the other.
class FieldTable {
 public:
  FieldTable(std::size_t width, std::vector<unsigned char> bytes) : width_(width), bytes_(std::move(bytes)) {}
  const unsigned char* operator[](std::size_t field) const { return bytes_.data() + field * width_; }

 private:
  std::size_t width_;
  std::vector<unsigned char> bytes_;
};

// Packed fields of numbers of up to `maxDigits` digits.
inline FieldTable packedFields(std::size_t width, std::size_t maxDigits) {
  std::vector<unsigned char> bytes;
  for (const Decimal& decimal : decimals(maxDigits)) {
    const std::string digits = std::string(2 * width - 1 - decimal.digits.size(), '0') + decimal.digits;
    for (std::size_t i = 0; i < width; ++i) {
      const int low = i + 1 < width ? digits[2 * i + 1] - '0' : (decimal.negative ? 0xD : 0xC);
      bytes.push_back(static_cast<unsigned char>((digits[2 * i] - '0') << 4 | low));
    }
  }
  return {width, std::move(bytes)};
}
inline FieldTable packedFields(std::size_t width) {
  return packedFields(width, 2 * width - 1);
}

// External decimals whose zero is `zero`, 0xF0 or 0x30, with the sign over the last digit if they have one.
inline FieldTable externalFields(std::size_t width, unsigned zero, bool isSigned) {
  std::vector<unsigned char> bytes;
  for (const Decimal& decimal : decimals(width)) {
    bytes.insert(bytes.end(), width - decimal.digits.size(), static_cast<unsigned char>(zero));
    for (const char digit : decimal.digits)
      bytes.push_back(static_cast<unsigned char>(zero | static_cast<unsigned>(digit - '0')));
    if (isSigned && decimal.negative)
      bytes.back() = static_cast<unsigned char>(bytes.back() ^ (zero == 0x30 ? 0x40 : 0x20));
  }
  return {width, std::move(bytes)};
}

// kFields zero-terminated texts.
class TextTable {
 public:
  explicit TextTable(const std::vector<std::string>& texts) {
    std::size_t longest = 0;
    for (const std::string& text : texts)
      longest = std::max(longest, text.size());
    stride_ = longest + 1;
    units_.resize(texts.size() * stride_);
    for (std::size_t i = 0; i < texts.size(); ++i)
      std::copy(texts[i].begin(), texts[i].end(), units_.begin() + static_cast<std::ptrdiff_t>(i * stride_));
    for (const std::string& text : texts)
      lengths_.push_back(static_cast<unsigned>(text.size()));
  }
  const unsigned short* operator[](std::size_t text) const { return units_.data() + text * stride_; }
  unsigned length(std::size_t text) const { return lengths_[text]; }

 private:
  std::size_t stride_;
  std::vector<unsigned short> units_;
  std::vector<unsigned> lengths_;
};

// Decimals of up to `maxDigits` digits, `places` of them after the point.
inline TextTable decimalTexts(std::size_t maxDigits, std::size_t places) {
  std::vector<std::string> texts;
  for (const auto& [digits, negative] : decimals(maxDigits)) {
    std::string text(digits.size() > places ? 0 : places + 1 - digits.size(), '0');
    text += digits;
    if (places != 0) text.insert(text.size() - places, 1, '.');
    texts.push_back((negative ? "-" : "") + text);
  }
  return TextTable(texts);
}

// Of up to 18 digits.
inline std::vector<std::int64_t> integers() {
  std::vector<std::int64_t> values;
  for (const auto& [digits, negative] : decimals(18))
    values.push_back(std::stoll((negative ? "-" : "") + digits));
  return values;
}

// Amounts with two places, or doubles that need all the digits that a double has.
inline std::vector<double> doubles(bool isLong) {
  std::vector<double> values;
  for (const auto& [digits, negative] : decimals(12))
    values.push_back(std::stod((negative ? "-" : "") + digits) / (isLong ? 300 : 100));
  return values;
}

}  // namespace oxr::bench
