#include "records/fields/settings.hpp"

#include <algorithm>
#include <fstream>

#include "records/fields/ccsid.hpp"
#include "records/fields/datepattern.hpp"
#include "records/plan/error.hpp"

namespace oxr::rec {

namespace {

// Sets what a word stands for; false for a word that is not known.
template <class Value, std::size_t Size>
bool setWord(const std::pair<std::string_view, Value> (&words)[Size], const std::string& word, Value& target) {
  for (const auto& [name, value] : words) {
    if (name != word) continue;
    target = value;
    return true;
  }
  return false;
}

constexpr std::pair<std::string_view, FloatForm> kFloats[] = {{"hex", FloatForm::hexBig},
                                                              {"hex-le", FloatForm::hexLittle},
                                                              {"ieee-be", FloatForm::ieeeBig},
                                                              {"ieee-le", FloatForm::ieeeLittle}};
constexpr std::pair<std::string_view, EmptyNumber> kEmpty[] = {
    {"error", EmptyNumber::isError}, {"null", EmptyNumber::isNull}, {"zero", EmptyNumber::isZero}};
constexpr std::pair<std::string_view, SignEnd> kEnds[] = {{"leading", SignEnd::leading},
                                                          {"trailing", SignEnd::trailing}};
constexpr std::pair<std::string_view, EEndian> kOrders[] = {{"big", eEndianBig}, {"little", eEndianLittle}};
constexpr std::pair<std::string_view, bool> kYesNo[] = {{"yes", true}, {"no", false}};
constexpr std::pair<std::string_view, bool> kAsciiSigns[] = {{"letters", true}, {"plain", false}};
constexpr std::pair<std::string_view, bool> kEdited[] = {{"number", true}, {"text", false}};
constexpr std::pair<std::string_view, std::uint8_t> kPlus[] = {{"A", 0xA}, {"C", 0xC}, {"E", 0xE}, {"F", 0xF}};

bool setDate(const std::string& value, PhysicalForm& form) {
  form.date = value;
  return !readDatePattern(value).iso.empty();
}

bool setCcsid(const std::string& value, PhysicalForm& form) {
  const auto ccsid = ccsidOf(value);
  if (ccsid) form.ccsid = form.nationalCcsid = *ccsid;
  return ccsid.has_value();
}

bool setPlus(const std::string& value, PhysicalForm& form) {
  if (value != "+") return setWord(kPlus, value, form.plus);
  return form.hasEditedPlus = true;
}

struct Key {
  std::string_view name;
  bool (*set)(const std::string& value, PhysicalForm& form);
  std::string_view values;  // for messages
};
constexpr Key kKeys[] = {
    {"date", setDate, "a pattern such as yyyyMMdd"},
    {"ccsid", setCcsid, "a code page"},
    {"integers", [](const auto& v, auto& f) { return setWord(kOrders, v, f.integerEndian); }, "big or little"},
    {"floats", [](const auto& v, auto& f) { return setWord(kFloats, v, f.floats); }, "hex, hex-le, ieee-be or ieee-le"},
    {"ascii-signs", [](const auto& v, auto& f) { return setWord(kAsciiSigns, v, f.hasLetterSigns); },
     "plain or letters"},
    {"sign", [](const auto& v, auto& f) { return setWord(kEnds, v, f.sign); }, "leading or trailing"},
    {"packed-sign", [](const auto& v, auto& f) { return setWord(kEnds, v, f.packedSign); }, "leading or trailing"},
    {"blank-numbers", [](const auto& v, auto& f) { return setWord(kEmpty, v, f.blankNumbers); }, "error, null or zero"},
    {"low-values", [](const auto& v, auto& f) { return setWord(kEmpty, v, f.lowValues); }, "error, null or zero"},
    {"lenient-numbers", [](const auto& v, auto& f) { return setWord(kYesNo, v, f.lenientNumbers); }, "yes or no"},
    {"edited", [](const auto& v, auto& f) { return setWord(kEdited, v, f.editedAsNumber); }, "text or number"},
    {"plus", setPlus, "A, C, E, F or +"},
};

[[noreturn]] void refuse(std::string_view text, const std::string& what) {
  throw PlanError("--field " + std::string(text) + ": " + what);
}

}  // namespace

FieldSetting readFieldSetting(std::string_view text) {
  const std::size_t colon = text.find(':');
  const std::size_t equals = colon == std::string_view::npos ? colon : text.find('=', colon);
  if (colon == 0 || equals == std::string_view::npos) refuse(text, "this is not PATH:key=value");
  return {std::string(text), std::string(text.substr(0, colon)),
          std::string(text.substr(colon + 1, equals - colon - 1)), std::string(text.substr(equals + 1))};
}

void applySetting(const FieldSetting& setting, PhysicalForm& form) {
  const auto* const key =
      std::find_if(std::begin(kKeys), std::end(kKeys), [&](const Key& k) { return k.name == setting.key; });
  if (key == std::end(kKeys)) {
    std::string known;
    for (const Key& each : kKeys)
      known += (known.empty() ? "" : ", ") + std::string(each.name);
    refuse(setting.text, "there is no setting " + setting.key + "; there are: " + known);
  }
  if (!key->set(setting.value, form)) refuse(setting.text, setting.key + " is " + std::string(key->values));
}

std::vector<std::string> readFieldSettingsFile(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> settings;
  for (std::string line; std::getline(file, line);) {
    const std::size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos || line[begin] == '#') continue;
    settings.push_back(line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin));
  }
  if (!file.eof()) throw PlanError("the settings of fields in " + path + " cannot be read");
  return settings;
}

}  // namespace oxr::rec
