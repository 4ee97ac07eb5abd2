#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "harness/text.hpp"
#include "kelexception.hpp"

namespace oxr::test {

// What a call raised: the class of exception, the whole message number, the inserts in order. Nothing raised: all
// empty.
//
// Example:
//   EXPECT_EQ(raisedBy([&] { converter.PadData(nullptr, 1, 0, eJustifyLeft, 32, true); }),
//             conversionFailure(5502, {"CPI Internal Error", "Invalid argument for DataCnv::PadData"}));
struct Raised {
  std::string kind;
  int number = 0;
  std::vector<std::string> inserts;

  friend bool operator==(const Raised&, const Raised&) = default;
  friend void PrintTo(const Raised& raised, std::ostream* out) {
    if (raised.kind.empty()) {
      *out << "nothing raised";
      return;
    }
    *out << raised.kind << " OXR" << (raised.number & 0xFFFF) << std::hex << " (0x" << raised.number << ')' << std::dec;
    for (const std::string& insert : raised.inserts)
      *out << " [" << insert << ']';
  }
};

// Runs `call`. Anything thrown that is no KelRecoverableException passes through and fails the test.
template <class F>
Raised raisedBy(F call) {
  try {
    call();
  } catch (const KelConversionException& e) {
    return {"KelConversionException", e.messageNumber(), e.inserts()};
  } catch (const KelParserException& e) {
    return {"KelParserException", e.messageNumber(), e.inserts()};
  } catch (const KelRecoverableException& e) {
    return {"KelRecoverableException", e.messageNumber(), e.inserts()};
  }
  return {};
}

// Expected errors by their number in the catalogue, such as 5502.
inline Raised failureOf(const char* kind, int message, std::vector<std::string> inserts) {
  return {kind, static_cast<int>(0xC0000000u | static_cast<unsigned>(message)), std::move(inserts)};
}
inline Raised conversionFailure(int message, std::vector<std::string> inserts) {
  return failureOf("KelConversionException", message, std::move(inserts));
}
inline Raised parserFailure(int message, std::vector<std::string> inserts) {
  return failureOf("KelParserException", message, std::move(inserts));
}
inline Raised recoverableFailure(int message, std::vector<std::string> inserts) {
  return failureOf("KelRecoverableException", message, std::move(inserts));
}

}  // namespace oxr::test
