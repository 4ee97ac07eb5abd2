// Packed decimals: canonical text into fields.
//
// The point of the text moves to the right by the places of the field, what is left of a fraction is cut, never
// rounded, and the digits are packed from the last one on. The fast way reads the text once and takes its digits
// straight to the field; the general way edits a copy of the text member by member, and so takes any text at all.

#include <algorithm>
#include <cstdint>

#include "core/packedfield.hpp"
#include "core/scaling.hpp"
#include "core/textdigits.hpp"
#include "core/wholedigits.hpp"
#include "datacnv/decimalinteger.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

// The bytes of a field; a size below 0 has room for none.
std::uint64_t roomOf(int size) {
  return static_cast<std::uint64_t>(std::max(size, 0));
}

// Fields of more than eight bytes, and texts that are too long for a register: digits are kept in two registers where
// that will do, and in a buffer otherwise.
[[gnu::noinline]] bool writeLongFast(DataCnv& cnv, const unsigned short* text, unsigned char* target, int size,
                                     int virtualDecimalPoint, ESign sign) {
  const auto bytes = static_cast<std::uint32_t>(size);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);
  const bool reversed = DataCnvParts::isPackedReversed(cnv);
  core::LongWord digits;
  bool negative;
  if (bytes > core::PackedWord::kMaxSize && bytes <= 2 * core::PackedWord::kMaxSize &&
      places < 4 * core::PackedWord::kMaxSize && core::wholeDigits(text, places, digits, negative)) [[likely]]
    return core::packLong(digits, DataCnvParts::packedSign(cnv, sign != eSignNone, negative), target, bytes, reversed);
  core::DigitBuffer buffer;
  core::IntegerDigits number;
  // A number that is longer than its digits in the buffer has zeros that found no room there.
  if (!core::integerDigits(text, virtualDecimalPoint, buffer, number) || number.count != number.digits.size() ||
      core::packedSize(number.count) > bytes)
    return false;
  core::packDigits(number.digits, DataCnvParts::packedSign(cnv, sign != eSignNone, number.negative), {target, bytes},
                   reversed);
  return true;
}

// Digits are kept in a register for fields of up to eight bytes.
[[gnu::always_inline]] inline bool writePackedFast(DataCnv& cnv, const unsigned short* text, unsigned char* target,
                                                   int size, int virtualDecimalPoint, ESign sign) {
  const auto bytes = static_cast<std::uint32_t>(size);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than any field has
  if (text == nullptr || target == nullptr || size <= 0) return false;
  std::uint64_t digits;
  bool negative;
  if (bytes > core::PackedWord::kMaxSize || places >= 2 * core::PackedWord::kMaxSize ||
      !core::wholeDigits(text, places, digits, negative))
    return writeLongFast(cnv, text, target, size, virtualDecimalPoint, sign);
  return core::packShort(digits, DataCnvParts::packedSign(cnv, sign != eSignNone, negative), target, bytes,
                         DataCnvParts::isPackedReversed(cnv));
}

[[gnu::noinline]] void writePackedGeneral(DataCnv& cnv, const unsigned short* text, unsigned char* target, int size,
                                          int virtualDecimalPoint, ESign sign) {
  static constexpr unsigned short kNoText[] = {0};
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecFromDec", kDataCnvPath);
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (text == nullptr) text = kNoText;
  const std::uint64_t room = roomOf(size);
  // A scale that is beyond the field whatever the text holds is cut: a number that cannot fit is not written out first.
  const int places = core::clampedPlaces(virtualDecimalPoint, UnitView(text).size() + 2 * room);
  KelBufferedWstring<16u> digits;
  const bool negative = integerText(cnv, text, places, digits);
  if (core::packedSize(digits.length()) > room)
    raise<KelConversionException>(trace.site(), failures::kTooLong, "decimal", "packed decimal", size, text);
  core::packDigits(digits.view(), DataCnvParts::packedSign(cnv, sign != eSignNone, negative), {target, room},
                   DataCnvParts::isPackedReversed(cnv));
}

}  // namespace

void DataCnv::PckdDecFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint,
                             ESign sign) {
  if (wentFast([&]() __attribute__((always_inline)) {
        return writePackedFast(*this, text, target, size, virtualDecimalPoint, sign);
      })) [[likely]]
    return;
  writePackedGeneral(*this, text, target, size, virtualDecimalPoint, sign);
}
