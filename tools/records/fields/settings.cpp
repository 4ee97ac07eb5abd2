#include "records/fields/settings.hpp"

#include <algorithm>
#include <initializer_list>
#include <sstream>
#include <stdexcept>

#include "records/fields/ccsid.hpp"
#include "records/fields/datepattern.hpp"
#include "records/plan/error.hpp"
#include "records/smallfile.hpp"

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
  const DatePattern pattern = readDatePattern(value);
  if (!pattern.fault.empty()) throw std::invalid_argument("the pattern " + value + ' ' + pattern.fault);
  form.date = value;
  return !pattern.iso.empty();
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

bool isAnyOf(Kind kind, std::initializer_list<Kind> kinds) {
  return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

bool hasIncludedSign(const Item& item) {
  return item.sign == SignPlace::leadingIncluded || item.sign == SignPlace::trailingIncluded;
}

bool isBinary(const Item& item) {
  return isAnyOf(item.kind, {Kind::binary, Kind::nativeBinary});
}

bool isFloat(const Item& item) {
  return isAnyOf(item.kind, {Kind::shortFloat, Kind::longFloat});
}

// Whether an item has characters of a code page, digits among them.
bool hasCharacters(const Item& item) {
  return isAnyOf(item.kind, {Kind::text, Kind::edited, Kind::external, Kind::national, Kind::dbcs});
}

bool canBeEmpty(const Item& item, const PhysicalForm& form) {
  const bool isShown = item.kind == Kind::edited && form.editedAsNumber;
  return isShown || !form.date.empty() || isAnyOf(item.kind, {Kind::external, Kind::packed});
}

// Zeros in front of a date are digits of a DISPLAY number like all others; other numbers do not keep them.
bool canBeDate(const Item& item, const PhysicalForm& form) {
  if (item.isGroup() || isFloat(item) || item.kind == Kind::opaque) return false;
  if (isAnyOf(item.kind, {Kind::text, Kind::edited, Kind::national, Kind::dbcs})) return true;
  const DatePattern pattern = readDatePattern(form.date);
  return pattern.isAllDigits && (item.kind != Kind::external || pattern.digits <= item.digits);
}

constexpr int kUtf16 = 1200;
constexpr std::string_view kEmptyItems = "DISPLAY and packed numbers, edited ones that are read as numbers, and dates";

// What a key is for, and what it may say.
struct Key {
  std::string_view name;
  bool (*set)(const std::string& value, PhysicalForm& form);
  std::string_view values;  // for messages
  bool (*isFor)(const Item& item, const PhysicalForm& form);
  std::string_view items;  // those, for messages
};
constexpr Key kKeys[] = {
    {"date", setDate, "a pattern such as yyyyMMdd", canBeDate,
     "text, and for numbers of as many digits as the pattern, which then has nothing but digits"},
    {"ccsid", setCcsid, "a code page", [](const Item& i, const PhysicalForm&) { return hasCharacters(i); },
     "text and digits in characters"},
    {"integers", [](const auto& v, auto& f) { return setWord(kOrders, v, f.integerEndian); }, "big or little",
     [](const Item& i, const PhysicalForm& f) {
       return isBinary(i) || i.kind == Kind::national || (f.ccsid == kUtf16 && hasCharacters(i));
     },
     "binary numbers and UTF-16"},
    {"floats", [](const auto& v, auto& f) { return setWord(kFloats, v, f.floats); }, "hex, hex-le, ieee-be or ieee-le",
     [](const Item& i, const PhysicalForm&) { return isFloat(i); }, "COMP-1 and COMP-2"},
    {"ascii-signs", [](const auto& v, auto& f) { return setWord(kAsciiSigns, v, f.hasLetterSigns); },
     "plain or letters",
     [](const Item& i, const PhysicalForm&) { return hasIncludedSign(i) || (i.kind == Kind::edited && i.isSigned); },
     "DISPLAY numbers whose sign shares a byte with a digit"},
    {"sign", [](const auto& v, auto& f) { return setWord(kEnds, v, f.sign); }, "leading or trailing",
     [](const Item& i, const PhysicalForm&) { return i.kind == Kind::external && i.sign != SignPlace::none; },
     "DISPLAY numbers with a sign"},
    {"packed-sign", [](const auto& v, auto& f) { return setWord(kEnds, v, f.packedSign); }, "leading or trailing",
     [](const Item& i, const PhysicalForm&) { return i.kind == Kind::packed; }, "packed numbers (COMP-3)"},
    {"blank-numbers", [](const auto& v, auto& f) { return setWord(kEmpty, v, f.blankNumbers); }, "error, null or zero",
     canBeEmpty, kEmptyItems},
    {"low-values", [](const auto& v, auto& f) { return setWord(kEmpty, v, f.lowValues); }, "error, null or zero",
     canBeEmpty, kEmptyItems},
    {"lenient-numbers", [](const auto& v, auto& f) { return setWord(kYesNo, v, f.lenientNumbers); }, "yes or no",
     [](const Item& i, const PhysicalForm& f) { return i.kind == Kind::external && f.date.empty(); },
     "DISPLAY numbers that are no dates"},
    {"edited", [](const auto& v, auto& f) { return setWord(kEdited, v, f.editedAsNumber); }, "text or number",
     [](const Item& i, const PhysicalForm&) { return i.kind == Kind::edited; }, "edited pictures"},
    {"plus", setPlus, "A, C, E, F or +",
     [](const Item& i, const PhysicalForm& f) {
       return i.kind == Kind::packed || hasIncludedSign(i) || (i.kind == Kind::edited && f.editedAsNumber);
     },
     "packed numbers, DISPLAY ones whose sign shares a byte, and edited ones that are read as numbers"},
};

const Key& keyOf(const FieldSetting& setting) {
  const auto* const key =
      std::find_if(std::begin(kKeys), std::end(kKeys), [&](const Key& k) { return k.name == setting.key; });
  if (key != std::end(kKeys)) return *key;
  std::string known;
  for (const Key& each : kKeys)
    known += (known.empty() ? "" : ", ") + std::string(each.name);
  refuseSetting(setting, "there is no setting " + setting.key + "; there are: " + known);
}

}  // namespace

