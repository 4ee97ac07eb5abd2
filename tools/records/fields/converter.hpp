#pragma once

#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "records/fields/diagnosis.hpp"
#include "records/fields/externalbytes.hpp"
#include "records/fields/physicalform.hpp"
#include "records/plan/step.hpp"

namespace oxr::rec {

// What a DataCnv is made with, for reading and writing alike.
inline constexpr int kCenturyWindow = 53;
inline constexpr char kPositivePackedSign = 12;
EFloatFmt floatFormat(FloatForm form);
// What pads double-byte text, and the blank of all other text.
inline constexpr unsigned short kDoubleBlanks[] = {0x3000, ' ', 0};

// A field whose bytes convert, but to nothing that its picture allows.
class FieldRefused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Turns the bytes of a field into a value.
//
//   text, edited,        STRING; of a single-byte code page without the blanks at its end, which saves converting them
//   national, dbcs
//   external, packed,    DECIMAL: optional "-", digits (leading zeros too), optional "." and digits
//   unsignedPacked
//   binary               INTEGER; DECIMAL if it has decimal places or passes 64 bits signed
//   shortFloat,          FLOAT; of a shortFloat the double that has the digits of the float
//   longFloat
//
// What a form says beside that comes first: bytes that stand for no number, digits within padding, edited numbers,
// dates. Serves one thread.
class FieldConverter {
 public:
  // Throws KelRecoverableException if the code page is not known.
  explicit FieldConverter(const PhysicalForm& form);

  // `bytes` has step.size bytes. Throws KelRecoverableException or FieldRefused for a bad field.
  [[gnu::always_inline]] PWFData convert(const Step& step, const unsigned char* bytes) {
    if (isSpecial_) [[unlikely]]
      return special(step, bytes);
    return plain(step, bytes, step.size);
  }
  // Why convert() would refuse the field, without the cost of an exception; nothing for a field that it takes, and for
  // one that only the conversion itself can tell of.
  FaultReason diagnose(const Step& step, const unsigned char* bytes);
  // What is told of a field that was refused, by the library with its number or by a FieldRefused (0), where its bytes
  // do not show the reason.
  FaultReason refusal(const Step& step, const unsigned char* bytes, int message, std::string said);
  // The first `size` bytes of a text that the record's end cuts off.
  PWFData convertStart(const Step& step, const unsigned char* bytes, std::uint32_t size) {
    return plain(step, bytes, size);
  }
  // Whether the start of a field means something without the rest.
  static bool canBeCut(const Step& step) { return step.kind == Kind::text; }
  // Whether blanks all over are a zero, whatever the form says.
  static bool showsZeroAsBlanks(const Step& step);
  // A null of the type that convert() gives.
  static PWFData null(const Step& step);

 private:
  // A function that hands a value on has a guard of the stack for it. So the kinds that most fields have are read right
  // where the value is wanted.
  [[gnu::always_inline]] PWFData plain(const Step& step, const unsigned char* bytes, std::uint32_t size) {
    switch (step.kind) {
      case Kind::text:
        return text(bytes, size);
      case Kind::external:
        return external(step, bytes, size);
      case Kind::packed:
        return packed(step, bytes, size);
      case Kind::binary:
      case Kind::nativeBinary:
        return binary(step, bytes, size);
      default:
        return other(step, bytes, size);
    }
  }
  PWFData other(const Step& step, const unsigned char* bytes, std::uint32_t size);
  PWFData special(const Step& step, const unsigned char* bytes);
  std::optional<PWFData> empty(const Step& step, const unsigned char* bytes);

