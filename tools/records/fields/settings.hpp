#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "records/fields/physicalform.hpp"

namespace oxr::rec {

// "PATH:key=value": what holds for one field, or for all fields of a group.
//
//   date=PATTERN                ccsid=N or a name           integers=big|little
//   floats=hex|hex-le|ieee-be|ieee-le                       ascii-signs=plain|letters
//   sign=leading|trailing       packed-sign=leading|trailing
//   blank-numbers, low-values=error|null|zero               lenient-numbers=yes|no
//   edited=text|number          plus=A|C|E|F|+
struct FieldSetting {
  std::string text;
  std::string path;
  std::string key;
  std::string value;
};

// Throws PlanError for text of another form.
FieldSetting readFieldSetting(std::string_view text);
// Throws PlanError for a key or a value that is not known.
void applySetting(const FieldSetting& setting, PhysicalForm& form);

// The settings of a file, a line each; blank lines are passed over, and those that begin with "#". Throws PlanError if
// the file cannot be read.
std::vector<std::string> readFieldSettingsFile(const std::string& path);

}  // namespace oxr::rec
