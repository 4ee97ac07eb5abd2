#pragma once

#include <unicode/utf16.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "fuzz/codepage/icupage.hpp"
#include "fuzz/harness/generalway.hpp"
#include "kelexception.hpp"
#include "kelunits.hpp"
#include "textbffr.hpp"

namespace oxr::fuzz {
namespace textreader {

// What an operation did. A failure is its catalogue number and counts for all the rest.
struct Outcome {
  bool result = false;
  int consumed = 0;  // of a single character
  std::u16string text;
  int failure = 0;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};
inline Outcome failed(int message) {
  return {false, 0, u"", message};
}
struct Converted {
  std::u16string text;
  std::vector<int> offsets;
  int consumed = 0;
  UErrorCode status = U_ZERO_ERROR;
  bool isComplete() const { return status == U_ZERO_ERROR || status == U_BUFFER_OVERFLOW_ERROR; }
};

// A converter that can be copied with its state.
class PageCopy {
 public:
  explicit PageCopy(const UConverter* original) {
    UErrorCode status = U_ZERO_ERROR;
    converter_.adoptInstead(ucnv_clone(original, &status));
  }
  PageCopy(const PageCopy& other) {
    UErrorCode status = U_ZERO_ERROR;
    converter_.adoptInstead(ucnv_clone(other.converter_.getAlias(), &status));
  }
  PageCopy& operator=(const PageCopy&) = delete;

  Converted convert(const std::string& bytes, int from, int to, std::size_t room, bool flush) {
    Converted result;
    room = std::min(room, 2 * bytes.size() + 64);  // more than the bytes and what is held can give
    result.text.resize(room);
    result.offsets.resize(room);
    const char* source = bytes.data() + from;
    char16_t* target = result.text.data();
    ucnv_toUnicode(converter_.getAlias(), &target, target + room, &source, bytes.data() + to, result.offsets.data(),
                   flush, &result.status);
    result.text.resize(static_cast<std::size_t>(target - result.text.data()));
    result.consumed = static_cast<int>(source - bytes.data()) - from;
    return result;
  }
  void dropHeldUnits() { convert("", 0, 0, 32, false); }

 private:
  icu::LocalUConverterPointer converter_;
};

// All that is left of the text goes through one call of ICU, each time.
class NaiveReader {
 public:
  NaiveReader(std::string bytes, const UConverter* page)
      : bytes_(std::move(bytes)),
        limits_{static_cast<int>(bytes_.size())},
        fresh_(page),
        least_(ucnv_getMinCharSize(page)),
        most_(ucnv_getMaxCharSize(page)) {}

  int offset() const { return offset_; }

  Outcome character(bool move, int at) {
    if (at < 0 || at >= limit()) return {};
    PageCopy page = copyAt(at);
    page.dropHeldUnits();
    const Converted one = page.convert(bytes_, at, limit(), 1, true);
    if (!one.text.empty() && U16_IS_LEAD(one.text[0])) page.dropHeldUnits();
    if (move) {
      const bool continues = at == offset_;
      moveTo(offset_ + one.consumed);
      if (continues && one.isComplete()) held_.emplace(page);
    }
    const bool found = one.consumed > 0 && one.isComplete() && !one.text.empty();
    return {found, one.consumed, one.text.empty() ? std::u16string(1, u'\0') : one.text, 0};
  }

  Outcome skip(int count) {
    if (count <= 0 || offset_ >= limit()) return {};
    PageCopy page = copyAt(offset_);
    const Converted run = page.convert(bytes_, offset_, limit(), static_cast<std::size_t>(count), true);
    moveTo(offset_ + run.consumed);
    if (run.isComplete()) held_.emplace(page);
    return {run.consumed > 0 && run.isComplete() && !run.text.empty(), 0, u"", 0};
  }
  Outcome set(int count) {
    moveTo(0);
    return skip(count);
  }

