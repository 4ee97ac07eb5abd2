#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "harness/hex.hpp"
#include "oxrrec/program.hpp"

// Runs the program within the test, on files of its own.

namespace oxr::rec::test {

// A folder that goes with the object.
class Folder {
 public:
  Folder() {
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string path(const std::string& name) const { return path_ + '/' + name; }
  std::string write(const std::string& name, std::string_view content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }
  // Of the files in it, sorted, with a blank between two.
  std::string names() const {
    std::set<std::string> sorted;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      sorted.insert(entry.path().filename());
    std::string all;
    for (const std::string& name : sorted)
      all += (all.empty() ? "" : " ") + name;
    return all;
  }

 private:
  std::string path_ = testing::TempDir() + "oxrrecXXXXXX";
};

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string replaced(std::string text, const std::string& old, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += by.size())
    text.replace(at, old.size(), by);
  return text;
}

// The program with `arguments` separated by blanks.
inline int runOn(const Console& console, const std::string& arguments) {
  std::istringstream stream(arguments);
  const std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
  std::vector<const char*> pointers;
  pointers.reserve(words.size());
  for (const std::string& word : words)
    pointers.push_back(word.c_str());
  return run(pointers, console);
}

struct Outcome {
  int code = 0;
  std::string lines;     // on standard output
  std::string messages;  // on standard error
};

// The same with `input` on its standard input.
inline Outcome runProgram(const std::string& arguments, std::string_view input = {}) {
  const Folder folder;
  using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
  const Stream in(std::fopen(folder.write("in", input).c_str(), "rb"), std::fclose);
  const Stream out(std::fopen(folder.path("out").c_str(), "wb"), std::fclose);
  std::ostringstream messages;
  const int code = runOn({::fileno(in.get()), ::fileno(out.get()), messages, false}, arguments);
  return {code, contentOf(folder.path("out")), messages.str()};
}

// decode of `bytes` by `copybook`, free format, with further arguments.
inline Outcome decodeBytes(std::string_view copybook, std::string_view bytes, const std::string& arguments = {}) {
  const Folder folder;
  const std::string page = arguments.find("--ccsid") == std::string::npos ? " --ccsid 37 " : " ";
  return runProgram("decode --format free --copybook " + folder.write("c", copybook) + page + arguments + " -", bytes);
}

// "*" in an expectation stands for any text.
inline std::string asPattern(std::string_view text) {
  std::string pattern = "^";
  for (const char c : text) {
    if (std::strchr(".()[]{}+?^$|\\", c) != nullptr) pattern += '\\';
    pattern += c == '*' ? std::string("(.|\n)*") : std::string(1, c);
  }
  return pattern;
}

// ASCII, and bytes in hexadecimal between "<" and ">".
inline std::string bytesOf(const std::string& text) {
  std::string bytes;
  std::istringstream parts(replaced(text, ">", "<"));
  bool isHex = true;
  for (std::string part; std::getline(parts, part, '<');)
    bytes += (isHex = !isHex) ? oxr::test::fromHex(part) : part;
  return bytes;
}

inline constexpr char kStart[] = "oxrrec: standard input: ";

// The lines without quotes; each message after "|", a record's after "| #".
inline std::string inShort(const Outcome& outcome) {
  const std::string all = replaced(outcome.lines, "\"", "") + replaced(outcome.messages, kStart, "| ");
  return replaced(replaced(all, "| record ", "| #"), "\n", " ");
}

}  // namespace oxr::rec::test