  // Four blanks of five in a file stand at the end of a field: without them most texts are short enough to stay inside
  // their value.
  [[gnu::always_inline]] PWFData text(const unsigned char* bytes, std::uint32_t size) {
    if (blank_ != 0) {
      size = withoutTrailing(blank_, bytes, size);
      if (size == 0) return PWFData(&kNoText, 0);
    }
    return cnv_.RawCharsToPWFData(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
  }
  PWFData national(const unsigned char* bytes, std::uint32_t size);
  PWFData doubleBytes(const unsigned char* bytes, std::uint32_t size);
  [[gnu::always_inline]] PWFData external(const Step& step, const unsigned char* bytes, std::uint32_t size) {
    if (!digits_.areGood(bytes, size, step.sign)) [[unlikely]]
      return oddExternal(step, bytes, size);
    return decimalOf(step, bytes, size);
  }
  PWFData oddExternal(const Step& step, const unsigned char* bytes, std::uint32_t size);
  // Nothing is trimmed, so blanks are no digits; a field that may be blank for zero loses its leading blanks.
  [[gnu::always_inline]] PWFData decimalOf(const Step& step, const unsigned char* bytes, std::uint32_t size) {
    return cnv_.ExtDecToDec(bytes, static_cast<int>(size), step.scale, step.sign,
                            step.isBlankWhenZero ? eJustifyRight : eJustifyNone, ' ', true, form_.hasLetterSigns,
                            nullptr, nullptr);
  }
  PWFData padded(const Step& step, const unsigned char* bytes);
  [[gnu::always_inline]] PWFData packed(const Step& step, const unsigned char* bytes, std::uint32_t length) {
    const auto size = static_cast<int>(length);
    if (step.scale >= 2 * size - 1) [[unlikely]]
      return packedPlaces(step, bytes, size);
    return cnv_.PckdDecToDec(bytes, size, step.scale, step.sign);
  }
  PWFData packedPlaces(const Step& step, const unsigned char* bytes, int size);
  PWFData packedWithLeadingSign(const Step& step, const unsigned char* bytes);
  PWFData unsignedPacked(const Step& step, const unsigned char* bytes, std::uint32_t size);
  // A size that the integer conversions have.
  static bool isIntegerSize(std::uint32_t size) { return size <= 8 && std::has_single_bit(size); }
  [[gnu::always_inline]] PWFData binary(const Step& step, const unsigned char* bytes, std::uint32_t length) {
    if (step.scale != 0 || !isIntegerSize(length)) return otherBinary(step, bytes, length);
    const auto size = static_cast<int>(length);
    if (step.sign != eSignNone) return PWFData(cnv_.IntToInt64(bytes, size, step.sign), false);
    const PWFUInt64 value = cnv_.UIntToUInt64(bytes, size);
    if (value > static_cast<PWFUInt64>(std::numeric_limits<PWFInt64>::max())) return scaled(value, false, 0);
    return PWFData(static_cast<PWFInt64>(value), false);
  }
  PWFData otherBinary(const Step& step, const unsigned char* bytes, std::uint32_t size);
  PWFData wideBinary(const Step& step, const unsigned char* bytes, std::uint32_t size);
  PWFData real(const Step& step, const unsigned char* bytes, std::uint32_t size);
  PWFData edited(const Step& step, const unsigned char* bytes);
  PWFData date(const Step& step, const unsigned char* bytes);
  KelWstring dateText(const Step& step, const unsigned char* bytes);
  static bool isNegative(const Step& step, const KelWstring& dateText);
  FaultReason dateFaultOf(const Step& step, const unsigned char* bytes);
  void lookUpBytes();
  const PageBytes& page();
  PWFData scaled(std::uint64_t magnitude, bool isNegative, int scale);
  PWFData scaled(std::string_view digits, bool isNegative, int scale);

  static constexpr unsigned short kNoText = 0;

  // The size without the trailing bytes that equal `byte`.
  static std::uint32_t withoutTrailing(unsigned char byte, const unsigned char* bytes, std::uint32_t size) {
    static_assert(std::endian::native == std::endian::little, "the last byte is the highest one of a register");
    const std::uint64_t eight = 0x0101010101010101U * byte;
    for (; size >= sizeof eight; size -= sizeof eight) {
      std::uint64_t last;
      std::memcpy(&last, bytes + size - sizeof last, sizeof last);
      if (last != eight) return size - static_cast<std::uint32_t>(std::countl_zero(last ^ eight)) / 8;
    }
    while (size != 0 && bytes[size - 1] == byte)
      --size;
    return size;
  }

  const PhysicalForm form_;
  const bool isSpecial_;  // something in the form asks for more than the kind of field
  DataCnv cnv_;
  std::optional<DataCnv> national_;  // made when the first national field comes
  // The byte of a blank where each byte is a character; 0, which no text ends in for padding, elsewhere.
  unsigned char blank_ = 0;
  unsigned char fillBlank_ = ' ';  // the byte of a blank in any code page
  ExternalBytes digits_;
  std::unique_ptr<const PageBytes> page_;  // made when the first odd field comes
  KelWstring datePattern_;
  KelWstring isoPattern_;
  std::size_t dateDigits_ = 0;       // that the pattern has
  std::vector<unsigned char> work_;  // bytes of a field brought into another form
};

// Whether two values that a field has say the same: the blanks at the end of a text do not count, nor those before one
// that is justified at the right.
bool meanTheSame(const Step& step, const PWFData& a, const PWFData& b);

}  // namespace oxr::rec