  Outcome range(int from, int to, bool move, bool asValue) {
    if (!asValue && from == to) return {true, 0, u"", 0};
    if (from > to) return asValue ? failed(5502) : Outcome{};
    if (from < 0 || to > limit()) return asValue ? failed(5503) : Outcome{};
    const Converted text = PageCopy(fresh_).convert(bytes_, from, to, 2 * static_cast<std::size_t>(to - from), true);
    if (U_FAILURE(text.status)) return failed(5502);
    if (move) moveTo(to);
    return {true, 0, text.text, 0};
  }

  Outcome section(int count, bool move, int at, bool asValue) {
    if (count == 0) return {true, 0, u"", 0};
    const bool there = at >= 0 && at < limit();
    if (asValue && !there) return failed(5502);
    if (count < 0) return there ? terminated(move, at) : failed(5503);
    const std::int64_t shortest = at + std::int64_t{least_} * count;
    if (!asValue && (at < 0 || shortest > limit())) return {};
    const int end =
        asValue ? static_cast<int>(std::min<std::int64_t>(limit(), at + std::int64_t{most_} * count)) : limit();
    PageCopy page = copyAt(at);
    const auto room = static_cast<std::size_t>(count);
    Converted run = page.convert(bytes_, at, end, room, end == limit());
    if (end != limit() && run.status == U_ZERO_ERROR && run.text.size() < room) {
      const Converted rest = page.convert(bytes_, end, end, room - run.text.size(), true);
      run.text += rest.text;
      run.status = rest.status;
    }
    const bool countsStatus = asValue || (least_ != most_ && shortest == limit());
    if (countsStatus && !run.isComplete()) return failed(5502);
    if (run.text.size() < room) return {};
    if (move) {
      moveTo(at + run.consumed);
      held_.emplace(page);
    }
    return {true, 0, run.text, 0};
  }

  Outcome spawn(int length) {
    if (length < 0 || length > limit() - offset_) return failed(5502);
    limits_.push_back(offset_ + length);
    return {};
  }
  void unspawn() {
    if (limits_.size() > 1) limits_.pop_back();
  }
  int limit() const { return limits_.back(); }

 private:
  Outcome terminated(bool move, int at) {
    const Converted run = copyAt(at).convert(bytes_, at, limit(), SIZE_MAX, true);
    const std::size_t zero = run.text.find(u'\0');
    if (zero == std::u16string::npos) return failed(run.isComplete() ? 5504 : 5502);
    if (move) moveTo(at + run.offsets[zero] + least_);
    return {true, 0, run.text.substr(0, zero), 0};
  }

  PageCopy copyAt(int at) const { return held_ && at == offset_ ? *held_ : fresh_; }
  void moveTo(int at) {
    offset_ = at;
    held_.reset();
  }

