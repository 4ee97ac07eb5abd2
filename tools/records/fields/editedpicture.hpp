#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "kelunits.hpp"
#include "records/fields/numbers.hpp"

namespace oxr::rec {

// A picture of a number with editing symbols, such as "$$,$$9.99CR": how the number is shown, and what it is when it
// is shown so.
class EditedPicture {
 public:
  static constexpr std::size_t kMostCharacters = 1000;

  // What else the copybook says of it.
  struct Clauses {
    bool isBlankWhenZero = false;
    bool hasDecimalComma = false;  // comma and point have changed places, in the picture and in what it shows
  };

  // The picture as the copybook has it, which has at most so many characters; isNumber holds of it.
  EditedPicture(std::string_view picture, const Clauses& clauses);

  // Whether the picture is one of a number: it has no X and no A.
  static bool isNumber(std::string_view picture);

  // Digits that a number has room for, those behind the point among them, and how many places it has: as in
  // Item::scale.
  std::size_t digits() const { return digits_; }
  int scale() const { return scale_; }
  // Whether the picture has a place for a sign.
  bool isSigned() const { return isSigned_; }
  // Whether blanks all over show a zero.
  bool showsZeroAsBlanks() const { return clauses_.isBlankWhenZero || (!hasNine_ && fill_ == ' '); }
  // A symbol for each character of the field: CR is "cr" and DB is "db"; the decimal point is always ".".
  const std::string& symbols() const { return symbols_; }

  // The characters of a number, of which all digits() are given. `plus` is what "-" shows of one that is not negative.
  std::string edit(std::string_view digits, bool isNegative, char plus = ' ') const;
  // The number of such characters, with those at the end left out that are blanks; nothing if they show none, or have
  // what the picture does not show at their place. `badAt`, if it is given, then is the place of the first such
  // character, npos if a digit is missing.
  std::optional<EditedNumber> read(UnitView text, std::size_t* badAt = nullptr) const;

 private:
  void add(char symbol, std::size_t count);
  void count();
  std::string zero() const;
  std::string editWithPoint(std::string_view digits, bool isNegative, char plus) const;
  bool mayShow(std::size_t at, unsigned short unit, bool isDigitShown) const;

  std::string symbols_;
  std::size_t pointAt_ = std::string::npos;  // the symbol behind the decimal point, where no character shows it
  std::size_t digits_ = 0;
  int scale_ = 0;
  bool isSigned_ = false;
  bool hasNine_ = false;  // a digit is shown even of zero
  char floating_ = 0;     // the symbol that moves to the first digit
  char fill_ = ' ';       // in the place of suppressed digits
  const Clauses clauses_;
};

}  // namespace oxr::rec
