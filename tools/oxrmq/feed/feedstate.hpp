#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace oxr::mq {

// How far a file has been fed, and what tells that another run is about the same file and cuts it in the same way.
struct FeedState {
  std::string file;           // as messages call it
  std::uint64_t size = 0;     // of all of it
  std::uint64_t changed = 0;  // when that was: nanoseconds, on the clock of file systems
  std::uint64_t start = 0;    // a number made of its first bytes
  std::uint64_t form = 0;     // a number made of all that tells where records lie, and which of them
  std::uint64_t bytes = 0;    // the cut: bytes of a message,
  std::uint64_t most = 0;     // and records of one; 0 for any number
  std::uint64_t offset = 0;   // all bytes before this one are confirmed
  std::uint64_t records = 0;  // and these are so many records

  bool operator==(const FeedState&) const = default;
};

// A line for each member. The second function throws ToolError with the name of the file for a text that is none.
std::string textOf(const FeedState& state);
FeedState parseState(const std::string& text, const std::string& file);
// Nothing if there is no file of the path. Throws ToolError.
std::optional<FeedState> readState(const std::string& path);
// Under a temporary name that becomes the path: whoever reads it finds the old state or the new one, after a loss of
// power too. Throws ToolError.
void writeState(const std::string& path, const FeedState& state);
// Why a state cannot be gone on from; empty if it can. `now` is what would be written at the start.
std::string whyNot(const FeedState& state, const FeedState& now);
// A number for bytes: others have another one in all likelihood. `seed` is one for bytes that come before them.
std::uint64_t fingerprint(std::string_view bytes, std::uint64_t seed = 0);

// Of the messages that a run cuts: "FILE:OFFSET:FINGERPRINT". Another run gives a message the same id if it is about
// the same file and cuts it in the same way, how far the state may be. The fingerprint is made of the message's own
// bytes too: what is known of a file at its start does not tell it from all others.
class MessageIds {
 public:
  explicit MessageIds(FeedState state);
  std::string at(std::uint64_t offset, std::string_view bytes) const;

 private:
  const std::string file_;
  const std::uint64_t run_;  // a number made of the state
};
// Bytes of a file's name that leave room for the rest of an id.
inline constexpr std::size_t kLongestFileName = 200;

// Up to where a file is confirmed, when confirmations come in any order.
class FeedProgress {
 public:
  struct Place {
    std::uint64_t offset = 0;
    std::uint64_t records = 0;
  };

  explicit FeedProgress(Place start) : end_(start) {}
  // The next part of the file is on its way.
  void sent(Place begin, Place end) {
    open_.emplace(begin.offset, begin);
    if (end.offset > end_.offset) end_ = end;
  }
  void confirmed(Place begin) { open_.erase(begin.offset); }
  // All before it is confirmed.
  Place upTo() const { return open_.empty() ? end_ : open_.begin()->second; }
  // All that was sent is confirmed.
  bool isConfirmed() const { return open_.empty(); }

 private:
  std::map<std::uint64_t, Place> open_;  // by offset
  Place end_;
};

}  // namespace oxr::mq
