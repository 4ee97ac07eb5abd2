#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "dataconv.hpp"

namespace oxr::rec {

// Writes text into fields of a code page: padded with blanks, and refused rather than changed.
//
// Serves one thread.
class FieldTextWriter {
 public:
  // What the room of a field is filled with: characters of the page as they stand there, or (dbcs) those of its
  // double-byte part alone, without the bytes that shift there and back in an EBCDIC page.
  enum class Part : std::uint8_t { whole, doubleByte };

  // The converter is the caller's. Throws KelRecoverableException if its code page is not known.
  FieldTextWriter(DataCnv& cnv, int ccsid, Part part);

  // Throws FieldRefused for text that is too long, or has a character that the code page lacks; the bytes are then as
  // they were. Blanks at the end of the text count for nothing.
  void write(const KelWstring& text, bool isAtRight, unsigned char* bytes, std::uint32_t size);
  // Blanks alone. A rest that no character fits is zero.
  void fillWithBlanks(unsigned char* bytes, std::uint32_t size) const;

 private:
  void findUsual();
  bool convertUsual(UnitView text);
  std::uint32_t convert(const KelWstring& text, std::uint32_t size);
  std::uint32_t withoutShifts(std::uint32_t size);
  bool isSuspect(UnitView text, std::uint32_t size) const;
  void requireSame(const KelWstring& text, std::uint32_t size);
  [[noreturn]] void refuseSingleBytes() const;
  [[noreturn]] void refuseLong(UnitView text, std::uint32_t size) const;

  DataCnv& cnv_;
  const int ccsid_;
  const Part part_;
  bool isSingleByte_ = false;
  bool hasShifts_ = false;        // around what the converter takes
  unsigned char substitute_ = 0;  // single byte: what stands for a character that the page lacks
  // Single byte: the usual characters as the converter writes them, or kOdd for those that it is asked about each time.
  static constexpr std::uint16_t kOdd = 0x100;
  std::array<std::uint16_t, 0x800> usual_;
  bool hasUsual_ = false;
  std::vector<unsigned char> blank_;      // a blank as it stands in a field
  std::vector<unsigned char> converted_;  // the text at hand
};

}  // namespace oxr::rec
