#include "records/fields/reasons.hpp"

#include <algorithm>
#include <iterator>
#include <vector>

#include "kelprintable.hpp"
#include "kelwstringconvertor.hpp"
#include "records/counted.hpp"

// A reason is told in two parts: the same words for all fields that are bad in this way, from a table, and behind them
// what stands in this one.

namespace oxr::rec {

namespace {

struct Words {
  FaultCode code;
  const char* kind;
  bool tellsByte = true;  // numbers[0] is the place of a byte
};
constexpr Words kWords[] = {
    {FaultCode::none, "", false},
    {FaultCode::library, "", false},
    {FaultCode::recordEnds, "the record ends before the field does", false},
    {FaultCode::recordLonger, "the record is longer than its layout", false},
    {FaultCode::badCount, "the count is not within its bounds", false},
    {FaultCode::noCount, "no count was read for it", false},
    {FaultCode::noKind, "no condition (--when) holds for this value", false},
    {FaultCode::blanks, "holds blanks, not digits"},
    {FaultCode::lowValues, "holds NULs, not digits"},
    {FaultCode::padded, "its digits are padded with blanks or NULs"},
    {FaultCode::packedDigit, "not a packed decimal"},
    {FaultCode::packedSign, "not a packed decimal"},
    {FaultCode::packedMinus, "a minus where the picture has no sign"},
    {FaultCode::unsignedPackedDigit, "not a packed number without a sign"},
    {FaultCode::externalDigit, "not a number"},
    {FaultCode::externalSign, "not a number"},
    {FaultCode::letterSign, "not a number"},
    {FaultCode::plainSign, "not a number"},
    {FaultCode::separateSign, "its sign is missing"},
    {FaultCode::onlySign, "not a number"},
    {FaultCode::unaskedSign, "a sign where the picture has none"},
    {FaultCode::editedCharacter, "no edited number"},
    {FaultCode::editedEmpty, "no edited number"},
    {FaultCode::notANumber, "not a number (NaN)", false},
    {FaultCode::infinite, "an infinite number", false},
    {FaultCode::belowNormal, "a number too small for a fraction that begins with no zero", false},
    {FaultCode::numberText, "not a number", false},
    {FaultCode::singleBytesOnly, "its code page has no double-byte characters", false},
    {FaultCode::negativeDate, "no date", false},
    {FaultCode::dateText, "no date", false},
    {FaultCode::dateLength, "no date", false},
    {FaultCode::dateCharacter, "no date", false},
    {FaultCode::datePart, "no date", false},
    {FaultCode::dateDay, "no date", false},
};

constexpr bool areInOrder() {
  for (std::size_t i = 0; i < std::size(kWords); ++i)
    if (kWords[i].code != static_cast<FaultCode>(i)) return false;
  return true;
}
static_assert(areInOrder() && std::size(kWords) == static_cast<std::size_t>(FaultCode::dateDay) + 1);

const Words& wordsOf(FaultCode code) {
  return kWords[static_cast<std::size_t>(code)];
}

// The parts of dates that a letter of a pattern stands for.
struct Part {
  char letter;
  const char* name;
};
constexpr Part kParts[] = {{'y', "year "}, {'M', "month "},  {'d', "day "},   {'D', "day "},
                           {'H', "hour "}, {'m', "minute "}, {'s', "second "}};

std::string partName(std::int64_t letter) {
  const Part* const part =
      std::find_if(std::begin(kParts), std::end(kParts), [letter](const Part& p) { return p.letter == letter; });
  return part == std::end(kParts) ? "part " : part->name;
}

std::string hexOf(std::int64_t value, int digits) {
  std::string text;
  while (digits-- > 0)
    text += "0123456789ABCDEF"[value >> 4 * digits & 15];
  return text;
}

// Nothing of a record shall move a terminal's cursor.
bool isShown(std::int64_t unit) {
  return unit >= 0 && unit < 0xFFF0 && (unit & 0xF800) != 0xD800 && !isControl(static_cast<std::uint32_t>(unit));
}

// A character as it is, if a terminal can show it.
std::string quoted(std::int64_t unit) {
  if (!isShown(unit)) return {};
  const auto character = static_cast<unsigned short>(unit);
  return '"' + toUtf8(UnitView(&character, 1)) + '"';
}

std::string byteOf(std::size_t size, std::int64_t place) {
  return "byte " + std::to_string(place + 1) + " of " + std::to_string(size);
}

// "byte 2 of 5 is 4F ("O")"
std::string whatStands(const FaultReason& reason, std::size_t size) {
  const std::string character = quoted(reason.numbers[2]);
  return byteOf(size, reason.numbers[0]) + " is " + hexOf(reason.numbers[1], 2) +
         (character.empty() ? "" : " (" + character + ')');
}

std::string halfByte(const FaultReason& reason, std::size_t size) {
  return "half byte " + hexOf(reason.numbers[1], 1) + " in " + byteOf(size, reason.numbers[0]);
}

// Behind the words of its kind; where there is nothing to say but those, empty.
std::string detailOf(const FaultReason& reason, std::size_t size) {
  const auto number = [&reason](std::size_t i) { return std::to_string(reason.numbers[i]); };
  switch (reason.code) {
    case FaultCode::blanks:
      return "; --blank-numbers null or zero would accept it";
    case FaultCode::lowValues:
      return "; --low-values null or zero would accept it";
    case FaultCode::padded:
      return ": " + whatStands(reason, size) + "; --lenient-numbers would accept it";
    case FaultCode::packedDigit:
    case FaultCode::packedMinus:
    case FaultCode::unsignedPackedDigit:
      return ": " + halfByte(reason, size);
    case FaultCode::packedSign:
      return ": " + halfByte(reason, size) + ", where its sign should stand";
    case FaultCode::externalDigit:
      return ": " + whatStands(reason, size) + ", no digit";
    case FaultCode::externalSign:
      return ": " + whatStands(reason, size) + ", no digit with a sign";
    case FaultCode::letterSign:
      return ": " + whatStands(reason, size) + ", no digit with a sign; --ascii-signs letters would accept it";
    case FaultCode::plainSign:
      return ": " + whatStands(reason, size) + ", no digit with a sign; --ascii-signs plain would accept it";
    case FaultCode::separateSign:
      return ": " + whatStands(reason, size) + ", not + or -";
    case FaultCode::unaskedSign:
    case FaultCode::editedCharacter:
      return ": " + whatStands(reason, size);
    case FaultCode::onlySign:
    case FaultCode::editedEmpty:
      return ": it has no digit";
    case FaultCode::numberText:
    case FaultCode::dateText:
      return ": it reads " + reason.detail;
    case FaultCode::singleBytesOnly:
      return ": page " + number(0);
    case FaultCode::negativeDate:
      return ": it is below zero";
    case FaultCode::dateLength:
      return ": it has " + counted(static_cast<std::uint64_t>(reason.numbers[0]), "character") + ", and its pattern " +
             number(1);
    case FaultCode::dateCharacter:
      return ": character " + std::to_string(reason.numbers[0] + 1) + " is " +
             (quoted(reason.numbers[2]).empty() ? "U+" + hexOf(reason.numbers[2], 4) : quoted(reason.numbers[2]));
    case FaultCode::datePart:
      return ": there is no " + partName(reason.numbers[0]) + number(1);
    case FaultCode::dateDay:
      return ": month " + number(0) + " has no day " + number(1);
    default:
      return {};
  }
}

}  // namespace

std::string quotedText(UnitView text) {
  constexpr std::size_t kMost = 50;
  std::u16string shown;
  for (const unsigned short unit : text.substr(0, kMost))
    shown += isShown(unit) ? static_cast<char16_t>(unit) : u'·';
  const std::vector<unsigned short> units(shown.begin(), shown.end());
  return '"' + toUtf8(UnitView(units.data(), units.size())) + (text.size() > kMost ? "...\"" : "\"");
}

std::string FaultReason::kind() const {
  if (code != FaultCode::library) return wordsOf(code).kind;
  // What a conversion says ends with what it was given, in text or as bytes, and with its number.
  std::string text = detail;
  text.resize(std::min(text.find_first_of(":("), text.size()));
  text.resize(std::min(text.rfind("; "), text.size()));
  text.resize(text.find_last_not_of(' ') + 1);
  return text;
}

std::string FaultReason::text(std::size_t size) const {
  const auto number = [this](std::size_t i) { return std::to_string(numbers[i]); };
  switch (code) {
    case FaultCode::library:
      return detail;
    case FaultCode::recordEnds:
      return "the record ends after " + counted(static_cast<std::uint64_t>(numbers[0]), "byte") +
             ", before the field does";
    case FaultCode::recordLonger:
      return "the record has " + counted(static_cast<std::uint64_t>(numbers[0]), "byte") + ", " + number(1) +
             " more than its layout";
    case FaultCode::badCount:
      return "the count is " + (numbers[0] == -1 ? std::string("no number of times") : number(0)) + ", not within " +
             number(1) + " and " + number(2);
    default:
      return kind() + detailOf(*this, size) + (message == 0 ? "" : " (OXR" + std::to_string(message) + ')');
  }
}

std::optional<std::uint32_t> FaultReason::badByte() const {
  if (!wordsOf(code).tellsByte) return std::nullopt;
  return static_cast<std::uint32_t>(numbers[0]);
}

}  // namespace oxr::rec
