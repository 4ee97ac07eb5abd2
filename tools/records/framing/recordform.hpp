#pragma once

#include <cstdint>
#include <optional>

namespace oxr::rec {

// What stands around the records of an input.
enum class Framing : std::uint8_t {
  fixed,          // nothing: records of one length, or of the length that their counts give
  rdw,            // 4 bytes in front: length, most significant byte first, and two zero bytes
  rdwLittle,      // 4 bytes in front: two zero bytes, and length, least significant byte first
  bdw,            // blocks with a header like that of `rdw` in front, which hold records of `rdw`
  spanned,        // the same, but a record may go on in the next block: the third byte of a header tells
  length2,        // 2 bytes in front: length, most significant byte first
  length2Little,  // the same, least significant byte first
  length4,        // 4 bytes in front: length, most significant byte first
  length4Little,  // the same, least significant byte first
  lines,          // text that ends in LF, or in CR and LF
  automatic,      // to be found out from the input, see detect.hpp; no reader takes it
};

// What ends a line that is written; read are all of them.
enum class LineEnd : std::uint8_t { lineFeed, returnAndFeed, nextLine };

// How records follow each other in an input.
struct RecordForm {
  Framing framing = Framing::fixed;
  // Whether a length in front counts the bytes that it takes. Nothing: it does in rdw, rdwLittle, bdw and spanned, and
  // does not where the header is a length alone.
  std::optional<bool> countsHeader{};

  bool isVariable = false;    // fixed: only reading a record tells its length
  std::uint32_t maxSize = 0;  // bytes of the longest record of the layout

  // The characters of `lines` in the input's code page, see setLineCharacters.
  unsigned char lineFeed = '\n';
  unsigned char nextLine = '\n';  // ends a line too: the line end of EBCDIC systems, elsewhere the same as lineFeed
  unsigned char carriageReturn = '\r';
  unsigned char blank = ' ';

  // Writing only.
  std::optional<std::uint32_t> blockSize{};  // bytes of a full block of `bdw` and `spanned`, its header among them
  std::optional<LineEnd> lineEnd{};          // of `lines`
  bool trimsLines = false;                   // of `lines`: blanks at the end of a record are left out
};

// Records that are longer are not read, nor does anybody write them: what asks for one is no header.
inline constexpr std::uint32_t kLongestRecord = std::uint32_t{1} << 28;

// Which bytes of a file are looked at.
struct InputWindow {
  struct Range {
    std::uint64_t begin = 0;  // bytes from the start of the file; both are where a record begins, or the file's end
    std::uint64_t end = 0;
  };
  std::uint64_t skipHeader = 0;     // bytes at the start of the file that are no record
  std::uint64_t skipTrailer = 0;    // bytes at its end
  std::optional<Range> range;       // within the rest; all of it if nothing
  std::uint64_t recordsBefore = 0;  // the first record is the one after so many, for messages

  bool isFromStart() const { return !range || range->begin <= skipHeader; }
};

}  // namespace oxr::rec
