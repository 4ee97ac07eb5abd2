#pragma once

#include <string>

#include "pwfdata.hpp"

namespace oxr::rec {

// The smallest and the largest of the values of a field: numbers by their value, texts by their code units.
class Extremes {
 public:
  // `value` is not null, and of the same type as those before.
  void add(const PWFData& value);
  // As in the JSON; empty if there was no value.
  std::string smallest() const;
  std::string largest() const;

 private:
  PWFData smallest_{STRING};
  PWFData largest_{STRING};
};

}  // namespace oxr::rec