  const std::string bytes_;
  std::vector<int> limits_;  // the innermost last
  const PageCopy fresh_;
  const int least_, most_;
  int offset_ = 0;
  std::optional<PageCopy> held_;  // the state of offset_, where there is one
};

class Reader : public SpawnableTextBufferReader {
 public:
  using SpawnableTextBufferReader::SpawnableTextBufferReader;
  int offset() const { return currentOffset; }
};

template <class Call>
Outcome outcomeOf(Call call) {
  try {
    return call();
  } catch (const KelConversionException& e) {
    return failed(e.messageNumber() & 0xFFFF);
  }
}
inline Outcome textOf(bool result, UnitView units) {
  return {result, 0, {units.begin(), units.end()}, 0};
}

// One operation in both.
inline void step(Choices& choices, Reader& reader, NaiveReader& naive) {
  const bool move = choices.coin();
  const int limit = naive.limit();
  // Mostly the current offset, given as such or by its number; else any, and one that is not there.
  const std::size_t where = choices.upTo(7);
  const int at = where < 6 ? naive.offset() : choices.between(-2, limit + 2) + (where == 7 ? 1 : 0);
  const int given = where < 4 || at == -1 ? -1 : at;
  const int start = given == -1 ? naive.offset() : at;
  const std::size_t kind = choices.upTo(31);
  const int count = kind == 31 ? INT32_MAX : kind > 27 ? choices.between(-2, limit + 2) : choices.between(-1, 12);
  Outcome mine, theirs;
  const std::size_t operation = choices.upTo(9);
  switch (operation) {
    case 0:
    case 1:
      mine = outcomeOf([&] {
        unsigned short unit = 0;
        int consumed = 0;
        const bool found = reader.getCharacter(&unit, move, &consumed, given);
        return Outcome{found, consumed, consumed > 0 ? std::u16string(1, unit) : u"", 0};
      });
      theirs = naive.character(move, start);
      break;
    case 2:
      mine = {move ? reader.moveOffsetChars(count) : reader.setOffsetChars(count), 0, u"", 0};
      theirs = move ? naive.skip(count) : naive.set(count);
      break;
    case 3:
    case 4:
      mine = outcomeOf([&] {
        KelWstring text;
        const bool result = reader.getPWFStringSection(text, count, move, given);
        return textOf(result, text.view());
      });
      theirs = naive.section(count, move, start, false);
      break;
    case 5:
    case 6:
      mine = outcomeOf([&] {
        PWFData value{KelWstring()};
        const bool result = reader.getStringSection(value, count, move, given);
        return textOf(result, value.getPWFStringValue().view());
      });
      theirs = naive.section(count, move, start, true);
      break;
    case 7:
    case 8: {
      const int end = choices.between(-1, 20) + start;
      mine = outcomeOf([&] {
        if (operation == 8) return textOf(true, reader.getString(start, end, move).getPWFStringValue().view());
        KelWstring text;
        const bool result = reader.getPWFString(text, start, end, move);
        return textOf(result, text.view());
      });
      theirs = naive.range(start, end, move, operation == 8);
      break;
    }
    default:
      if (move) {
        mine = outcomeOf([&] { return reader.spawnTextBufferReader(count), Outcome{}; });
        theirs = naive.spawn(count);
      } else {
        reader.unspawnTextBufferReader();
        naive.unspawn();
      }
  }
  const std::string what =
      "operation " + std::to_string(operation) + " of " + std::to_string(count) + " at " + std::to_string(start);
  requireEqual(mine.failure, theirs.failure, what + ", failure");
  requireEqual(mine.consumed, theirs.consumed, what + ", bytes consumed");
  requireEqual(mine.result, theirs.result, what + ", result");
  require(mine == theirs, what + ", text");
  requireEqual(reader.offset(), naive.offset(), what + ", offset");
  requireEqual(reader.getLength(), naive.limit(), what + ", length");
}

}  // namespace textreader

// A reader on any bytes in any code page against a naive one, in lock step: the naive one converts all that is left of
// the text with one call of ICU, each time.
inline void checkTextReader(Choices& choices) {
  const IcuPage& page = choices.oneOf(kIcuPages);
  std::string text = drawPageBytes(choices, page);
  // Long texts cross chunks; repeated, a short input makes one.
  if (!text.empty() && choices.upTo(3) == 0) {
    const std::string part = text;
    for (const std::size_t size = choices.upTo(5000); text.size() < size;)
      text += part;
    text += std::string(4, '\0');
  }
  const GeneralWay general(choices.upTo(2) == 0);
  ReadOnlyByteBuffer buffer;
  buffer.create(text.data(), static_cast<int>(text.size()));
  textreader::Reader reader(&buffer, page.ccsid, page.endian, nullptr);
  textreader::NaiveReader naive(text, openByIcu(page).getAlias());
  for (int steps = 0; steps < 60 && !choices.isEmpty(); ++steps)
    textreader::step(choices, reader, naive);
}

}  // namespace oxr::fuzz
