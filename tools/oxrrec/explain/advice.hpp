#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "records/records.hpp"

namespace oxr::rec {

// Options under which bytes that are no value of their field are one.
struct Advice {
  std::string option;
  PWFData value{STRING};
};

// Finds out which options accept bad fields. Serves one thread.
class Adviser {
 public:
  // The plan must outlive the object.
  explicit Adviser(const RecordPlan& plan) : plan_(plan) {}

  // Tries what often is the reason, one option after the other and then two at a time: what it names is true. Empty if
  // none helps.
  Advice adviceFor(const FieldSeen& field);

 private:
  std::optional<PWFData> read(const FieldSeen& field, std::size_t first, std::size_t second);

  const RecordPlan& plan_;
  std::map<std::pair<std::size_t, std::size_t>, FieldConverter> converters_;  // by form and settings
};

// "--floats ieee-le"
const char* floatOption(FloatForm form);
// Whether bytes look like a number that somebody stored so: it is neither tiny nor huge, and its fraction is such as
// arithmetic leaves it.
bool isLikelyFloat(FloatForm form, std::span<const unsigned char> bytes);

}  // namespace oxr::rec
