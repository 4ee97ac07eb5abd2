#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>

namespace oxr::rec {

template <class Value>
using Words = std::map<std::string, Value>;

// Makes an option take one of a few words, in any case of letters.
template <class Value>
CLI::Option* choose(CLI::Option* option, const Words<Value>& words) {
  std::string list;
  for (const auto& [word, meaning] : words)
    list += (list.empty() ? "" : "|") + word;
  return option->transform(CLI::CheckedTransformer(words, CLI::ignore_case).description(""))->type_name(list);
}

// An option whose value is one of a few words.
template <class Value>
CLI::Option* addChoice(CLI::App& command, const std::string& name, Value& value, const Words<Value>& words,
                       const std::string& help) {
  return choose(command.add_option(name, value, help), words);
}

}  // namespace oxr::rec
