#include "records/fields/textwriter.hpp"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>

#include "kelwstringconvertor.hpp"
#include "records/fields/converter.hpp"

// A code page writes a substitute for a character that it lacks, or another one that looks like it. So what may have
// been changed is converted back and compared: in a single-byte page that is text which is not ASCII, or whose bytes
// hold the substitute; in any other page all text that is not ASCII.
//
// Most text for a single-byte page is of the alphabets that Unicode begins with. What the converter makes of each of
// their characters, and what it makes of that, is asked for once.

namespace oxr::rec {

namespace {

constexpr unsigned short kPrivate = 0xE000;  // a character that single-byte pages lack
constexpr unsigned short kBlank[] = {' '};
constexpr unsigned short kWideBlank[] = {0x3000};
constexpr std::uint32_t kLongestCharacter = 8;
constexpr std::uint32_t kShifts = 2;  // shift-out before double-byte characters, shift-in after them

UnitView withoutTrailingBlanks(UnitView text) {
  while (!text.empty() && text.back() == ' ')
    text.remove_suffix(1);
  return text;
}

bool isAscii(UnitView text) {
  unsigned short all = 0;
  for (const unsigned short unit : text)
    all |= unit;
  return all < 0x80;
}

// With the character before it such a one might have a byte of its own.
bool combines(unsigned short unit) {
  return unit >= 0x300 && unit < 0x370;
}

std::string plural(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

}  // namespace

FieldTextWriter::FieldTextWriter(DataCnv& cnv, int ccsid, Part part) : cnv_(cnv), ccsid_(ccsid), part_(part) {
  const CPUnicodeConverter& page = *cnv_.getConverter();
  hasShifts_ = part == Part::doubleByte && cnv_.IsCcsidEBCDIC();
  isSingleByte_ = part == Part::whole && page.getMinBytesPerChar() == 1 && page.getMaxBytesPerChar() == 1;
  const auto bytesOf = [&](const unsigned short* unit) {
    const std::uint32_t size = convert(KelWstring(unit, 1), kLongestCharacter);
    return std::vector<unsigned char>(converted_.data(), converted_.data() + size);
  };
  blank_ = bytesOf(part == Part::whole ? kBlank : kWideBlank);
  if (!isSingleByte_) return;
  substitute_ = bytesOf(&kPrivate).front();
  findUsual();
}

void FieldTextWriter::findUsual() {
  std::array<unsigned char, 256> bytes;
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
  KelWstring all;
  if (U_FAILURE(cnv_.toUnicodeString(all, bytes.data(), 256))) return;
  std::basic_string<unsigned short> units;
  for (const unsigned short unit : all.view())
    if (unit < usual_.size() && !combines(unit)) units += unit;
  const KelWstring known{UnitView(units)};
  const auto count = static_cast<std::uint32_t>(known.length());
  if (convert(known, count) != count) return;
  KelWstring back;
  hasUsual_ = U_SUCCESS(cnv_.toUnicodeString(back, converted_.data(), static_cast<int>(count))) && back == known;
  usual_.fill(kOdd);
  for (std::uint32_t i = 0; i < count; ++i)
    if (converted_[i] != substitute_) usual_[known.view()[i]] = converted_[i];
}

// False for text that needs the converter. Its bytes come to stand in converted_, as many as it has characters.
bool FieldTextWriter::convertUsual(UnitView text) {
  if (!hasUsual_) return false;
  if (converted_.size() < text.size()) converted_.resize(text.size());
  constexpr unsigned kMask = std::tuple_size_v<decltype(usual_)> - 1;
  unsigned units = 0, bytes = 0;  // all in one
  unsigned char* const to = converted_.data();
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned byte = usual_[text[i] & kMask];
    units |= text[i];
    bytes |= byte;
    to[i] = static_cast<unsigned char>(byte);
  }
  return units <= kMask && (bytes & kOdd) == 0;
}

void FieldTextWriter::write(const KelWstring& text, bool isAtRight, unsigned char* bytes, std::uint32_t size) {
  const UnitView shown = text.length() <= size ? text.view() : withoutTrailingBlanks(text.view());
  if (isSingleByte_ && shown.size() > size) refuseLong(shown, size);
  const bool isCut = shown.size() != text.length();
  const bool isUsual = convertUsual(shown);
  const std::uint32_t used = shown.empty() ? 0
                             : isUsual     ? static_cast<std::uint32_t>(shown.size())
                                           : convert(isCut ? KelWstring(shown) : text, size);
  if (used > size) {
    if (const UnitView shorter = withoutTrailingBlanks(shown); shorter.size() < shown.size())
      return write(KelWstring(shorter), isAtRight, bytes, size);
    refuseLong(shown, size);
  }
  if (!isUsual && isSuspect(shown, used)) requireSame(isCut ? KelWstring(shown) : text, used);
  unsigned char* const at = isAtRight ? bytes + (size - used) : bytes;
  fillWithBlanks(isAtRight ? bytes : bytes + used, size - used);
  std::memcpy(at, converted_.data(), used);
}

void FieldTextWriter::fillWithBlanks(unsigned char* bytes, std::uint32_t size) const {
  if (blank_.size() == 1) {
    std::memset(bytes, blank_[0], size);
    return;
  }
  std::uint32_t at = 0;
  for (; at + blank_.size() <= size; at += static_cast<std::uint32_t>(blank_.size()))
    std::memcpy(bytes + at, blank_.data(), blank_.size());
  std::memset(bytes + at, 0, size - at);
}

// The text's bytes come to stand in converted_. Returns their number, more than `size` if they are more.
std::uint32_t FieldTextWriter::convert(const KelWstring& text, std::uint32_t size) {
  const std::uint32_t shifts = hasShifts_ ? kShifts : 0;
  if (converted_.size() < size + kShifts) converted_.resize(size + kShifts);
  int used = static_cast<int>(size + shifts);
  const UErrorCode status = cnv_.fromUnicodeString(text, converted_.data(), used);
  if (U_FAILURE(status) || static_cast<std::uint32_t>(used) > size + shifts) return size + 1;
  if (part_ == Part::doubleByte && !hasShifts_ && static_cast<std::uint32_t>(used) != 2 * text.length())
    refuseSingleBytes();
  return shifts == 0 ? static_cast<std::uint32_t>(used) : withoutShifts(static_cast<std::uint32_t>(used));
}

// Takes the shifts off double-byte characters; a text with others among them has no other form.
std::uint32_t FieldTextWriter::withoutShifts(std::uint32_t size) {
  constexpr unsigned char kShiftOut = 0x0E, kShiftIn = 0x0F;
  if (size < kShifts || converted_[0] != kShiftOut || converted_[size - 1] != kShiftIn ||
      std::count(converted_.begin(), converted_.begin() + size, kShiftOut) != 1)
    refuseSingleBytes();
  std::memmove(converted_.data(), converted_.data() + 1, size - kShifts);
  return size - kShifts;
}

void FieldTextWriter::refuseSingleBytes() const {
  throw FieldRefused("the text has characters that take one byte in code page " + std::to_string(ccsid_));
}

bool FieldTextWriter::isSuspect(UnitView text, std::uint32_t size) const {
  if (!isAscii(text)) return true;
  return isSingleByte_ && size != 0 && std::memchr(converted_.data(), substitute_, size) != nullptr;
}

void FieldTextWriter::requireSame(const KelWstring& text, std::uint32_t size) {
  std::vector<unsigned char> bytes(converted_.begin(), converted_.begin() + size);
  if (hasShifts_) {
    bytes.insert(bytes.begin(), 0x0E);
    bytes.push_back(0x0F);
  }
  KelWstring back;
  // A character that means nothing by itself may be left out.
  if (size != 0 && U_SUCCESS(cnv_.toUnicodeString(back, bytes.data(), static_cast<int>(bytes.size()))) && back == text)
    return;
  const UnitView was = text.view(), is = back.view();
  const auto at =
      static_cast<std::size_t>(std::mismatch(was.begin(), was.end(), is.begin(), is.end()).first - was.begin());
  const UnitView character =
      was.substr(std::min(at, was.size() - 1), (was[std::min(at, was.size() - 1)] & 0xFC00) == 0xD800 ? 2 : 1);
  throw FieldRefused("code page " + std::to_string(ccsid_) + " has no character \"" + toUtf8(character) + '"');
}

void FieldTextWriter::refuseLong(UnitView text, std::uint32_t size) const {
  throw FieldRefused("the text has " + plural(text.size(), "character") + ", more than the field's " +
                     plural(size, "byte") + (isSingleByte_ ? "" : " have room for"));
}

}  // namespace oxr::rec
