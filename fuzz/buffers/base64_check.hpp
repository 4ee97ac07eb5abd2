#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

#include "base64.hpp"
#include "core/base64.hpp"
#include "fuzz/harness/chosenvectors.hpp"
#include "kelexception.hpp"

namespace oxr::fuzz {

using Base64Bytes = std::vector<unsigned char>;
using Base64Text = std::vector<unsigned short>;
inline constexpr std::string_view kBase64Letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// What is to come out: the units of the alphabet alone first, then group by group. True when no group is cut.
inline bool readBase64ByModel(const Base64Text& text, Base64Bytes& bytes) {
  std::string clean;
  for (const unsigned short unit : text)
    if (unit == '=' || (unit < 128 && kBase64Letters.find(static_cast<char>(unit)) != std::string_view::npos))
      clean += static_cast<char>(unit);
  for (std::size_t i = 0; i < clean.size(); i += 4) {
    const std::string group = clean.substr(i, 4);
    if (group.size() < 4) return false;
    std::size_t bits = 0;
    for (const char letter : group)
      bits = bits * 64 + (letter == '=' ? 0 : kBase64Letters.find(letter));
    const int count = group[2] == '=' ? 1 : group[3] == '=' ? 2 : 3;
    for (int byte = 0; byte < count; ++byte)
      bytes.push_back(static_cast<unsigned char>(bits >> (16 - 8 * byte)));
    if (count < 3) break;
  }
  return true;
}

// Reads a text into a target of just the room that its length calls for, and into one of `room` bytes, which takes
// whole groups only; nothing is written after the end of either, and nothing read after that of the text, where letters
// stand.
inline void checkBase64Reading(const Base64Text& text, std::size_t room) {
  Base64Bytes expected;
  const bool complete = readBase64ByModel(text, expected);
  Base64Text longer = text;
  longer.resize(text.size() + 64, 'B');
  for (const std::size_t size : {text.size() * 3 / 4, std::min(room, text.size() * 3 / 4)}) {
    Base64Bytes target(size + 64, 0xEE);
    const auto [used, fault] = core::decodeBase64({longer.data(), text.size()}, {target.data(), size});
    require(std::count(target.end() - 64, target.end(), 0xEE) == 64, "bytes after the target");
    const bool fits = expected.size() <= size;
    requireEqual(used, fits ? expected.size() : size / 3 * 3, "bytes read");
    require(std::equal(target.data(), target.data() + used, expected.data()), "the bytes");
    require(fault == (!fits      ? core::Base64Fault::targetFull
                      : complete ? core::Base64Fault::none
                                 : core::Base64Fault::incomplete),
            "the fault");
  }
  bool raised = false;
  try {
    const PWFData value = CPBase64Converter::binFromBase64(text.data(), static_cast<int>(text.size()));
    const auto* const bytes = static_cast<const unsigned char*>(value.getDataValue());
    require(!value.isNull() && Base64Bytes(bytes, bytes + value.getDataLength()) == expected, "the value");
  } catch (const KelConversionException&) {
    raised = true;
  }
  requireEqual(raised, !complete, "raised");
}

inline void checkBase64Writing(const Base64Bytes& bytes) {
  KelWstring text;
  CPBase64Converter::binToBase64(bytes.data(), static_cast<int>(bytes.size()), text);
  requireEqual(text.length(), (bytes.size() + 2) / 3 * 4, "units written");
  Base64Text units(text.length());
  core::encodeBase64(bytes, units.data());
  require(std::equal(units.begin(), units.end(), text.characters()), "two kinds of vectors write different text");
  Base64Bytes back;
  require(readBase64ByModel(units, back) && back == bytes, "what was written reads as other bytes");
  require(std::all_of(units.begin(), units.end(), [](unsigned unit) { return unit > ' ' && unit < 128; }), "a unit");
  checkBase64Reading(units, bytes.size() / 2);
}

// A letter, the same for the same choice.
inline unsigned short base64Letter(std::size_t choice) {
  return static_cast<unsigned char>(kBase64Letters[choice * 37 % 64]);
}

// Clean stretches of any length with anything between them, so that the vectors stop and start at every place.
inline Base64Text drawDirtyText(Choices& choices) {
  static constexpr unsigned short kOthers[] = {'=', '\r', '\n', 0, '-', '_', 0x80, 0xFF, 0x141, 0x2B00, 0x7F41, 0xFF41};
  Base64Text text;
  for (std::size_t stretches = choices.upTo(7); stretches > 0; --stretches) {
    const std::size_t first = choices.any<unsigned char>();
    for (std::size_t left = choices.upTo(choices.coin() ? 200 : 5); left > 0; --left)
      text.push_back(base64Letter(first + left));
    for (std::size_t left = choices.upTo(3); left > 0; --left)
      text.push_back(choices.upTo(7) == 0 ? choices.any<unsigned short>() : choices.oneOf(kOthers));
  }
  return text;
}

// Each of 256 units in one place of a clean text.
inline void checkBase64Units(Choices& choices) {
  const ChosenVectors vectors(choices);
  Base64Text text;
  for (std::size_t i = 0; i < 80; ++i)
    text.push_back(base64Letter(i));
  unsigned short& place = text[choices.upTo(text.size() - 1)];
  const unsigned block = choices.coin() ? 0 : choices.any<unsigned char>();
  for (unsigned low = 0; low < 0x100; ++low) {
    place = static_cast<unsigned short>(block << 8 | low);
    checkBase64Reading(text, 50);
  }
}

// Base64 against a naive reader: any bytes to text and back, text with any units among its own.
inline void checkBase64(Choices& choices) {
  const ChosenVectors vectors(choices);
  while (!choices.isEmpty()) {
    switch (choices.upTo(14)) {
      case 0:
      case 1:
      case 2: {
        const auto bytes = choices.bytes(choices.upTo(255));
        checkBase64Writing({bytes.begin(), bytes.end()});
        break;
      }
      case 3:
      case 4:
      case 5: {  // a short text, most of it padding
        Base64Text text;
        for (std::size_t left = choices.upTo(9); left > 0; --left)
          text.push_back(choices.oneOf(std::array<unsigned short, 5>{'B', '/', '=', '\n', 0x141}));
        checkBase64Reading(text, choices.upTo(6));
        break;
      }
      default: {
        const Base64Text text = drawDirtyText(choices);
        checkBase64Reading(text, choices.upTo(text.size()));
      }
    }
  }
}

}  // namespace oxr::fuzz
