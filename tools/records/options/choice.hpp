#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <system_error>

namespace oxr::rec {

template <class Value>
using Words = std::map<std::string, Value>;

// Makes an option take one of a few words, in any case of letters.
template <class Value>
CLI::Option* choose(CLI::Option* option, const Words<Value>& words) {
  std::string list;
  for (const auto& [word, meaning] : words)
    list += (list.empty() ? "" : "|") + word;
  // The word is replaced by the number of its meaning, which the parser then takes.
  const auto replace = [words, list](std::string& given) {
    const auto word = words.find(CLI::detail::to_lower(given));
    if (word == words.end()) return given + " is none of " + list;
    given = std::to_string(static_cast<int>(word->second));
    return std::string();
  };
  return option->transform(CLI::Validator(replace, ""))->type_name(list);
}

// What holds an option to whole numbers.
inline CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most = std::numeric_limits<std::uint64_t>::max()) {
  return CLI::Validator(
      [least, most](const std::string& given) {
        std::uint64_t number = 0;
        const char* const end = given.data() + given.size();
        const auto read = std::from_chars(given.data(), end, number);
        if (read.ec == std::errc() && read.ptr == end && number >= least && number <= most) return std::string();
        const bool hasBound = most != std::numeric_limits<std::uint64_t>::max();
        return given + " is no whole number from " + std::to_string(least) +
               (hasBound ? " to " + std::to_string(most) : "");
      },
      "");
}

// Makes an option take "64MiB" as the number of bytes.
inline CLI::Validator sizeInBytes(std::uint64_t most = std::numeric_limits<std::uint64_t>::max()) {
  return CLI::Validator(
      [most](std::string& text) {
        const std::string given = text;
        std::string fault;
        try {
          fault = CLI::AsSizeValue(false)(text);
        } catch (const CLI::ParseError&) {
          fault = given;
        }
        if (fault.empty()) fault = wholeNumber(1)(text);
        if (!fault.empty()) return given + " is no number of bytes such as 1000 or 64MiB";
        return wholeNumber(1, most)(text).empty() ? fault : given + " is more than " + std::to_string(most) + " bytes";
      },
      "");
}

// An option whose value is one of a few words.
template <class Value>
CLI::Option* addChoice(CLI::App& command, const std::string& name, Value& value, const Words<Value>& words,
                       const std::string& help) {
  return choose(command.add_option(name, value, help), words);
}

}  // namespace oxr::rec
