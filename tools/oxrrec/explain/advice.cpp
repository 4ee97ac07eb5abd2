#include "oxrrec/explain/advice.hpp"

namespace oxr::rec {

namespace {

struct Setting {
  const char* option;
  void (*apply)(PhysicalForm& form);
};

// The likely ones first: of several that help, the first is named.
constexpr Setting kSettings[] = {
    {"--blank-numbers null", [](PhysicalForm& form) { form.blankNumbers = EmptyNumber::isNull; }},
    {"--low-values null", [](PhysicalForm& form) { form.lowValues = EmptyNumber::isNull; }},
    {"--lenient-numbers", [](PhysicalForm& form) { form.lenientNumbers = true; }},
    {"--ascii-signs letters", [](PhysicalForm& form) { form.hasLetterSigns = true; }},
    {"--ascii-signs plain", [](PhysicalForm& form) { form.hasLetterSigns = false; }},
    {"--ccsid 37", [](PhysicalForm& form) { form.ccsid = 37; }},
    {"--ccsid 819", [](PhysicalForm& form) { form.ccsid = 819; }},
    {"--floats hex", [](PhysicalForm& form) { form.floats = FloatForm::hexBig; }},
    {"--floats ieee-be", [](PhysicalForm& form) { form.floats = FloatForm::ieeeBig; }},
    {"--floats ieee-le", [](PhysicalForm& form) { form.floats = FloatForm::ieeeLittle; }},
};

}  // namespace

Advice adviceFor(const Step& step, const PhysicalForm& form, std::span<const unsigned char> bytes) {
  for (const Setting& setting : kSettings) {
    PhysicalForm tried = form;
    setting.apply(tried);
    if (tried == form || bytes.size() != step.size) continue;
    try {
      return {setting.option, FieldConverter(tried).convert(step, bytes.data())};
    } catch (const KelException&) {
    } catch (const FieldRefused&) {
    }
  }
  return {};
}

}  // namespace oxr::rec
