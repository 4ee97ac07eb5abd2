#include "records/framing/detect.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "records/framing/errors.hpp"
#include "records/framing/recordheader.hpp"

// Every form is tried: a walk along its headers, or its line ends, through the start of the input. A walk that meets
// what the form does not allow is out. What is left is weighed by the bits that had to be as they are: each header
// gives those that the sizes of the layout do not leave open. Records without headers leave all open, so they are
// taken where nothing else has more to say for itself.
//
// The sizes of the layout are not insisted on: if no form fits with them, those with long headers are tried with
// records of any size, since a copybook may lack fields that the file has.

namespace oxr::rec {

namespace {

using Bytes = std::span<const unsigned char>;

constexpr double kEnough = 24;        // bits; two headers of two bytes, or one of four, may be by chance
constexpr double kWholeBits = 8;      // the last record ends where the input does
constexpr double kLineBits = 8;       // a line end, and no other control character
constexpr double kMultipleBits = 8;   // at most, for an input that is a multiple of the record
constexpr std::uint64_t kFewest = 2;  // records of sizes that are not those of the layout

struct Sizes {
  std::uint32_t min;
  std::uint32_t max;
  bool hold(std::uint32_t size) const { return size >= min && size <= max; }
  // Bits of a length of so many bytes that the sizes settle.
  double bitsOf(const HeaderShape& shape) const {
    return std::max(0.0, 8.0 * shape.bytes - std::log2(static_cast<double>(max - min) + 1));
  }
};

constexpr std::uint32_t kAnySize = 0xFFFF;

std::uint32_t bigPart(std::uint64_t left) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(left, std::numeric_limits<std::uint32_t>::max()));
}

// Walks along headers. `left` is the input from here on, as far as it is at hand.
class Walk {
 public:
  Walk(Framing framing, const RecordForm& form, const InputStart& start, const Sizes& sizes)
      : framing_(framing),
        shape_(headerShape(framing)),
        sizes_(sizes),
        isWhole_(start.size && *start.size <= start.bytes.size()),
        left_(start.bytes) {
    RecordForm own = form;
    own.framing = framing;
    counted_ = countedHeader(own);
  }

  // False if the start is not of this form.
  bool run() {
    while (!left_.empty() && !isCut_)
      if (!(isBlocked(framing_) ? block() : record(bigPart(left_.size()), false))) return false;
    return !isInRecord_ || isCut_;
  }
  std::uint64_t records() const { return records_; }
  // Some of the records are in parts.
  bool hasParts() const { return hasParts_; }
  // Most of the records begin with a header of their own: they are blocks, whether all is well in them or not.
  bool areBlocks() const { return 2 * withHeader_ > records_; }
  bool isWhole() const { return isWhole_; }

 private:
  // The start ends within something: that is good unless the input does, too.
  bool cut() {
    isCut_ = true;
    return !isWhole_;
  }

  bool block() {
    if (left_.size() < kBlockHeaderBytes) return cut();
    const std::optional<std::uint32_t> length = blockLengthIn(left_.data());
    if (!length || *length <= counted_) return false;
    left_ = left_.subspan(kBlockHeaderBytes);
    for (std::uint32_t rest = *length - counted_; rest != 0 && !isCut_;) {
      const std::size_t before = left_.size();
      if (!record(rest, true)) return false;
      rest -= static_cast<std::uint32_t>(before - left_.size());
    }
    return true;
  }

  // One record, or segment, in a room of so many bytes, which are not all at hand.
  bool record(std::uint32_t room, bool isRoomKnown) {
    if (isRoomKnown && room < shape_.bytes) return false;
    if (left_.size() < shape_.bytes) return cut();
    const std::uint32_t length = lengthIn(shape_, left_.data());
    if (length < counted_ || !isHeader() || length - counted_ > kLongestRecord) return false;
    const std::uint32_t size = length - counted_;
    if (isRoomKnown && size + shape_.bytes > room) return false;
    if (!follows(size)) return false;
    if (left_.size() - shape_.bytes < size) return cut();
    left_ = left_.subspan(shape_.bytes + size);
    return true;
  }

