#include "oxrrec/profile/fieldprofile.hpp"

#include <algorithm>

#include "oxrrec/explain/advice.hpp"

namespace oxr::rec {

namespace {

// To try out options takes far longer than to read a field: of each field the first bad ones tell enough.
constexpr std::uint64_t kTriedFields = 1000;

void countSign(FieldProfile& profile, const FieldSeen& field, const PhysicalForm& form) {
  const ESign sign = field.step.sign;
  if (field.step.kind == Kind::packed)
    ++profile.signs[form.packedSign == SignEnd::leading ? field.bytes.front() >> 4 : field.bytes.back() & 15];
  else if (field.step.kind == Kind::external && sign == eSignTrailingIncluded)
    ++profile.signs[field.bytes.back() >> 4];
  else if (field.step.kind == Kind::external && sign == eSignLeadingIncluded)
    ++profile.signs[field.bytes.front() >> 4];
}

void addBad(FieldProfile& profile, const FieldSeen& field, const PhysicalForm& form) {
  ++profile.bad;
  ++profile.reasons[field.fault->reason.kind()];
  if (profile.bad > kTriedFields) return;
  const Advice advice = adviceFor(field.step, form, field.bytes);
  if (!advice.option.empty()) ++profile.helps[advice.option];
}

bool isAll(std::span<const unsigned char> bytes, unsigned char byte) {
  return std::all_of(bytes.begin(), bytes.end(), [byte](unsigned char b) { return b == byte; });
}

}  // namespace

const std::pair<const std::string, std::uint64_t>* FieldProfile::suggestion() const {
  const auto most =
      std::max_element(helps.begin(), helps.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
  return most == helps.end() ? nullptr : &*most;
}

void addTo(FieldProfile& profile, const FieldSeen& field, unsigned char blank, const PhysicalForm& form) {
  ++profile.count;
  if (!field.bytes.empty()) {
    if (isAll(field.bytes, blank)) ++profile.blanks;
    if (isAll(field.bytes, 0)) ++profile.nuls;
    countSign(profile, field, form);
  }
  if (field.fault != nullptr)
    addBad(profile, field, form);
  else if (field.value.isNull())
    ++profile.nulls;
  else
    profile.extremes.add(field.value);
}

std::string signsText(const FieldProfile& profile) {
  std::string text;
  for (std::size_t sign = 0; sign < profile.signs.size(); ++sign) {
    if (profile.signs[sign] == 0) continue;
    text += (text.empty() ? "" : ", ") + std::string(1, "0123456789ABCDEF"[sign]) + ": " +
            std::to_string(profile.signs[sign]);
  }
  return text;
}

}  // namespace oxr::rec
