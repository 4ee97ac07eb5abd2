// Base64 text of any units against a naive reader, and any bytes to text and back.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base64.hpp"
#include "core/base64.hpp"
#include "kelexception.hpp"

namespace {

using Bytes = std::vector<unsigned char>;
using Units = std::vector<unsigned short>;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void require(bool holds) {
  if (!holds) std::abort();
}

// -1 for a foreign unit.
int valueOf(unsigned short unit) {
  if (unit == '=') return 0;
  for (int value = 0; value < 64; ++value)
    if (unit == kAlphabet[value]) return value;
  return -1;
}

// Whether the text is complete; its bytes.
bool readByModel(const Units& text, Bytes& bytes) {
  for (std::size_t next = 0;;) {
    int values[4];
    unsigned short units[4];
    for (int i = 0; i < 4;) {
      if (next == text.size()) return i == 0;
      units[i] = text[next++];
      values[i] = valueOf(units[i]);
      if (values[i] >= 0) ++i;
    }
    bytes.push_back(static_cast<unsigned char>(values[0] << 2 | values[1] >> 4));
    if (units[2] == '=') return true;
    bytes.push_back(static_cast<unsigned char>(values[1] << 4 | values[2] >> 2));
    if (units[3] == '=') return true;
    bytes.push_back(static_cast<unsigned char>(values[2] << 6 | values[3]));
  }
}

// What a byte of the input stands for: mostly a letter, so that there are clean stretches and foreign units between.
unsigned short unitOf(std::uint8_t byte) {
  if (byte < 240) return static_cast<unsigned char>(kAlphabet[byte % 64]);
  constexpr unsigned short kOthers[] = {'=',  '\r', '\n', ' ',    0,      '-',    '_',    0x80,
                                        0xAB, 0xFF, '@',  0x0141, 0x2B00, 0x7F41, 0x8041, 0xFF41};
  return kOthers[byte - 240];
}

void checkReading(const Units& text) {
  Bytes expected;
  const bool complete = readByModel(text, expected);
  Bytes read;
  bool raised = false;
  try {
    const PWFData value = CPBase64Converter::binFromBase64(text.data(), static_cast<int>(text.size()));
    const auto* const bytes = static_cast<const unsigned char*>(value.getDataValue());
    require(!value.isNull());
    read.assign(bytes, bytes + value.getDataLength());
  } catch (const KelConversionException& e) {
    raised = true;
    require(e.messageNumber() == static_cast<int>(0xC000157Eu));
  }
  require(raised != complete);
  if (complete) require(read == expected);

  // A target of any size gets whole groups only, and nothing behind its end.
  Bytes target(expected.size() / 2);
  const auto [size, fault] = oxr::core::decodeBase64({text.data(), text.size()}, target);
  require(size <= target.size() &&
          std::equal(target.begin(), target.begin() + static_cast<std::ptrdiff_t>(size), expected.begin()));
  require((fault == oxr::core::Base64Fault::none) == (complete && size == expected.size()));
}

void checkRoundTrip(const std::uint8_t* data, std::size_t size) {
  KelWstring text;
  CPBase64Converter::binToBase64(data, static_cast<int>(size), text);
  require(text.length() == (size + 2) / 3 * 4);
  Bytes bytes;
  require(readByModel(Units(text.characters(), text.characters() + text.length()), bytes));
  require(bytes == Bytes(data, data + size));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const bool anyUnits = (*data++ & 1) != 0;
  --size;
  Units text;
  for (std::size_t i = 0; i + anyUnits < size; i += 1 + anyUnits)
    text.push_back(anyUnits ? static_cast<unsigned short>(data[i] << 8 | data[i + 1]) : unitOf(data[i]));
  checkReading(text);
  checkRoundTrip(data, size);
  return 0;
}
