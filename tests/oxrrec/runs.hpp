#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "harness/hex.hpp"
#include "oxrrec/program.hpp"

// Runs the program within the test, on files of its own.

namespace oxr::rec::test {

using oxr::test::fromHex;

// A folder that goes with the object.
class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::path(testing::TempDir()) / "oxrrecXXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string path(const std::string& name) const { return (path_ / name).string(); }
  std::string write(const std::string& name, std::string_view content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }

 private:
  std::filesystem::path path_;
};

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

struct Outcome {
  int code = 0;
  std::string lines;     // on standard output
  std::string messages;  // on standard error
};

// The program with `arguments` separated by blanks, and `input` on its standard input.
inline Outcome runProgram(const std::string& arguments, std::string_view input = {}) {
  std::vector<std::string> words;
  std::istringstream stream(arguments);
  for (std::string word; stream >> word;)
    words.push_back(word);
  std::vector<const char*> pointers;
  pointers.reserve(words.size());
  for (const std::string& word : words)
    pointers.push_back(word.c_str());
  const auto scratch = [] { return std::unique_ptr<std::FILE, int (*)(std::FILE*)>(std::tmpfile(), std::fclose); };
  const auto in = scratch();
  const auto out = scratch();
  if (!input.empty()) std::fwrite(input.data(), 1, input.size(), in.get());
  std::rewind(in.get());
  std::ostringstream messages;
  Outcome outcome;
  outcome.code = run(pointers, {::fileno(in.get()), ::fileno(out.get()), messages, false});
  std::rewind(out.get());
  for (int c = std::fgetc(out.get()); c != EOF; c = std::fgetc(out.get()))
    outcome.lines += static_cast<char>(c);
  outcome.messages = messages.str();
  return outcome;
}

// decode of `bytes` by `copybook`, free format, with further arguments. Messages name the files "c" and "standard
// input".
inline Outcome decodeBytes(std::string_view copybook, std::string_view bytes, const std::string& arguments = {}) {
  const Folder folder;
  const std::string path = folder.write("c", copybook);
  const bool hasCcsid = arguments.find("--ccsid") != std::string::npos;
  Outcome outcome = runProgram(
      "decode --format free --copybook " + path + (hasCcsid ? " " : " --ccsid 37 ") + arguments + " -", bytes);
  for (std::size_t at; (at = outcome.messages.find(path)) != std::string::npos;)
    outcome.messages.replace(at, path.size(), 1, 'c');
  return outcome;
}

}  // namespace oxr::rec::test
