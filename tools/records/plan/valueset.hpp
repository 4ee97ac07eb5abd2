#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kelunits.hpp"
#include "kelwstring.hpp"
#include "pwfdata.hpp"

namespace oxr::rec {

// Some values of a field, as people write them: "C", "C,D", "10-19", "'A-B',' '". Numbers are compared as numbers, text
// as text without its trailing blanks, unit by unit.
class ValueSet {
 public:
  // Throws std::invalid_argument, whose what() says what is wrong with the text.
  explicit ValueSet(std::string_view text);
  // Why a field of numbers, or of text, would never hold one of them; empty if it may.
  std::string fault(bool areNumbers) const;
  // Whether a value is one of them. A null is none.
  bool holds(const PWFData& value) const;

 private:
  // A single value is a range from itself to itself.
  struct Range {
    KelWstring first;
    KelWstring last;
  };
  bool holdsText(UnitView text) const;
  bool holdsNumber(UnitView text) const;

  std::vector<Range> ranges_;
};

}  // namespace oxr::rec
