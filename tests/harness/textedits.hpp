#pragma once

#include <string>

#include "harness/table.hpp"

// What tables of the members that edit a text in place share: pads, signs, trimming.
namespace oxr::test {

// A pad: pad=* and pad=U+200B are code units, padByte=0x5C is a value in the code page.
inline unsigned short padOf(const Case& c) {
  const std::string word = c.word("pad", " ");
  if (c.has("padByte")) return c.number<unsigned short>("padByte");
  return word.starts_with("U+") ? static_cast<unsigned short>(std::stoi(word.substr(2), nullptr, 16)) : k(word)[0];
}
inline bool padIsUnit(const Case& c) {
  return !c.has("padByte");
}

// Blanks are seen as underscores, zeros as "0", and tabs as "^".
inline std::string visible(std::string text) {
  for (char& unit : text)
    unit = unit == ' ' ? '_' : unit == '\0' ? '0' : unit == '\t' ? '^' : unit;
  return text;
}

// A member that changes a text in place: what becomes of the text, and after a slash the result if `edit` has one. A
// failure must leave the text alone, unless the case says that it is touched.
template <class Edit>
Member edits(Edit edit) {
  return [edit](Case& c) {
    const KelWstring before = k(c.word("text"));
    KelWstring text = before;
    std::string result;
    const Raised raised = raisedBy([&] {
      DataCnv converter = c.converter();
      if constexpr (std::is_void_v<decltype(edit(c, converter, text))>)
        edit(c, converter, text);
      else
        result = '/' + shown(edit(c, converter, text));
    });
    if (raised.kind.empty()) return visible(shown(text)) + result;
    EXPECT_TRUE(text == before || c.flag("touched"));
    return shown(raised);
  };
}

}  // namespace oxr::test
