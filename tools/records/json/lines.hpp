#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "records/framing/buffersource.hpp"

namespace oxr::rec {

// Cuts an input into the lines that a JsonReader takes. Serves one thread.
class JsonLines {
 public:
  // A reader's tree takes up to 40 times the bytes of a line with nothing but small values.
  static constexpr std::size_t kUsualLongest = std::size_t{64} << 20;
  static constexpr std::size_t kLongestOfAll = std::size_t{1} << 30;

  // The source is the caller's. No line may have more than `longest` bytes, kLongestOfAll at most.
  explicit JsonLines(BufferSource& source, std::size_t longest = kUsualLongest);

  // The next line that is not empty, without its end and with JsonReader::kPadding readable bytes behind it, until the
  // next call; nothing at the input's end. Throws ToolError, and FrameError for a line that is too long.
  std::optional<std::string_view> next();
  // The number of that line, from 1, empty ones counted.
  std::uint64_t lineNumber() const { return number_; }
  // Bytes before that line.
  std::uint64_t lineStart() const { return lineStart_; }
  // Bytes of the lines so far.
  std::uint64_t position() const { return position_; }

 private:
  std::optional<std::string_view> take();
  [[noreturn]] void failTooLong() const;
  void show(const BitstreamBuffer* buffer);
  std::string_view withPadding(std::string_view line, const char* end);

  BufferSource& source_;
  const std::size_t longest_;
  std::string_view window_;  // of the input, as far as it was read
  std::size_t at_ = 0;       // where the next line begins
  std::uint64_t number_ = 0;
  std::uint64_t position_ = 0;
  std::uint64_t lineStart_ = 0;
  std::string padded_;
};

}  // namespace oxr::rec
