#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "records/records.hpp"

namespace oxr::rec {

// The process around the program, as far as it matters: tests have one of their own.
struct Console {
  int input = 0;  // descriptors of the standard streams
  int output = 1;
  std::ostream& messages;            // one line each
  bool messagesOnTerminal = false;   // progress may be shown among them
  std::string_view program{};        // its name, which begins each message; runCommand sets it
  std::ostream* terminal = nullptr;  // `messages` where control characters have an effect; the same if null
};

// Exit codes of the program.
inline constexpr int kDone = 0;
inline constexpr int kBadField = 1;  // a field cannot be read
inline constexpr int kFailed = 2;    // all else: the request, the copybook, the input's records, the output

// What stands for a standard stream in the place of a file's path.
inline constexpr char kStandardStream[] = "-";

// The file of this path, or standard input. Throws ToolError.
FileInput openInput(const std::string& path, const InputWindow& window, const Console& console);
// The file of this path, or standard output. Throws OutputError if it names one of the paths in `inputs`, or the file
// open as `input`.
FileOutput openOutput(const std::string& path, std::span<const std::string> inputs, int input, const Console& console);
// The same where nothing is read.
FileOutput openOutput(const std::string& path, const Console& console);
// Whether both are standard output, or lead to the same file.
bool isSameOutput(const std::string& path, const std::string& other);

}  // namespace oxr::rec
