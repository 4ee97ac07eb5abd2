#include "oxrmq/feed/feedstate.hpp"

#include <charconv>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <utility>

#include "records/framing/errors.hpp"
#include "records/framing/fileoutput.hpp"
#include "records/smallfile.hpp"

namespace oxr::mq {

namespace {

constexpr char kFirstLine[] = "oxrmq feed 3";
constexpr char kFileKey[] = "file ";

struct Member {
  const char* key;
  std::uint64_t FeedState::*value;
};

constexpr Member kMembers[] = {
    {"size ", &FeedState::size},     {"changed ", &FeedState::changed}, {"start ", &FeedState::start},
    {"form ", &FeedState::form},     {"bytes ", &FeedState::bytes},     {"most ", &FeedState::most},
    {"offset ", &FeedState::offset}, {"records ", &FeedState::records},
};

[[noreturn]] void refuse(const std::string& file) {
  throw rec::ToolError(file + " is no state that --resume has written");
}

// The rest of the next line, which is to begin with `key`.
std::string rest(std::istream& lines, const std::string& key, const std::string& file) {
  std::string line;
  if (!std::getline(lines, line) || !line.starts_with(key)) refuse(file);
  return line.substr(key.size());
}

}  // namespace

std::string textOf(const FeedState& state) {
  std::string text = std::string(kFirstLine) + '\n' + kFileKey + state.file + '\n';
  for (const Member& member : kMembers)
    text += member.key + std::to_string(state.*member.value) + '\n';
  return text;
}

FeedState parseState(const std::string& text, const std::string& file) {
  std::istringstream lines(text);
  FeedState state;
  if (!rest(lines, kFirstLine, file).empty()) refuse(file);
  state.file = rest(lines, kFileKey, file);
  for (const Member& member : kMembers) {
    const std::string digits = rest(lines, member.key, file);
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), state.*member.value);
    if (read.ec != std::errc() || read.ptr != digits.data() + digits.size()) refuse(file);
  }
  return state;
}

std::optional<FeedState> readState(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error) && !error) return std::nullopt;
  constexpr std::size_t kMost = std::size_t{64} << 10;
  try {
    return parseState(rec::readSmallFile(path, kMost), path);
  } catch (const rec::SmallFileError& fault) {
    throw rec::ToolError("cannot read " + path + ": " + fault.what());
  }
}

void writeState(const std::string& path, const FeedState& state) {
  rec::FileOutput file = rec::FileOutput::open(path, {}, -1);
  file.write(textOf(state));
  file.closeDurably();
}

namespace {

// As the options say it.
std::string cutText(const FeedState& state) {
  std::string text;
  if (state.bytes != 0) text = "--message-bytes " + std::to_string(state.bytes);
  if (state.most != 0) text += (text.empty() ? "" : " ") + ("--message-records " + std::to_string(state.most));
  return text;
}

}  // namespace

std::string whyNot(const FeedState& state, const FeedState& now) {
  if (state.file != now.file) return "it is about " + state.file;
  if (state.size != now.size || state.changed != now.changed || state.start != now.start)
    return "the file has changed since";
  if (state.form != now.form)
    return "the options or the copybook that tell how the records lie, or which part of the file is fed, were others";
  if (state.bytes != now.bytes || state.most != now.most)
    return "the file was cut in another way then (" + cutText(state) + "), and messages would not have the same ids";
  return {};
}

namespace {

// Each step loses nothing of the number before, nor of the word: texts that differ in one word differ in their numbers.
std::uint64_t mixed(std::uint64_t number, std::uint64_t word) {
  number = (number ^ word) * 0x9E3779B97F4A7C15U;
  return number ^ (number >> 32);
}

}  // namespace

// Eight bytes at a time, as they lie in this machine's memory: all that is fed goes through here. The length tells
// bytes from those with zeros after them.
std::uint64_t fingerprint(std::string_view bytes, std::uint64_t seed) {
  std::uint64_t number = mixed(seed, bytes.size()), word = 0;
  for (; bytes.size() >= sizeof word; bytes.remove_prefix(sizeof word)) {
    std::memcpy(&word, bytes.data(), sizeof word);
    number = mixed(number, word);
  }
  word = 0;
  if (!bytes.empty()) std::memcpy(&word, bytes.data(), bytes.size());
  return mixed(number, word);
}

namespace {

std::uint64_t numberOfRun(FeedState state) {
  state.offset = state.records = 0;
  return fingerprint(textOf(state));
}

}  // namespace

MessageIds::MessageIds(FeedState state) : file_(state.file), run_(numberOfRun(std::move(state))) {}

std::string MessageIds::at(std::uint64_t offset, std::string_view bytes) const {
  char digits[16];
  const auto written = std::to_chars(std::begin(digits), std::end(digits), fingerprint(bytes, run_), 16);
  return file_ + ':' + std::to_string(offset) + ':' + std::string(digits, written.ptr);
}

}  // namespace oxr::mq
