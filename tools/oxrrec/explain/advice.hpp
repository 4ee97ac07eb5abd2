#pragma once

#include <span>
#include <string>

#include "records/records.hpp"

namespace oxr::rec {

// An option under which bytes that are no value of their field are one.
struct Advice {
  std::string option;
  PWFData value{STRING};
};

// Tries what often is the reason, one option after the other: what it names is true. Empty if none helps.
Advice adviceFor(const Step& step, const PhysicalForm& form, std::span<const unsigned char> bytes);

}  // namespace oxr::rec
