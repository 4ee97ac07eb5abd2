#pragma once

#include <unicode/uchar.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/generalway.hpp"
#include "fuzz/pwffrmtr/datetimes.hpp"

// Binary date-times by patterns of any kind, against a model that goes step by step, and back.
namespace oxr::fuzz {

struct BinaryModelField {
  char16_t letter;
  int count;
  std::uint32_t adjustment;
};

// `mask` is what a letter keeps of its unit.
inline std::vector<BinaryModelField> modelScan(const std::u16string& pattern, char16_t mask) {
  std::vector<BinaryModelField> fields;
  char16_t letter = 0;
  int count = 0;
  std::uint32_t adjustment = 0;
  bool isNegative = false, isInNumber = false;
  const auto process = [&] { fields.push_back({letter, count, isNegative ? 0 - adjustment : adjustment}); };
  for (const char16_t unit : pattern) {
    if (isInNumber && u_isdigit(unit)) {
      adjustment = adjustment * 10 + static_cast<std::uint32_t>(u_charDigitValue(unit));
    } else if (unit == letter) {
      count += isInNumber ? 0 : 1;
      isInNumber = false;
    } else if (!isInNumber && (unit == u'-' || unit == u'+')) {
      isNegative |= unit == u'-';
      isInNumber = true;
    } else {
      if (count != 0) {
        process();
        isNegative = false;
        adjustment = 0;
      }
      letter = unit & mask;
      count = 1;
      isInNumber = false;
    }
  }
  if (count != 0) process();
  return fields;
}

// The field of a letter; null for filler and for what is no letter.
inline PWFInt32* binaryModelField(PWFDateTime& value, char16_t letter) {
  static constexpr char16_t kLetters[] = u"yMdHmsS";
  PWFInt32* const fields[] = {&value._year,   &value._month,  &value._day,      &value._hour,
                              &value._minute, &value._second, &value._subsecond};
  const char16_t* const found = std::find(kLetters, kLetters + 7, letter);
  return found == kLetters + 7 ? nullptr : fields[found - kLetters];
}

inline bool isLeapYear(int year) {
  return year % 400 == 0 || (year % 100 != 0 && year % 4 == 0);
}

inline void modelCarryOver(PWFDateTime& value) {
  for (; value._second >= 60; value._second -= 60)
    ++value._minute;
  for (; value._minute >= 60; value._minute -= 60)
    ++value._hour;
  for (; value._hour > 23; value._hour -= 24)
    ++value._day;
  for (; value._month > 12; value._month -= 12)
    ++value._year;
  for (; value._month < 1; value._month += 12)
    --value._year;
  const auto days = [&] {
    return KelDate::daysOfMonth(static_cast<KelDate::Month>(value._month), isLeapYear(value._year));
  };
  while (value._day > days()) {
    value._day -= days();
    if (++value._month > 12) value._month = 1, ++value._year;
  }
  while (value._day < 1) {
    if (--value._month < 1) value._month = 12, --value._year;
    value._day += days();
  }
}

inline PWFDateTime binaryBeginning() {
  return {1970, 1, 1, 0, 0, 0, 0, 6, nullptr, 0, 0};
}

// Nothing where the model would take too many steps.
inline std::optional<std::string> modelReadBinary(const std::vector<unsigned char>& data, const std::u16string& pattern,
                                                  bool lenient) {
  PWFDateTime value = binaryBeginning();
  int offset = 0;
  for (const auto& [letter, count, adjustment] : modelScan(pattern, 0xFFFF)) {
    PWFInt32* const field = binaryModelField(value, letter);
    const int length = static_cast<int>(data.size());
    if (letter != u'X' && offset > length) continue;
    if (letter != u'X' && (field == nullptr || (count != 1 && count != 2 && count != 4))) return "OXR5527";
    if (field != nullptr && offset + count <= length) {
      // The machine's order, a byte at a time; then the sign.
      std::uint32_t bits = 0;
      for (int i = 0; i < count; ++i)
        bits |= std::uint32_t{data[static_cast<std::size_t>(offset + i)]} << 8 * i;
      const int shift = 32 - 8 * count;
      *field =
          static_cast<PWFInt32>(static_cast<std::uint32_t>(static_cast<PWFInt32>(bits << shift) >> shift) + adjustment);
    }
    offset += count;
  }
  for (const char16_t letter : std::u16string_view(u"yMdHms"))
    if (lenient && std::abs(std::int64_t{*binaryModelField(value, letter)}) > 1'000'000) return std::nullopt;
  if (lenient) modelCarryOver(value);
  return shown(value);
}

inline std::string modelWriteBinary(PWFDateTime value, std::size_t length, const std::u16string& pattern) {
  std::string bytes(length, '\0');
  std::size_t offset = 0;
  for (const auto& [letter, count, adjustment] : modelScan(pattern, 0xFF)) {
    const auto size = static_cast<std::size_t>(count);
    if (offset + size > length) return "OXR5528";
    PWFInt32* const field = binaryModelField(value, letter);
    if (field == nullptr && letter != u'X') return "OXR5527";
    const std::uint32_t bits = (field == nullptr ? 0u : static_cast<std::uint32_t>(*field)) - adjustment;
    if (size == 1 || size == 2 || size == 4)
      for (std::size_t i = 0; i < size; ++i)
        bytes[offset + i] = static_cast<char>(bits >> 8 * i);
    else if (field != nullptr)
      return "OXR5528";
    offset += size;
  }
  return bytes;
}

// Fields of usual sizes, each letter once, or any units. `isGood`: what is read by the pattern is written again.
inline std::u16string drawBinaryPattern(Choices& choices, bool& isGood) {
  static constexpr char16_t kUnits[] = u"yMdHmsSXq+-019\u0179\u0663";
  static constexpr std::size_t kSizes[] = {1, 2, 4, 4, 3};
  std::u16string pattern, letters = u"yMdHmsSX";
  isGood = choices.upTo(3) != 0;
  for (std::size_t pieces = choices.upTo(8); pieces > 0; --pieces) {
    if (!isGood || choices.upTo(15) == 0) {
      isGood = false;
      pattern.append(1 + choices.upTo(4), kUnits[choices.upTo(std::size(kUnits) - 2)]);
      continue;
    }
    const std::size_t which = choices.upTo(letters.size() - 1), size = choices.oneOf(kSizes);
    isGood = isGood && size != 3 && letters[which] != u'X';
    pattern.append(size, letters[which]);
    letters.erase(which, 1);
    if (choices.coin()) continue;
    pattern += choices.coin() ? u'+' : u'-';
    for (std::size_t digits = choices.upTo(5); digits > 0; --digits)
      pattern += static_cast<char16_t>(u'0' + choices.upTo(9));
  }
  return pattern;
}

// Bytes of which the upper ones are often those of small numbers.
inline std::vector<unsigned char> drawBinaryFields(Choices& choices) {
  std::vector<unsigned char> data(choices.upTo(32));
  const bool isSmall = choices.coin();
  for (std::size_t i = 0; i < data.size(); ++i) {
    data[i] = choices.any<unsigned char>();
    if (isSmall && i % 4 > 1) data[i] = data[i & ~std::size_t{3}] > 200 ? 0xFF : 0;
  }
  return data;
}

inline void checkBinaryDateTime(Choices& choices) {
  DateTimeSettings set;
  set.lenient = choices.coin();
  DataCnv converter = dateTimeConverter(set);
  bool isGood = false;
  const std::u16string pattern = drawBinaryPattern(choices, isGood);
  const KelWstring units(reinterpret_cast<const unsigned short*>(pattern.data()),
                         static_cast<unsigned>(pattern.size()));
  const std::string what = toUtf8(units) + (set.lenient ? ", lenient" : "");
  const std::vector<unsigned char> data = drawBinaryFields(choices);
  const int length = static_cast<int>(data.size());
  const auto read = [&] { return converter.BinaryToDateTime(data.data(), length, units.characters()); };
  const auto model = modelReadBinary(data, pattern, set.lenient);
  const std::string found = outcomeOf(read);
  if (model) requireEqual(found, *model, what + ", read");
  requireEqual(outcomeOf([&] { return theGeneralWay(read); }), found, what + ", read the general way");

  PWFDateTime value = binaryBeginning();
  for (const char16_t letter : std::u16string_view(u"yMdHmsS"))
    *binaryModelField(value, letter) = choices.coin() ? choices.between(-1, 3000) : choices.any<PWFInt32>();
  std::vector<unsigned char> target(data.size(), 0xA5);
  const auto write = [&] {
    converter.BinaryFromDateTime(value, target.data(), length, units.characters());
    return std::string(target.begin(), target.end());
  };
  const std::string written = modelWriteBinary(value, target.size(), pattern);
  requireEqual(outcomeOf(write), written, what + ", written");
  requireEqual(outcomeOf([&] { return theGeneralWay(write); }), written, what + ", written the general way");

  if (!isGood || set.lenient || modelScan(pattern, 0xFFFF).empty()) return;
  std::size_t size = 0;
  for (const BinaryModelField& field : modelScan(pattern, 0xFFFF))
    size += static_cast<std::size_t>(field.count);
  if (size > data.size()) return;
  converter.BinaryFromDateTime(read(), target.data(), static_cast<int>(size), units.characters());
  require(std::equal(target.begin(), target.begin() + static_cast<std::ptrdiff_t>(size), data.begin()),
          what + ", read and written again");
}

}  // namespace oxr::fuzz
