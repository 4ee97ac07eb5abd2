#pragma once

#include <cstring>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "records/framing/errors.hpp"
#include "records/json/tree.hpp"

namespace oxr::rec {

// A line that is no JSON object. what() tells column and reason: "column 17: no value follows".
class JsonLineError : public ToolError {
 public:
  JsonLineError(std::size_t column, const std::string& why)
      : ToolError("column " + std::to_string(column) + ": " + why), column_(column) {}
  // In bytes, from 1.
  std::size_t column() const { return column_; }

 private:
  std::size_t column_;
};

// Names as they stand in JSON lines, for a reader to recognise without a search: mostly a name follows the one that it
// followed in the same object before.
class JsonNames {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  // `names` as RecordPlan::names has them. They stay where they are for as long as the object is used.
  explicit JsonNames(const std::vector<unsigned short>& names);

  // The expected name, if it is the one that begins at `text`, right after the quote; else kNone. `container` is the
  // name of the object, `previous` the name before this one in it, kNone for none. `room` bytes may be read.
  std::uint32_t expected(std::uint32_t container, std::uint32_t previous, const char* text, std::size_t room) const {
    const std::uint32_t entry = next_[slot(container, previous)];
    return entry != kNone && entries_[entry].begins(text, room) ? entry : kNone;
  }
  // The name of this text, which is expected in this place from now on; one that is not among the names is kept for
  // this line.
  std::uint32_t find(std::uint32_t container, std::uint32_t previous, std::string_view text);
  // Zero-terminated.
  const unsigned short* units(std::uint32_t entry) const {
    return entry < kForeign ? entries_[entry].units() : foreign_[entry - kForeign].characters();
  }
  // To be called before each line: forgets the names that only the last one had.
  void begin() { foreign_.clear(); }

 private:
  // Compared by words, of which the last one may go beyond both texts.
  class Entry {
   public:
    // The text is UTF-8, with the quote after it.
    Entry(const unsigned short* units, const std::string& text);
    const unsigned short* units() const { return units_; }
    std::string_view name() const { return {text_.data(), size_ - 1}; }
    bool begins(const char* text, std::size_t room) const {
      if (size_ > room) return false;
      const char* wanted = text_.data();
      for (const char* const last = wanted + text_.size() - sizeof lastBits_; wanted != last;
           wanted += sizeof lastBits_, text += sizeof lastBits_)
        if (word(wanted) != word(text)) return false;
      return ((word(wanted) ^ word(text)) & lastBits_) == 0;
    }

   private:
    static std::uint64_t word(const char* at) {
      std::uint64_t bits;
      std::memcpy(&bits, at, sizeof bits);
      return bits;
    }

    const unsigned short* units_;
    std::size_t size_;
    std::uint64_t lastBits_ = 0;  // those of the last word that belong to the text
    std::string text_;            // whole words
  };
  static constexpr std::uint32_t kForeign = 0x8000'0000U;  // where their numbers begin

  // Two places may share a slot: they are then searched for in turn.
  std::size_t slot(std::uint32_t container, std::uint32_t previous) const {
    return (container * 31U + previous) & (next_.size() - 1);
  }

  std::vector<Entry> entries_;
  std::vector<std::uint32_t> next_;
  std::unordered_map<std::string_view, std::uint32_t> byText_;
  std::deque<KelWstring> foreign_;
};

// Reads JSON lines, one object each, into a tree that it keeps: a reader that has seen a few lines allocates nothing.
//
// Numbers keep all their characters. Serves one thread.
class JsonReader {
 public:
  // Bytes that must be readable after a line; their contents have no meaning.
  static constexpr std::size_t kPadding = 64;

  explicit JsonReader(const std::vector<unsigned short>& names);
  ~JsonReader();

  // The object of one line, until the next call. Throws JsonLineError.
  JsonTree& read(std::string_view line);

 private:
  struct Parser;
  const std::unique_ptr<Parser> parser_;
  JsonNames names_;
  JsonTree tree_;
};

}  // namespace oxr::rec
