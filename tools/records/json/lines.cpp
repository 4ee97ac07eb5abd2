#include "records/json/lines.hpp"

#include <algorithm>
#include <string>

#include "records/framing/errors.hpp"
#include "records/json/reader.hpp"

namespace oxr::rec {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isEmpty(std::string_view line) {
  return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

}  // namespace

JsonLines::JsonLines(BufferSource& source, std::size_t longest)
    : source_(source), longest_(std::min(longest, kLongestOfAll)) {
  show(source_.slide(0, 1));
}

void JsonLines::show(const BitstreamBuffer* buffer) {
  window_ = {buffer->getData(0), static_cast<std::size_t>(std::max(buffer->getLength(), 0))};
  at_ = 0;
}

std::optional<std::string_view> JsonLines::next() {
  while (std::optional<std::string_view> line = take()) {
    ++number_;
    if (number_ == 1 && line->starts_with(kByteOrderMark)) {
      line->remove_prefix(kByteOrderMark.size());
      lineStart_ += kByteOrderMark.size();
    }
    if (!isEmpty(*line)) return withPadding(*line, window_.data() + window_.size());
  }
  return std::nullopt;
}

// The next line, empty or not. Where the window ends in it, a window that begins with it is asked for.
std::optional<std::string_view> JsonLines::take() {
  std::size_t end = window_.find('\n', at_);
  while (end == std::string_view::npos) {
    const std::size_t had = window_.size() - at_;
    if (had > longest_) failTooLong();
    const std::size_t wanted = std::min(2 * had, longest_) + 1;
    show(source_.slide(static_cast<int>(at_), static_cast<int>(wanted)));
    if (window_.empty()) return std::nullopt;
    end = window_.find('\n', had);
    if (end == std::string_view::npos && window_.size() < wanted) end = window_.size();
  }
  const std::string_view line = window_.substr(at_, end - at_);
  if (line.size() > longest_) failTooLong();
  const std::size_t after = std::min(end + 1, window_.size());
  lineStart_ = position_;
  position_ += after - at_;
  at_ = after;
  return line;
}

void JsonLines::failTooLong() const {
  throw FrameError("line " + std::to_string(number_ + 1) + " is longer than " + std::to_string(longest_) + " bytes");
}

std::string_view JsonLines::withPadding(std::string_view line, const char* end) {
  if (static_cast<std::size_t>(end - (line.data() + line.size())) >= JsonReader::kPadding) return line;
  padded_.assign(line);
  padded_.append(JsonReader::kPadding, ' ');
  return std::string_view(padded_).substr(0, line.size());
}

}  // namespace oxr::rec
