#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "records/fields/physicalform.hpp"
#include "records/layout.hpp"

namespace oxr::rec {

// "PATH:key=value": what holds for one field, or for all fields of a group.
//
//   date=PATTERN                ccsid=N or a name           integers=big|little
//   floats=hex|hex-le|ieee-be|ieee-le                       ascii-signs=plain|letters
//   sign=leading|trailing       packed-sign=leading|trailing
//   blank-numbers, low-values=error|null|zero               lenient-numbers=yes|no
//   edited=text|number          plus=A|C|E|F|+
struct FieldSetting {
  std::string source;  // what messages begin with: "--field PATH:key=value" or "FILE:LINE: PATH:key=value"
  std::string path;
  std::string key;
  std::string value;
};

// One that is not yet read.
struct FieldSettingText {
  FieldSettingText(std::string given, std::string place = {}) : text(std::move(given)), line(std::move(place)) {}

  std::string text;
  std::string line;  // "FILE:LINE"; empty for one that is in no file
};

// Throws PlanError for text of another form.
FieldSetting readFieldSetting(const FieldSettingText& text);
[[noreturn]] void refuseSetting(const FieldSetting& setting, const std::string& why);
// Whether the setting changes anything of a field that is stored in this form.
bool hasEffect(const FieldSetting& setting, const Item& item, const PhysicalForm& form);
// What it is for, in words.
std::string whatFor(const FieldSetting& setting);
// Throws PlanError for a key or a value that is not known.
void applySetting(const FieldSetting& setting, PhysicalForm& form);

// The settings of a file, a line each; blank lines are passed over, and those that begin with "#". Throws PlanError if
// the file cannot be read.
std::vector<FieldSettingText> readFieldSettingsFile(const std::string& path);

}  // namespace oxr::rec