  bool isHeader() const {
    const std::uint32_t rest = restOf(shape_, left_.data());
    return framing_ == Framing::spanned ? rest >> 8 <= kHighestSegment && (rest & 0xFF) == 0 : rest == 0;
  }

  // Whether a part of so many bytes may come now; counts it.
  bool follows(std::uint32_t size) {
    const auto segment = framing_ == Framing::spanned ? static_cast<Segment>(left_[2]) : Segment::whole;
    const bool begins = segment == Segment::whole || segment == Segment::first;
    if (begins == isInRecord_) return false;
    soFar_ = begins ? size : soFar_ + size;
    isInRecord_ = segment == Segment::first || segment == Segment::middle;
    hasParts_ = hasParts_ || segment != Segment::whole;
    if (isInRecord_) return soFar_ <= sizes_.max;
    if (!sizes_.hold(soFar_)) return false;
    if (left_.size() - shape_.bytes < size) return true;
    ++records_;
    if (framing_ == Framing::rdw && beginsWithHeader(left_.subspan(shape_.bytes, size))) ++withHeader_;
    return true;
  }

  bool beginsWithHeader(Bytes record) const {
    if (record.size() < shape_.bytes) return false;
    const std::uint32_t length = lengthIn(shape_, record.data()), rest = restOf(shape_, record.data());
    return length >= counted_ && length > 0 && length <= record.size() && rest >> 8 <= kHighestSegment &&
           (rest & 0xFF) == 0;
  }

  const Framing framing_;
  const HeaderShape shape_;
  const Sizes sizes_;
  const bool isWhole_;
  Bytes left_;
  std::uint32_t counted_ = 0;
  std::uint32_t soFar_ = 0;  // bytes of the record's segments
  bool isInRecord_ = false;  // its last segment is to come
  bool isCut_ = false;
  std::uint64_t records_ = 0;
  std::uint64_t withHeader_ = 0;
  bool hasParts_ = false;
};

struct Candidate {
  Framing framing;
  bool countsHeader;
};

constexpr std::array<Candidate, 16> kCandidates{{{Framing::rdw, true},
                                                 {Framing::rdwLittle, true},
                                                 {Framing::bdw, true},
                                                 {Framing::spanned, true},
                                                 {Framing::length4, false},
                                                 {Framing::length4Little, false},
                                                 {Framing::length2, false},
                                                 {Framing::length2Little, false},
                                                 {Framing::rdw, false},
                                                 {Framing::rdwLittle, false},
                                                 {Framing::length4, true},
                                                 {Framing::length4Little, true},
                                                 {Framing::length2, true},
                                                 {Framing::length2Little, true},
                                                 {Framing::bdw, false},
                                                 {Framing::spanned, false}}};

std::optional<Reading> withHeaders(const Candidate& candidate, const RecordForm& layout, const InputStart& start,
                                   const Sizes& sizes) {
  RecordForm form = layout;
  form.countsHeader = candidate.countsHeader;
  Walk walk(candidate.framing, form, start, sizes);
  if (!walk.run() || walk.records() == 0) return std::nullopt;
  // Where all segments are whole, blocks say the same in fewer words.
  if (candidate.framing == Framing::spanned && !walk.hasParts()) return std::nullopt;
  const HeaderShape shape = headerShape(candidate.framing);
  Reading reading{candidate.framing, std::nullopt, false, walk.records(), walk.isWhole(), 0};
  if (candidate.countsHeader != shape.countsHeader) reading.countsHeader = candidate.countsHeader;
  reading.evidence = static_cast<double>(walk.records()) * sizes.bitsOf(shape) + (walk.isWhole() ? kWholeBits : 0);
  return reading.evidence >= kEnough ? std::optional(reading) : std::nullopt;
}

struct Lines {
  std::uint64_t count = 0;
  bool hasRest = false;     // bytes behind the last line end
  std::uint32_t pitch = 0;  // bytes from each line to the next, line end included, if it is always the same
};

