#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <tuple>

#include "cpunicodeconverter.hpp"
#include "fuzz/codepage/icupage.hpp"
#include "fuzz/harness/chosenvectors.hpp"
#include "fuzz/harness/generalway.hpp"

namespace oxr::fuzz {

// A converter of the library and one of ICU that are given the same. Each step must give the same text, or bytes, with
// one more element of room that stays as it was; the same end of what was read; the same status.
class PageLockstep {
 public:
  explicit PageLockstep(const IcuPage& page)
      : name_(page.icuName), converter_(page.ccsid, page.endian), model_(openByIcu(page)) {}

  // The number of bytes, or units, that were read.
  std::size_t decode(std::string_view bytes, std::size_t room, bool flush) {
    const auto theirs = modelled<char16_t>(ucnv_toUnicode, bytes, room, flush);
    std::u16string out(room + 1, u'#');
    auto* const begin = reinterpret_cast<unsigned short*>(out.data());
    unsigned short* target = begin;
    const char* source = bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    converter_.toUnicode(target, begin + room, source, source + bytes.size(), nullptr, flush, status);
    return compare(out, target - begin, source - bytes.data(), status, theirs);
  }
  std::size_t encode(std::u16string_view units, std::size_t room, bool flush) {
    const auto theirs = modelled<char>(ucnv_fromUnicode, units, room, flush);
    std::string out(room + 1, '#');
    char* target = out.data();
    const auto* const begin = reinterpret_cast<const unsigned short*>(units.data());
    const unsigned short* source = begin;
    UErrorCode status = U_ZERO_ERROR;
    converter_.fromUnicode(target, out.data() + room, source, source + units.size(), nullptr, flush, status);
    return compare(out, target - out.data(), source - begin, status, theirs);
  }

  // Whole strings, which leave nothing behind when they fail.
  void decodeString(std::string_view bytes) {
    KelBufferedWstring<64u> text;  // a text that it has a place for goes a way of its own
    UErrorCode status = U_ZERO_ERROR;
    converter_.toUnicodeString(text, bytes.data(), static_cast<int>(bytes.size()), status);
    if (bytes.empty()) return requireEqual(status, U_ILLEGAL_ARGUMENT_ERROR, name_ + " of nothing");
    const auto theirs = decodedInPasses(bytes);
    if (U_FAILURE(theirs.status)) ucnv_resetToUnicode(model_.getAlias());
    compare(std::u16string(text.characters(), text.characters() + text.length()) + u'#', text.length(), theirs.read,
            status, theirs);
  }
  void encodeString(std::u16string_view units, std::size_t room) {
    std::string out(room + 1, '#');
    int size = static_cast<int>(room);
    UErrorCode status = U_ZERO_ERROR;
    const KelWstring text(reinterpret_cast<const unsigned short*>(units.data()), static_cast<unsigned>(units.size()));
    converter_.fromUnicodeString(out.data(), size, text, status);
    if (room == 0) return requireEqual(status, U_ILLEGAL_ARGUMENT_ERROR, name_ + " without room");
    const auto theirs = modelled<char>(ucnv_fromUnicode, units, room, true);
    if (U_FAILURE(theirs.status)) ucnv_resetFromUnicode(model_.getAlias());
    compare(out, size, theirs.read, status, theirs);
  }

  void reset() {
    converter_.resetToUnicode();
    ucnv_resetToUnicode(model_.getAlias());
  }

 private:
  template <class Text>
  struct Step {
    Text text;
    std::ptrdiff_t read;
    UErrorCode status = U_ZERO_ERROR;
  };

  template <class Element, class Convert, class Input>
  Step<std::basic_string<Element>> modelled(Convert convert, Input input, std::size_t room, bool flush) {
    Step<std::basic_string<Element>> step{std::basic_string<Element>(room, Element{}), 0};
    const auto* source = input.data();
    Element* target = step.text.data();
    convert(model_.getAlias(), &target, target + room, &source, source + input.size(), nullptr, flush, &step.status);
    step.text.resize(static_cast<std::size_t>(target - step.text.data()));
    step.read = source - input.data();
    return step;
  }
  // A room at a time, as whole strings are read: what ICU makes of a broken end may hang on where its room ends.
  Step<std::u16string> decodedInPasses(std::string_view bytes) {
    const auto shortest = static_cast<std::size_t>(ucnv_getMinCharSize(model_.getAlias()));
    Step<std::u16string> whole{{}, 0, U_BUFFER_OVERFLOW_ERROR};
    while (whole.status == U_BUFFER_OVERFLOW_ERROR) {
      const auto pass = modelled<char16_t>(ucnv_toUnicode, bytes.substr(static_cast<std::size_t>(whole.read)),
                                           std::max<std::size_t>(bytes.size() / shortest, 1), true);
      whole = {whole.text + pass.text, whole.read + pass.read, pass.status};
    }
    return whole;
  }
  template <class Text>
  std::size_t compare(const Text& out, std::ptrdiff_t count, std::ptrdiff_t read, UErrorCode status,
                      const Step<Text>& theirs) {
    requireEqual(out.back(), typename Text::value_type('#'), name_ + ", the element after the room");
    requireEqual(status, theirs.status, name_ + ", the status");
    requireEqual(read, theirs.read, name_ + ", the elements read");
    require(out.substr(0, static_cast<std::size_t>(count)) == theirs.text, name_ + ", the text");
    return static_cast<std::size_t>(read);
  }

