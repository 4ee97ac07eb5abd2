#include "records/fields/ccsid.hpp"

#include <charconv>
#include <iterator>
#include <string>
#include <utility>

namespace oxr::rec {

namespace {

// Without hyphens, underscores and blanks.
constexpr std::pair<std::string_view, int> kNames[] = {
    {"ascii", 367},     {"usascii", 367}, {"latin1", 819}, {"iso88591", 819}, {"latin9", 923},
    {"iso885915", 923}, {"utf8", 1208},   {"utf16", 1200}, {"utf16be", 1200}, {"utf16le", 1202},
};
// What stands before the number in other names.
constexpr std::string_view kPrefixes[] = {"ccsid", "cp", "ibm", "windows"};
constexpr int kLargest = 65535;
// What is called windows-1250 to 1258 has the euro sign, which the pages of these numbers do not have.
constexpr int kFirstWindows = 1250;
constexpr int kWindows[] = {5346, 5347, 5348, 5349, 5350, 9447, 9448, 9449, 5354};

std::string plain(std::string_view name) {
  std::string text;
  for (const char c : name)
    if (c != '-' && c != '_' && c != ' ') text += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

}  // namespace

std::optional<int> ccsidOf(std::string_view name) {
  if (name.starts_with('-')) return std::nullopt;
  const std::string text = plain(name);
  for (const auto& [known, ccsid] : kNames)
    if (text == known) return ccsid;
  std::string_view digits = text;
  bool isWindows = false;
  for (const std::string_view prefix : kPrefixes) {
    if (!digits.starts_with(prefix)) continue;
    digits.remove_prefix(prefix.size());
    isWindows = prefix == "cp" || prefix == "windows";
    break;
  }
  int number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size() || number <= 0 || number > kLargest)
    return std::nullopt;
  const int page = number - kFirstWindows;
  return isWindows && page >= 0 && page < static_cast<int>(std::size(kWindows)) ? kWindows[page] : number;
}

}  // namespace oxr::rec
