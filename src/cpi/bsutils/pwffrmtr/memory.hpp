#pragma once

#include <cstring>
#include <list>
#include <optional>

#include "keltime.hpp"
#include "keltimestampformatter.hpp"
#include "kelwstring.hpp"

namespace oxr {

inline bool isSameText(UnitView left, UnitView right) {
  return left.size() == right.size() && std::memcmp(left.data(), right.data(), left.size() * sizeof(left[0])) == 0;
}
// Compares with zero-terminated text in the one pass that its length would take to find, four units a turn, which takes
// half the time: a unit is looked at only where those before it were no terminator. REQUIRES: `text` has no zero.
inline bool isSameText(UnitView text, const unsigned short* terminated) {
  const unsigned short *at = text.data(), *const end = at + text.size();
  for (; end - at >= 4; at += 4, terminated += 4)
    if (at[0] != terminated[0] || at[1] != terminated[1] || at[2] != terminated[2] || at[3] != terminated[3])
      return false;
  for (; at != end; ++at, ++terminated)
    if (*at != *terminated) return false;
  return *terminated == 0;
}

// A pattern that was asked for, and its compiled form from the first time that this was.
class KeptPattern {
 public:
  explicit KeptPattern(UnitView text)
      : text_(text),
        mayBeTerminated_(text.find(static_cast<unsigned short>(0)) == UnitView::npos),
        hasZone_(text.find('Z') != UnitView::npos || text.find('z') != UnitView::npos) {}

  const KelWstring& text() const { return text_; }
  bool isFor(UnitView text) const { return isSameText(text_.view(), text); }
  bool isFor(const unsigned short* terminated) const {
    return mayBeTerminated_ && isSameText(text_.view(), terminated);
  }
  // Tells whether a zone letter stands anywhere in it. One in a quoted text counts: Parse.Zones.
  bool hasZone() const { return hasZone_; }

  // Raises the host's failure for a bad pattern, each time.
  const KelTimeStampPattern& compiled() {
    if (!compiled_) compiled_.emplace(text_);
    return *compiled_;
  }

 private:
  KelWstring text_;
  bool mayBeTerminated_;
  bool hasZone_;
  std::optional<KelTimeStampPattern> compiled_;
};

// The patterns that were last asked for, the latest first. A message has a few, which come again and again.
class PatternStore {
 public:
  // Gives the pattern with this text, counted or zero-terminated. It stays until kMost others have been asked for.
  template <class Text>
  KeptPattern& find(Text text) {
    if (!kept_.empty() && kept_.front().isFor(text)) [[likely]]
      return kept_.front();
    return findOlder(text);
  }

 private:
  static constexpr std::size_t kMost = 16;

  template <class Text>
  [[gnu::noinline]] KeptPattern& findOlder(Text text) {
    for (auto each = kept_.begin(); each != kept_.end(); ++each) {
      if (!each->isFor(text)) continue;
      kept_.splice(kept_.begin(), kept_, each);
      return kept_.front();
    }
    kept_.emplace_front(UnitView(text));
    if (kept_.size() > kMost) kept_.pop_back();
    return kept_.front();
  }

  std::list<KeptPattern> kept_;
};

// What a formatter has made out already.
class DateTimeMemory {
 public:
  PatternStore patterns;
  const KelTimeZone* defaultZone = nullptr;  // null: not looked up yet
  KelBufferedWstring<24u> epochText;         // of the last epoch that was no empty text
  KelTimeStamp epoch;
};

}  // namespace oxr
