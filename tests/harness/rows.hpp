#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace oxr::test {

// Cases in little room: words between blanks, a case up to each semicolon. In a word "_" stands for a blank; "''" is
// the empty word.
//
// Example:
//   for (const auto& c : rows("12345 2 123.45; 123.45 -2 12345; '' 3 ''"))
//     EXPECT_EQ(shifted(c[0], std::stoi(c[1])), c[2]);
using Row = std::vector<std::string>;
inline std::vector<Row> rows(std::string_view text) {
  std::vector<Row> result(1);
  std::string word;
  const auto endWord = [&] {
    if (!word.empty()) result.back().push_back(word == "''" ? "" : word);
    word.clear();
  };
  for (const char c : text) {
    if (c != ' ' && c != ';') {
      word += c == '_' ? ' ' : c;
      continue;
    }
    endWord();
    if (c == ';') result.emplace_back();
  }
  endWord();
  return result;
}

// The words of a case, for the message of an expectation.
inline std::string shown(const Row& row) {
  std::string text;
  for (const std::string& word : row)
    text += '[' + word + ']';
  return text;
}

}  // namespace oxr::test
