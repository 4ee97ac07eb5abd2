#include "records/framing/recordframer.hpp"

#include <algorithm>

#include "records/counted.hpp"
#include "records/framing/errors.hpp"

// Records go out at once, but for those of blocks: a block's length is known when it is full. A record of `bdw` that
// has no room left in its block begins the next one; one of `spanned` is cut there.

namespace oxr::rec {

namespace {

void append(std::string& out, std::span<const unsigned char> bytes) {
  out.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

// The length of a block in two bytes, or in 31 bits behind one that tells so.
std::string blockHeader(std::uint32_t length) {
  constexpr std::uint32_t kLong = 0x8000;
  if (length < kLong) return {static_cast<char>(length >> 8), static_cast<char>(length), 0, 0};
  return {static_cast<char>(0x80), 0, static_cast<char>(length >> 8), static_cast<char>(length)};
}

}  // namespace

RecordFramer::RecordFramer(const RecordForm& form, std::uint32_t blockSize)
    : form_(form),
      shape_(headerShape(form.framing)),
      counted_(countedHeader(form)),
      blockSize_(form.blockSize.value_or(blockSize)) {}

void RecordFramer::add(Bytes record, std::string& out) {
  ++count_;
  switch (form_.framing) {
    case Framing::fixed:
      if (record.empty()) throw FrameError("record " + std::to_string(count_) + ": it has no bytes");
      return append(out, record);
    case Framing::lines:
      return addLine(record, out);
    case Framing::bdw:
      return addToBlock(record, out);
    case Framing::spanned:
      return addSegments(record, out);
    default:
      require(record.size(), shape_.lengthBytes == 2 ? 0xFFFFU - counted_ : kLongestRecord, "length in front");
      addHeader(record.size(), Segment::whole, out);
      append(out, record);
  }
}

void RecordFramer::addLine(Bytes record, std::string& out) const {
  while (form_.trimsLines && !record.empty() && record.back() == form_.blank)
    record = record.first(record.size() - 1);
  requireLine(record);
  append(out, record);
  const LineEnd end = form_.lineEnd.value_or(LineEnd::lineFeed);
  if (end == LineEnd::returnAndFeed) out += static_cast<char>(form_.carriageReturn);
  out += static_cast<char>(end == LineEnd::nextLine ? form_.nextLine : form_.lineFeed);
}

void RecordFramer::finish(std::string& out) {
  if (block_.empty()) return;
  out += blockHeader(static_cast<std::uint32_t>(block_.size() + counted_));
  out += block_;
  block_.clear();
}

void RecordFramer::addToBlock(Bytes record, std::string& out) {
  require(record.size(), blockSize_ - kBlockHeaderBytes - shape_.bytes, "block");
  if (record.size() + shape_.bytes > room()) finish(out);
  addHeader(record.size(), Segment::whole, block_);
  append(block_, record);
}

void RecordFramer::addSegments(Bytes record, std::string& out) {
  require(record.size(), kLongestRecord, "file");
  if (record.empty()) throw FrameError("record " + std::to_string(count_) + ": it has no bytes");
  for (bool isFirst = true; !record.empty(); isFirst = false) {
    if (room() <= shape_.bytes) finish(out);
    const Bytes part = record.first(std::min<std::size_t>(record.size(), room() - shape_.bytes));
    record = record.subspan(part.size());
    const Segment segment =
        isFirst ? record.empty() ? Segment::whole : Segment::first : (record.empty() ? Segment::last : Segment::middle);
    addHeader(part.size(), segment, block_);
    append(block_, part);
  }
}

void RecordFramer::addHeader(std::size_t size, Segment segment, std::string& out) const {
  const auto length = static_cast<std::uint32_t>(size + counted_);
  char header[4] = {};
  for (std::uint32_t i = 0; i < shape_.lengthBytes; ++i) {
    const std::uint32_t place = shape_.isBig ? shape_.lengthBytes - 1 - i : i;
    header[shape_.lengthAt + i] = static_cast<char>(length >> (8 * place));
  }
  if (form_.framing == Framing::spanned) header[2] = static_cast<char>(segment);
  out.append(header, shape_.bytes);
}

void RecordFramer::require(std::uint64_t size, std::uint64_t most, const char* holder) const {
  if (size <= most) return;
  throw FrameError("record " + std::to_string(count_) + ": it has " + counted(size, "byte") + ", its " + holder +
                   " has room for " + std::to_string(most));
}

// A carriage return at the end of a record would be taken for a part of its line end.
void RecordFramer::requireLine(Bytes record) const {
  const bool hasEnd = std::any_of(record.begin(), record.end(), [this](unsigned char byte) {
    return byte == form_.lineFeed || byte == form_.nextLine;
  });
  if (hasEnd || (!record.empty() && record.back() == form_.carriageReturn))
    throw FrameError("record " + std::to_string(count_) + ": it holds a line end, which a line cannot");
}

}  // namespace oxr::rec