// Nothing if there is no line end, or if a control character stands beside them.
std::optional<Lines> linesOf(const RecordForm& form, Bytes bytes) {
  constexpr unsigned char kTabs[] = {0x05, 0x09};  // of EBCDIC, of ASCII
  Lines lines;
  std::uint32_t size = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    const unsigned char byte = bytes[at];
    ++size;
    if (byte == form.lineFeed || byte == form.nextLine) {
      lines.pitch = lines.count == 0 || lines.pitch == size ? size : 0;
      ++lines.count;
      size = 0;
    } else if (byte < form.blank && byte != form.carriageReturn && byte != kTabs[0] && byte != kTabs[1]) {
      return std::nullopt;
    }
  }
  lines.hasRest = size != 0;
  return lines.count == 0 ? std::nullopt : std::optional(lines);
}

bool isAllOf(const InputStart& start) {
  return start.size && *start.size <= start.bytes.size();
}

// Records that follow each other, if the size of the input allows them.
std::optional<Reading> withoutHeaders(const RecordForm& layout, const InputStart& start) {
  Reading reading{Framing::fixed, std::nullopt, layout.isVariable, 0, isAllOf(start), 1};
  if (layout.isVariable && start.counted) {
    reading.records = start.counted->records;
    return start.counted->fault.empty() ? std::optional(reading) : std::nullopt;
  }
  if (layout.isVariable || layout.maxSize == 0) return reading;
  reading.records = start.bytes.size() / layout.maxSize;
  if (!start.size) return reading;
  if (*start.size % layout.maxSize != 0) return std::nullopt;
  reading.evidence = std::min(kMultipleBits, std::log2(layout.maxSize) + 1);
  return reading;
}

// The headers of blocks look like those of records, whether all is well in the blocks or not.
bool areBlocks(const RecordForm& layout, const InputStart& start, const Sizes& sizes) {
  RecordForm form = layout;
  form.countsHeader = true;
  Walk walk(Framing::rdw, form, start, sizes);
  return walk.run() && walk.areBlocks();
}

void addHeaders(std::vector<Reading>& readings, const RecordForm& layout, const InputStart& start, const Sizes& sizes,
                std::uint64_t fewest) {
  const bool hasBlocks = areBlocks(layout, start, sizes);
  for (const Candidate& candidate : kCandidates) {
    if (hasBlocks && !isBlocked(candidate.framing)) continue;
    if (layout.countsHeader && *layout.countsHeader != candidate.countsHeader) continue;
    const auto reading = withHeaders(candidate, layout, start, sizes);
    if (reading && reading->records >= fewest) readings.push_back(*reading);
  }
}

constexpr unsigned char kAsciiBlank = ' ';

}  // namespace

std::optional<bool> linesOfOtherPage(const InputStart& start, const RecordForm& layout) {
  RecordForm other = layout;
  const bool isEbcdic = layout.blank == kAsciiBlank;
  other.blank = isEbcdic ? 0x40 : kAsciiBlank;
  other.lineFeed = isEbcdic ? 0x25 : '\n';
  other.nextLine = isEbcdic ? 0x15 : '\n';
  const auto lines = linesOf(other, start.bytes);
  return lines && lines->count >= kFewest ? std::optional(isEbcdic) : std::nullopt;
}

std::vector<Reading> readingsOf(const InputStart& start, const RecordForm& layout) {
  std::vector<Reading> readings;
  addHeaders(readings, layout, start, {layout.isVariable ? 1 : layout.maxSize, layout.maxSize}, 1);
  if (readings.empty()) addHeaders(readings, layout, start, {1, kAnySize}, kFewest);
  auto fixed = linesOfOtherPage(start, layout) ? std::nullopt : withoutHeaders(layout, start);
  if (const auto lines = linesOf(layout, start.bytes)) {
    const double evidence = kLineBits * static_cast<double>(lines->count);
    const std::uint64_t count = lines->count + (isAllOf(start) && lines->hasRest ? 1 : 0);
    readings.push_back({Framing::lines, std::nullopt, false, count, isAllOf(start), evidence});
    // The layout may have a field for the line end.
    if (fixed && lines->pitch == layout.maxSize) fixed->evidence = evidence;
  }
  if (fixed) readings.push_back(*fixed);
  std::stable_sort(readings.begin(), readings.end(),
                   [](const Reading& a, const Reading& b) { return a.evidence > b.evidence; });
  std::erase_if(readings, [best = readings.empty() ? 0 : readings.front().evidence](const Reading& reading) {
    return reading.evidence < best / 2;
  });
  return readings;
}

}  // namespace oxr::rec
