#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "oxrrec/explain/advice.hpp"
#include "oxrrec/profile/extremes.hpp"
#include "records/records.hpp"

namespace oxr::rec {

// What the bytes of a field are in all records.
struct FieldProfile {
  std::string path;  // without the numbers of occurrences
  std::string picture{};
  std::uint64_t count = 0;
  std::uint64_t bad = 0;
  std::uint64_t nulls = 0;
  std::uint64_t blanks = 0;  // blank all over
  std::uint64_t nuls = 0;    // NUL all over
  // How often each sign half byte (packed) or zone of the byte with the sign (DISPLAY) was there.
  std::array<std::uint64_t, 16> signs{};
  Extremes extremes{};
  std::map<std::string, std::uint64_t> reasons{};  // why fields are bad, and how many
  std::map<std::string, std::uint64_t> helps{};    // options, and how many of the bad fields they make readable
  // Of floats: how many of all are likely in each form (FloatForm). Only all of them together tell it, since most bytes
  // are a number in each.
  std::array<std::uint64_t, 4> likely{};
  FloatForm floats = FloatForm::hexBig;  // the form that they were read in

  // The options that help the bad fields, those first that help most of them; empty if none does.
  std::string suggestion() const;
};

// Adds a field that was read. `blank` is the byte of one, `form` how the field is stored.
void addTo(FieldProfile& profile, const FieldSeen& field, unsigned char blank, const PhysicalForm& form,
           Adviser& adviser);

// "C: 120, D: 3"; empty if the field has no signs.
std::string signsText(const FieldProfile& profile);

}  // namespace oxr::rec
