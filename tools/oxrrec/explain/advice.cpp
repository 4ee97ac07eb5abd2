#include "oxrrec/explain/advice.hpp"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "records/program/reading.hpp"

// Each setting is tried on a copy of the form that the field is stored in. Where a sign stands is a setting of single
// fields: files have some that differ, and hardly ever all.

namespace oxr::rec {

namespace {

bool isNumber(Kind kind) {
  return kind == Kind::external || kind == Kind::packed || kind == Kind::edited;
}
bool isExternal(Kind kind) {
  return kind == Kind::external;
}
bool isPacked(Kind kind) {
  return kind == Kind::packed;
}
bool isFloat(Kind kind) {
  return kind == Kind::shortFloat || kind == Kind::longFloat;
}

struct Setting {
  const char* option;  // or, after a ":", what a single field is told
  bool (*isFor)(Kind kind);
  void (*apply)(PhysicalForm& form);
};

// The likely ones first: of several that help, the first is named.
constexpr Setting kSettings[] = {
    {"--blank-numbers null", isNumber, [](PhysicalForm& form) { form.blankNumbers = EmptyNumber::isNull; }},
    {"--low-values null", isNumber, [](PhysicalForm& form) { form.lowValues = EmptyNumber::isNull; }},
    {"--lenient-numbers", isExternal, [](PhysicalForm& form) { form.lenientNumbers = true; }},
    {"--ascii-signs letters", isExternal, [](PhysicalForm& form) { form.hasLetterSigns = true; }},
    {"--ascii-signs plain", isExternal, [](PhysicalForm& form) { form.hasLetterSigns = false; }},
    {":sign=leading", isExternal, [](PhysicalForm& form) { form.sign = SignEnd::leading; }},
    {":sign=trailing", isExternal, [](PhysicalForm& form) { form.sign = SignEnd::trailing; }},
    {":packed-sign=leading", isPacked, [](PhysicalForm& form) { form.packedSign = SignEnd::leading; }},
    {":packed-sign=trailing", isPacked, [](PhysicalForm& form) { form.packedSign = SignEnd::trailing; }},
    {"--ccsid 37", isNumber, [](PhysicalForm& form) { form.ccsid = 37; }},
    {"--ccsid 819", isNumber, [](PhysicalForm& form) { form.ccsid = 819; }},
    {"--floats hex", isFloat, [](PhysicalForm& form) { form.floats = FloatForm::hexBig; }},
    {"--floats hex-le", isFloat, [](PhysicalForm& form) { form.floats = FloatForm::hexLittle; }},
    {"--floats ieee-be", isFloat, [](PhysicalForm& form) { form.floats = FloatForm::ieeeBig; }},
    {"--floats ieee-le", isFloat, [](PhysicalForm& form) { form.floats = FloatForm::ieeeLittle; }},
};
constexpr std::size_t kCount = std::size(kSettings);

std::string optionText(const Setting& setting, const RecordPlan& plan, const Step& step) {
  if (setting.option[0] != ':') return setting.option;
  const Layout& layout = layoutOf(plan, step);
  const std::string record = plan.kinds().size() > 1 ? layout.recordName + '.' : "";
  return "--field " + record + fieldPath(layout, step.item, {}) + setting.option;
}

// The step with its sign where the form puts it.
Step stepIn(Step step, const PhysicalForm& form) {
  if (step.kind != Kind::external || form.sign == SignEnd::asDeclared || step.sign == eSignNone) return step;
  const bool isSeparate = step.sign == eSignLeadingSeparate || step.sign == eSignTrailingSeparate;
  if (form.sign == SignEnd::leading)
    step.sign = isSeparate ? eSignLeadingSeparate : eSignLeadingIncluded;
  else
    step.sign = isSeparate ? eSignTrailingSeparate : eSignTrailingIncluded;
  return step;
}

}  // namespace

Advice Adviser::adviceFor(const FieldSeen& field) {
  if (field.bytes.size() != field.step.size) return {};
  const bool isDate = !plan_.forms()[field.step.form].date.empty();
  const bool hasName = !layoutOf(plan_, field.step).items[field.step.item].isFiller();
  std::vector<std::size_t> those;
  for (std::size_t i = 0; i < kCount; ++i)
    if ((isDate || kSettings[i].isFor(field.step.kind)) && (hasName || kSettings[i].option[0] != ':'))
      those.push_back(i);
  const auto text = [&](std::size_t i) { return optionText(kSettings[i], plan_, field.step); };
  for (const std::size_t one : those)
    if (auto value = read(field, one, one)) return {text(one), *std::move(value)};
  for (const std::size_t one : those)
    for (const std::size_t other : those)
      if (one < other)
        if (auto value = read(field, one, other)) return {text(one) + ' ' + text(other), *std::move(value)};
  return {};
}

// The value under one or two settings.
std::optional<PWFData> Adviser::read(const FieldSeen& field, std::size_t first, std::size_t second) {
  const PhysicalForm& form = plan_.forms()[field.step.form];
  PhysicalForm tried = form;
  kSettings[first].apply(tried);
  const PhysicalForm half = tried;
  kSettings[second].apply(tried);
  if (tried == form || (first != second && (half == form || tried == half))) return std::nullopt;
  const Step step = stepIn(field.step, tried);
  if (isFloat(step.kind) && !isLikelyFloat(tried.floats, field.bytes)) return std::nullopt;
  const std::pair key(std::size_t{field.step.form}, first * kCount + second);
  try {
    FieldConverter& converter = converters_.try_emplace(key, tried).first->second;
    if (converter.diagnose(step, field.bytes.data())) return std::nullopt;
    return converter.convert(step, field.bytes.data());
  } catch (const KelException&) {
  } catch (const FieldRefused&) {
  }
  return std::nullopt;
}

const char* floatOption(FloatForm form) {
  for (const Setting& setting : kSettings) {
    if (setting.isFor != isFloat) continue;
    PhysicalForm set;
    setting.apply(set);
    if (set.floats == form) return setting.option;
  }
  return "";
}

// The exponents of such numbers, of 2 or of 16: up to some 20 decimal digits before the point or behind it.
bool isLikelyFloat(FloatForm form, std::span<const unsigned char> bytes) {
  constexpr int kMostOf2 = 64, kMostOf16 = 16;
  if (std::all_of(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte == 0; })) return true;
  const bool isLittle = form == FloatForm::hexLittle || form == FloatForm::ieeeLittle;
  const unsigned char high = isLittle ? bytes.back() : bytes.front();
  const unsigned char next = isLittle ? bytes[bytes.size() - 2] : bytes[1];
  if (isHexadecimal(form)) return next >> 4 != 0 && std::abs((high & 0x7F) - 0x40) <= kMostOf16;
  const int exponent =
      bytes.size() == 4 ? ((high & 0x7F) << 1 | next >> 7) - 127 : ((high & 0x7F) << 4 | next >> 4) - 1023;
  return std::abs(exponent) <= kMostOf2;
}

}  // namespace oxr::rec
