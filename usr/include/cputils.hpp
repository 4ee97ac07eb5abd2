#pragma once

#include <string>

#include "oxrexport.hpp"
#include "pwftypes.hpp"

// Values as text, for trace and for the inserts of failures.
//
// Example:
//   const unsigned char field[] = {0x00, 0xAB};
//   CPUtils::binaryDump(field, 2);  // "0x00ab"
class OXR_EXPORT CPUtils {
 public:
  // Gives "0x" and two lower-case digits for each byte. A length of 0 or less gives "0x"; `data` is then not looked at.
  static std::string binaryDump(const unsigned char* data, int length);

  // Gives all fields by name: "year = 2024, month = 2, ...". A field that is not set shows as -2147483648, the zone as
  // an address, 0 for none.
  static std::string pwfDateTimeDump(const PWFDateTime& value);
};
