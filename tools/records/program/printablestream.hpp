#pragma once

#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "kelprintable.hpp"

namespace oxr::rec {

// Lines of a table that is for people.
std::string printableLines(std::string_view lines);

// Passes lines on, whole, with all that a terminal would obey made visible: messages quote names and data of files that
// may come from anyone.
class PrintableStream : private std::streambuf, public std::ostream {
 public:
  explicit PrintableStream(std::ostream& to) : std::ostream(static_cast<std::streambuf*>(this)), to_(to) {
    exceptions(std::ios::badbit);  // a lack of memory comes out of it
  }
  PrintableStream(const PrintableStream&) = delete;
  PrintableStream& operator=(const PrintableStream&) = delete;
  ~PrintableStream() override = default;

 private:
  int overflow(int c) override {
    if (c == std::streambuf::traits_type::eof()) return 0;
    line_ += static_cast<char>(c);
    if (c == '\n') sync();
    return c;
  }
  // What was written of a line so far.
  int sync() override {
    const bool isWhole = line_.ends_with('\n');
    if (isWhole) line_.pop_back();
    to_ << printable(line_) + (isWhole ? "\n" : "") << std::flush;
    line_.clear();
    return 0;
  }

  std::ostream& to_;
  std::string line_;
};

}  // namespace oxr::rec