  std::string name_;
  CPUnicodeConverter converter_;
  icu::LocalUConverterPointer model_;
};

// A text in pieces of any length into any room, so that halves of characters and what finds no room are held back.
template <class Text, class ConvertPiece>
void convertInPieces(Choices& choices, Text text, ConvertPiece convertPiece) {
  const std::size_t longest = choices.upTo(2) == 0 ? 4 : 99;
  for (std::size_t at = 0, stuck = 0; at < text.size() && stuck < 20; ++stuck) {
    const std::size_t size = std::min(1 + choices.upTo(longest), text.size() - at);
    const std::size_t room = choices.isEmpty() ? 4 * longest : choices.upTo(2 * longest);
    const std::size_t read = convertPiece(text.substr(at, size), room, at + size == text.size() && choices.coin());
    at += read;
    if (read > 0) stuck = 0;
  }
  convertPiece(text.substr(text.size()), 400, true);  // what is still held comes out here
}

// 256 units in a row and as many pairs of bytes: each alone, and all in one text, where each stands between two others.
inline void convertBlock(PageLockstep& both, unsigned block) {
  std::u16string units;
  std::string pairs;
  for (unsigned low = 0; low < 0x100; ++low) {
    units += static_cast<char16_t>(block << 8 | low);
    pairs += {static_cast<char>(block), static_cast<char>(low)};
  }
  for (std::size_t i = 0; i < 0x100; ++i) {
    both.encode(std::u16string_view(units).substr(i, 1), 16, true);
    both.decode(std::string_view(pairs).substr(2 * i, 2), 8, true);
    both.decode(std::string_view(pairs).substr(2 * i, 1), 8, true);
  }
  both.encode(units, 8 * units.size(), true);
  both.decode(pairs, 2 * pairs.size(), true);
}

// Lead and trail bytes on both sides of each limit of UTF-8: overlong forms, surrogates, what lies above U+10FFFF, cut
// ones; after so many characters that blocks of bytes end at any place of it.
inline void convertUtf8Limits(PageLockstep& both, unsigned lead, std::size_t before) {
  for (const char second : "\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0")
    for (const char third : "\x7F\x80\xBF\xC0")
      for (const char fourth : "\x7F\x80\xBF\xC0") {
        const std::string bytes =
            std::string(before, 'B') + std::string{static_cast<char>(lead), second, third, fourth, 'A'};
        for (std::size_t length = before + 2; length <= bytes.size(); ++length)
          both.decode(std::string_view(bytes).substr(0, length), before + 8, true);
      }
}

// A code page against ICU itself: any sequence of pieces and whole strings, both ways.
inline void checkCodePage(Choices& choices) {
  const IcuPage& page = choices.oneOf(kIcuPages);
  const GeneralWay general(choices.upTo(2) == 0);
  const ChosenVectors vectors(choices);
  PageLockstep both(page);
  while (!choices.isEmpty()) {
    switch (choices.upTo(31)) {
      case 0:
        convertBlock(both, choices.any<unsigned char>());
        break;
      case 1:
        if (page.ccsid == 1208)
          convertUtf8Limits(both, 0xC0 + static_cast<unsigned>(choices.upTo(0x3F)), choices.upTo(20));
        break;
      case 2:
        both.reset();
        break;
      default:
        switch (choices.upTo(3)) {
          case 0:
            both.decodeString(drawPageBytes(choices, page));
            break;
          case 1:
            both.encodeString(drawPageText(choices), choices.upTo(200));
            break;
          case 2: {
            const std::string bytes = drawPageBytes(choices, page);
            convertInPieces(choices, std::string_view(bytes),
                            [&](auto piece, auto room, bool flush) { return both.decode(piece, room, flush); });
            break;
          }
          default: {
            const std::u16string units = drawPageText(choices);
            convertInPieces(choices, std::u16string_view(units),
                            [&](auto piece, auto room, bool flush) { return both.encode(piece, room, flush); });
          }
        }
    }
  }
}

}  // namespace oxr::fuzz
