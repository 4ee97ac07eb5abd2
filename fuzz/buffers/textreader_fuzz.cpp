// A reader on any bytes in any code page against a naive one, in lock step: the naive one converts all that is left of
// the text with one call of ICU, each time.

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "kelconverter.hpp"
#include "kelexception.hpp"
#include "kelunits.hpp"
#include "textbffr.hpp"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

// What an operation did. A failure is its catalogue number and counts for all the rest.
struct Outcome {
  bool result = false;
  int consumed = 0;  // of a single character
  std::u16string text;
  int failure = 0;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};
Outcome failed(int message) {
  return {false, 0, u"", message};
}
std::u16string textOf(oxr::UnitView units) {
  return {units.begin(), units.end()};
}

void substituteAllButTruncation(const void* context, UConverterToUnicodeArgs* arguments, const char* bytes,
                                std::int32_t length, UConverterCallbackReason reason, UErrorCode* status) {
  if (*status != U_TRUNCATED_CHAR_FOUND)
    UCNV_TO_U_CALLBACK_SUBSTITUTE(context, arguments, bytes, length, reason, status);
}

struct Converted {
  std::u16string text;
  std::vector<int> offsets;
  int consumed = 0;
  UErrorCode status = U_ZERO_ERROR;
  bool isComplete() const { return status == U_ZERO_ERROR || status == U_BUFFER_OVERFLOW_ERROR; }
};

// A converter that can be copied with its state.
class Page {
 public:
  explicit Page(const UConverter* original) {
    UErrorCode status = U_ZERO_ERROR;
    converter_.adoptInstead(ucnv_clone(original, &status));
    ucnv_setToUCallBack(converter_.getAlias(), substituteAllButTruncation, nullptr, nullptr, nullptr, &status);
    ucnv_setFallback(converter_.getAlias(), true);
  }
  Page(const Page& other) {
    UErrorCode status = U_ZERO_ERROR;
    converter_.adoptInstead(ucnv_clone(other.converter_.getAlias(), &status));
  }
  Page& operator=(const Page&) = delete;

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
    Page page = pageAt(at);
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
    Page page = pageAt(offset_);
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
    const Converted text = Page(fresh_).convert(bytes_, from, to, 2 * static_cast<std::size_t>(to - from), true);
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
    Page page = pageAt(at);
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
    const Converted run = pageAt(at).convert(bytes_, at, limit(), SIZE_MAX, true);
    const std::size_t zero = run.text.find(u'\0');
    if (zero == std::u16string::npos) return failed(run.isComplete() ? 5504 : 5502);
    if (move) moveTo(at + run.offsets[zero] + least_);
    return {true, 0, run.text.substr(0, zero), 0};
  }

  Page pageAt(int at) const { return held_ && at == offset_ ? *held_ : fresh_; }
  void moveTo(int at) {
    offset_ = at;
    held_.reset();
  }

  const std::string bytes_;
  std::vector<int> limits_;  // the innermost last
  const Page fresh_;
  const int least_, most_;
  int offset_ = 0;
  std::optional<Page> held_;  // the state of offset_, where there is one
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

constexpr struct {
  int ccsid;
  EEndian endian;
} kPages[] = {{37, eEndianBig},      {819, eEndianBig},  {1252, eEndianBig}, {1208, eEndianBig},
              {1200, eEndianLittle}, {1200, eEndianBig}, {932, eEndianBig},  {943, eEndianBig},
              {930, eEndianBig},     {939, eEndianBig},  {1388, eEndianBig}, {1390, eEndianBig},
              {5488, eEndianBig},    {1232, eEndianBig}, {1204, eEndianBig}, {1236, eEndianBig}};

// One operation in both; its three bytes choose it and its arguments.
void step(Reader& reader, NaiveReader& naive, const std::uint8_t* choice) {
  const bool move = (choice[0] & 0x10) != 0;
  const int first = static_cast<std::int8_t>(choice[1]), second = static_cast<std::int8_t>(choice[2]);
  const int at = second < 0 ? naive.offset() : second, given = (choice[0] & 0x20) != 0 && second < 0 ? -1 : at;
  const int count = first == 127 ? INT32_MAX : first;
  Outcome mine, theirs;
  switch (choice[0] & 7) {
    case 0:
    case 1:
      mine = outcomeOf([&] {
        unsigned short unit = 0;
        int consumed = 0;
        const bool found = reader.getCharacter(&unit, move, &consumed, given);
        return Outcome{found, consumed, consumed > 0 ? std::u16string(1, unit) : u"", 0};
      });
      theirs = naive.character(move, at);
      break;
    case 2:
      mine = {move ? reader.moveOffsetChars(count) : reader.setOffsetChars(count), 0, u"", 0};
      theirs = move ? naive.skip(count) : naive.set(count);
      break;
    case 3:
      mine = outcomeOf([&] {
        KelWstring text;
        const bool result = reader.getPWFStringSection(text, count, move, given);
        return Outcome{result, 0, textOf(text.view()), 0};
      });
      theirs = naive.section(count, move, at, false);
      break;
    case 4:
      mine = outcomeOf([&] {
        PWFData value{KelWstring()};
        const bool result = reader.getStringSection(value, count, move, given);
        return Outcome{result, 0, textOf(value.getPWFStringValue().view()), 0};
      });
      theirs = naive.section(count, move, at, true);
      break;
    case 5:
      mine = outcomeOf([&] {
        KelWstring text;
        const bool result = reader.getPWFString(text, first, second, move);
        return Outcome{result, 0, textOf(text.view()), 0};
      });
      theirs = naive.range(first, second, move, false);
      break;
    case 6:
      mine = outcomeOf([&] {
        return Outcome{true, 0, textOf(reader.getString(first, second, move).getPWFStringValue().view()), 0};
      });
      theirs = naive.range(first, second, move, true);
      break;
    default:
      if (move) {
        mine = outcomeOf([&] { return reader.spawnTextBufferReader(count), Outcome{}; });
        theirs = naive.spawn(count);
      } else {
        reader.unspawnTextBufferReader();
        naive.unspawn();
      }
  }
  require(mine == theirs);
  require(reader.offset() == naive.offset());
  require(reader.getLength() == naive.limit());
}

}  // namespace

// The first byte chooses the code page, the second is the number of operations; then these, and the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const auto& page = kPages[data[0] % std::size(kPages)];
  const std::size_t steps = std::min<std::size_t>(data[1] % 64, (size - 2) / 3);
  const std::uint8_t* const operations = data + 2;
  // Long texts cross chunks; repeated, a short input makes one.
  std::string text(reinterpret_cast<const char*>(operations + 3 * steps), size - 2 - 3 * steps);
  if ((data[0] & 0x80) != 0 && !text.empty()) {
    const std::string part = text;
    while (text.size() < 5000)
      text += part;
    text += std::string(4, '\0');
  }
  ReadOnlyByteBuffer buffer;
  buffer.create(text.data(), static_cast<int>(text.size()));
  Reader reader(&buffer, page.ccsid, page.endian, nullptr);
  const KelConverter* const shared =
      KelConverter::createConverter(static_cast<unsigned>(page.ccsid), page.endian == eEndianLittle ? -1 : 1, nullptr);
  NaiveReader naive(text, shared->converter());
  for (std::size_t i = 0; i < steps; ++i)
    step(reader, naive, operations + 3 * i);
  return 0;
}
