#include "oxrrec/profile/fieldprofile.hpp"

#include <algorithm>
#include <vector>

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

bool isFloat(const Step& step) {
  return step.kind == Kind::shortFloat || step.kind == Kind::longFloat;
}

void addBad(FieldProfile& profile, const FieldSeen& field, Adviser& adviser) {
  ++profile.bad;
  ++profile.reasons[field.fault->reason.kind()];
  if (profile.bad > kTriedFields || isFloat(field.step)) return;
  const Advice advice = adviser.adviceFor(field);
  if (!advice.option.empty()) ++profile.helps[advice.option];
}

// "--a x --b" is "--a x" and "--b".
std::vector<std::string> optionsIn(const std::string& text) {
  std::vector<std::string> options;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(" --", at), text.size());
    options.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return options;
}

// Adds options that belong together, unless one of them is taken with another value.
void takeTogether(const std::vector<std::string>& options, std::vector<std::string>& taken) {
  const auto nameOf = [](const std::string& option) { return option.substr(0, option.find(' ')); };
  std::vector<std::string> more;
  for (const std::string& option : options) {
    if (std::find(taken.begin(), taken.end(), option) != taken.end()) continue;
    const auto isOther = [&](const std::string& other) { return nameOf(other) == nameOf(option); };
    if (std::any_of(taken.begin(), taken.end(), isOther)) return;
    more.push_back(option);
  }
  taken.insert(taken.end(), more.begin(), more.end());
}

bool isAll(std::span<const unsigned char> bytes, unsigned char byte) {
  return std::all_of(bytes.begin(), bytes.end(), [byte](unsigned char b) { return b == byte; });
}

}  // namespace

std::string FieldProfile::suggestion() const {
  const auto best = std::max_element(likely.begin(), likely.end());
  const auto form = static_cast<FloatForm>(best - likely.begin());
  if (bad != 0 && 2 * *best > count && *best > likely[static_cast<std::size_t>(floats)]) return floatOption(form);
  std::vector<std::pair<std::string, std::uint64_t>> advice(helps.begin(), helps.end());
  std::stable_sort(advice.begin(), advice.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
  std::vector<std::string> taken;
  for (const auto& [options, helped] : advice)
    takeTogether(optionsIn(options), taken);
  std::string text;
  for (const std::string& option : taken)
    text += (text.empty() ? "" : " ") + option;
  return text;
}

void addTo(FieldProfile& profile, const FieldSeen& field, unsigned char blank, const PhysicalForm& form,
           Adviser& adviser) {
  ++profile.count;
  if (!field.bytes.empty()) {
    if (isAll(field.bytes, blank)) ++profile.blanks;
    if (isAll(field.bytes, 0)) ++profile.nuls;
    countSign(profile, field, form);
    profile.floats = form.floats;
    if (isFloat(field.step) && field.bytes.size() == field.step.size)
      for (std::size_t i = 0; i < profile.likely.size(); ++i)
        if (isLikelyFloat(static_cast<FloatForm>(i), field.bytes)) ++profile.likely[i];
  }
  if (field.fault != nullptr)
    addBad(profile, field, adviser);
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