FieldSetting readFieldSetting(const FieldSettingText& given) {
  const std::string& text = given.text;
  const std::size_t colon = text.find(':');
  const std::size_t equals = colon == std::string::npos ? colon : text.find('=', colon);
  FieldSetting setting{(given.line.empty() ? "--field" : given.line + ':') + ' ' + text, {}, {}, {}};
  if (colon == 0 || equals == std::string::npos) refuseSetting(setting, "this is not PATH:key=value");
  setting.path = text.substr(0, colon);
  setting.key = text.substr(colon + 1, equals - colon - 1);
  setting.value = text.substr(equals + 1);
  return setting;
}

void refuseSetting(const FieldSetting& setting, const std::string& why) {
  throw PlanError(setting.source + ": " + why);
}

void applySetting(const FieldSetting& setting, PhysicalForm& form) {
  const Key& key = keyOf(setting);
  try {
    if (!key.set(setting.value, form)) refuseSetting(setting, setting.key + " is " + std::string(key.values));
  } catch (const std::invalid_argument& fault) {
    refuseSetting(setting, fault.what());
  }
}

bool hasEffect(const FieldSetting& setting, const Item& item, const PhysicalForm& form) {
  return keyOf(setting).isFor(item, form);
}

std::string whatFor(const FieldSetting& setting) {
  return std::string(keyOf(setting).items);
}

namespace {

std::string textOf(const std::string& path) {
  constexpr std::size_t kMost = std::size_t{256} << 10;
  try {
    return readSmallFile(path, kMost);
  } catch (const SmallFileError& fault) {
    throw PlanError("the settings of fields in " + path + " cannot be read: " + fault.what());
  }
}

}  // namespace

std::vector<FieldSettingText> readFieldSettingsFile(const std::string& path) {
  std::istringstream file(textOf(path));
  std::vector<FieldSettingText> settings;
  unsigned number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const std::size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos || line[begin] == '#') continue;
    settings.emplace_back(line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin),
                          path + ':' + std::to_string(number));
  }
  return settings;
}

}  // namespace oxr::rec
