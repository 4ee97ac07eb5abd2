#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "kelunits.hpp"
#include "records/json/linebuffer.hpp"
#include "records/json/narrow.hpp"

namespace oxr::rec {

// A name as the key of an object's member, rendered: `,"NAME":`, followed by blanks so that it can be copied in blocks.
class JsonKey {
 public:
  explicit JsonKey(UnitView name);

 private:
  friend class JsonLine;
  static constexpr std::size_t kBlock = 32;
  std::string text_;
  std::size_t size_;  // without the blanks
};

// Writes JSON member by member: a key that was rendered before, and its value. A member or an element is begun first
// and then gets exactly one of the values, or an object or array that is opened and closed.
//
//   line.open('{');
//   line.beginMember(name);
//   line.text(units);
//   line.close('}');
//
// Nothing keeps count of what was written: no value ends in a bracket that opens, so the last byte tells whether
// something stands before.
class JsonLine {
 public:
  // What was written so far. Whoever writes into it beside sees to it that it stays JSON.
  LineBuffer& buffer() { return out_; }
  const LineBuffer& buffer() const { return out_; }

  // '{' or '[', and what closes it.
  void open(char bracket) { out_.put(bracket); }
  void close(char bracket) { out_.put(bracket); }

  // REQUIRES: an object is open.
  void beginMember(const JsonKey& key) {
    char* const to = out_.room(key.size_ + JsonKey::kBlock);
    const std::size_t skipped = hasOpened() ? 1 : 0;
    const char* const from = key.text_.data() + skipped;
    const std::size_t count = key.size_ - skipped;
    std::size_t at = 0;
    do
      std::memcpy(to + at, from + at, JsonKey::kBlock);
    while ((at += JsonKey::kBlock) < count);
    out_.endAt(to + count);
  }
  // REQUIRES: an array is open.
  void beginElement() {
    if (!hasOpened()) out_.put(',');
  }
  // The values. The line ends U+0085, U+2028 and U+2029 are escaped in texts, and a surrogate that
  // stands alone becomes U+FFFD.
  [[gnu::always_inline]] void text(UnitView text) {
    char* const to = out_.room(text.size() + 2);
    if (!narrowing::narrow(text, to + 1)) [[unlikely]]
      return generalText(text);
    to[0] = '"';
    to[text.size() + 1] = '"';
    out_.endAt(to + text.size() + 2);
  }
  // Without superfluous leading zeros, with a digit before the point, and as a string if there is a point and
  // `pointsAsText`. Text that is no decimal becomes a string too, so that the line stays valid.
  void decimal(UnitView text, bool pointsAsText);
  void integer(std::int64_t value);
  // With the shortest digits that read back as the same double. REQUIRES: finite.
  void real(double value);
  void null() {
    constexpr char kNull[] = {'n', 'u', 'l', 'l'};
    char* const to = out_.room(sizeof kNull);
    std::memcpy(to, kNull, sizeof kNull);
    out_.endAt(to + sizeof kNull);
  }

 private:
  void generalText(UnitView text);
  void generalDecimal(UnitView text, bool pointsAsText);
  // Whether an object or an array was opened last.
  bool hasOpened() const { return out_.last() == '{' || out_.last() == '['; }

  LineBuffer out_;
};

}  // namespace oxr::rec
