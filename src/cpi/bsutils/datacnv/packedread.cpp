// Packed decimals: fields into values, and the rules of their signs.
//
// A field becomes text, never a number, so that all its digits stay, leading zeros too. The general way splits any
// field and places the point wherever it falls; the fast way takes the fields of most messages, whose text fits into
// the value itself, from one register.

#include <algorithm>
#include <vector>

#include "core/packedfield.hpp"
#include "cputils.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

// The insert that tells what is wrong with a field, by the number of the fault.
constexpr const char* kFaultTexts[] = {
    "",
    "packed decimal, no sign found ",
    "packed decimal, negative sign found on unsigned data ",
    "packed decimal, non-numeric data found",
};

// What the fast way reads: a field that has nothing wrong with it, whose point falls among its digits.
struct ShortPacked {
  core::PackedWord field;  // of up to eight bytes, with a text that lies inside the value
  std::uint32_t digits = 0;
  std::uint32_t places = 0;
  std::uint32_t minus = 0;   // units of the sign: 0 or 1
  std::uint32_t length = 0;  // units of the text

  bool read(const unsigned char* source, std::uint32_t size, bool reversed) {
    if (size - 1 >= core::PackedWord::kMaxSize || places >= digits) return false;
    field = core::PackedWord(source, size, reversed);
    return true;
  }
  bool isFit() const { return length <= TextInPlace::kInlineUnits; }
  // Up to 17 units: the text's room and its terminator.
  void write(unsigned short* out) const {
    if (places == 0)
      field.write(out);
    else
      field.writePointed(digits - places, out);
  }
};

// The same for nine to sixteen bytes.
struct LongPacked {
  core::PackedWords field;
  std::uint32_t digits = 0;
  std::uint32_t places = 0;
  std::uint32_t minus = 0;
  std::uint32_t length = 0;

  bool read(const unsigned char* source, std::uint32_t size, bool reversed) {
    if (size <= core::PackedWord::kMaxSize || size > core::PackedWords::kMaxSize ||
        places > core::PackedWords::kMaxPlaces)
      return false;
    field = core::PackedWords(source, size, reversed);
    return true;
  }
  static constexpr bool isFit() { return true; }
  void write(unsigned short* out) const {
    if (places == 0)
      field.write(out);
    else
      field.writePointed(places, out);
  }
};

template <class Packed>
[[gnu::always_inline]] inline bool readPackedFast(const unsigned char* source, int size, int virtualDecimalPoint,
                                                  ESign sign, bool reversed, Packed& packed) {
  const auto bytes = static_cast<std::uint32_t>(size);
  packed.places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than any field has
  packed.digits = 2 * bytes - 1;
  if (source == nullptr || !packed.read(source, bytes, reversed)) return false;
  packed.minus = packed.field.sign() == core::kPackedMinus;
  packed.length = packed.digits + packed.minus + (packed.places != 0);
  return packed.field.isAllDigitsButSign() && !(core::isNegativeSign(packed.field.sign()) && sign == eSignNone) &&
         packed.isFit();
}

// Writes the text of a good field. The minus counts as a position when the point is placed:
// Packed.MinusCountsAsAPosition.
void writeText(DataCnv& cnv, const core::PackedField& field, int places, KelWstring& target) {
  const bool minus = field.sign() == core::kPackedMinus;
  unsigned short* const text = target.resizeForOverwrite(field.digitCount() + minus);
  *text = '-';
  field.writeDigits(text + minus);
  cnv.adjustDecimalForString(target, places);
}

// Raises what is wrong with a field, if anything is: through the member that tests half bytes, which the trace shows.
void validateField(DataCnv& cnv, const core::PackedField& field, ESign sign, const unsigned char* source) {
  std::vector<unsigned char> nibbles(std::size_t{field.digitCount()} + 1);
  for (std::uint32_t i = 0; i < nibbles.size(); ++i)
    nibbles[i] = field.nibble(i);
  cnv.ValidatePackedDecimal(nibbles.data(), static_cast<int>(nibbles.size()), sign, source);
}

void readPackedGeneral(DataCnv& cnv, KelWstring& text, const unsigned char* source, int size, int virtualDecimalPoint,
                       ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToDec", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  const core::PackedField field(source, size, DataCnvParts::isPackedReversed(cnv));
  // All digits are tested at once; one by one only to tell which fault it is, or to show the test in the trace.
  if (debugTraceOn() || !field.isGood(sign != eSignNone)) validateField(cnv, field, sign, source);
  writeText(cnv, field, virtualDecimalPoint, text);
}

// What is not short.
[[gnu::noinline]] void readPacked(DataCnv& cnv, KelWstring& text, const unsigned char* source, int size,
                                  int virtualDecimalPoint, ESign sign) {
  LongPacked packed;
  if (!wentFast([&]() __attribute__((always_inline)) {
        return readPackedFast(source, size, virtualDecimalPoint, sign, DataCnvParts::isPackedReversed(cnv), packed);
      })) [[unlikely]]
    return readPackedGeneral(cnv, text, source, size, virtualDecimalPoint, sign);
  unsigned short* const out = text.resizeForOverwrite(packed.length);
  *out = '-';
  packed.write(out + packed.minus);
  out[packed.length] = 0;
}

}  // namespace

char DataCnv::GetPackedDecimalSign(short isSigned, int isNegative, char* sign) {
  *sign = static_cast<char>(
      core::packedSign(isSigned != 0, isNegative != 0, static_cast<unsigned char>(positivePackedSign)));
  return *sign;
}

void DataCnv::ValidatePackedDecimal(const unsigned char* nibbles, int count, ESign sign,
                                    const unsigned char* rawField) {
  const FunctionTrace trace(this, "DataCnv::ValidatePackedDecimal", kDataCnvPath);
  const auto fault = core::packedFault({nibbles, static_cast<std::size_t>(std::max(count, 0))}, sign != eSignNone);
  if (fault != core::PackedFault::none)
    raise<KelConversionException>(trace.site(), failures::kInvalidData, kFaultTexts[static_cast<int>(fault)],
                                  CPUtils::binaryDump(rawField, count / 2));
}

PWFData DataCnv::PckdDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  PWFData value = TextInPlace::make(DECIMAL);
  ShortPacked packed;
  if (!debugTraceOn() && readPackedFast(source, size, virtualDecimalPoint, sign, packedEndian == eEndianLittle, packed))
      [[likely]] {
    TextInPlace::writeShort(value, packed.length, [&](unsigned short* out) {
      *out = '-';
      packed.write(out + packed.minus);
    });
  } else {
    readPacked(*this, TextInPlace::text(value), source, size, virtualDecimalPoint, sign);
    TextInPlace::traceMade(value);
  }
  return value;
}
