// Date-times as a block of binary fields.

#include <algorithm>

#include "core/binarydatetime.hpp"
#include "cputils.hpp"
#include "pwffrmtr.hpp"
#include "pwffrmtr/sourcepath.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

constexpr int kBadField = 3;  // the insert that stands for whatever is wrong with a field

// Whether a field lies within `length` bytes.
bool isWithin(int offset, int count, int length) {
  return std::int64_t{offset} + count <= length;
}

}  // namespace

PWFDateTime PWFDateTimeFormatter::parseBinary(const void* data, int length, const unsigned short* pattern) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::parseBinary", kFormatterPath);
  PWFDateTime value;
  createDateTimeFromTimeStamp(KelTimeStamp(), value);
  int offset = 0;
  core::scanBinaryPattern<unsigned short>(pattern, [&](const core::BinaryField& field) {
    subParse(data, length, offset, field.count, field.letter, field.adjustment, value);
  });
  if (lenient) core::carryOver(value);
  return value;
}

void PWFDateTimeFormatter::formatBinary(const PWFDateTime& value, void* target, int length,
                                        const unsigned short* pattern) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::formatBinary", kFormatterPath);
  std::fill_n(static_cast<unsigned char*>(target), std::max(length, 0), static_cast<unsigned char>(0));
  int offset = 0;
  UErrorCode status = U_ZERO_ERROR;
  core::scanBinaryPattern<unsigned char>(pattern, [&](const core::BinaryField& field) {
    subFormat(target, length, offset, field.count, field.letter, field.adjustment, value, status);
    if (U_FAILURE(status))
      raise<KelConversionException>(trace.site(), failures::kDateTimeToBinary, static_cast<int>(status),
                                    CPUtils::pwfDateTimeDump(value), pattern, offset);
  });
}

int PWFDateTimeFormatter::EstablishBinaryField(unsigned short letter) const {
  return core::binaryFieldIndex(letter);
}

// A field that begins within the data must be a good one, even where it ends beyond:
// BinaryDateTimes.FieldsBeyondTheData.
void PWFDateTimeFormatter::subParse(const void* data, int length, int& offset, int count, unsigned short letter,
                                    int adjustment, PWFDateTime& target) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::subParse", kFormatterPath);
  const int index = EstablishBinaryField(letter);
  const int begin = offset;
  if (index == core::kFillerIndex) {
    offset = core::wrappingAdd(begin, count);
    return;
  }
  if (begin > length) return;
  if (!core::isBinarySize(count) || index < 0)
    raise<KelConversionException>(trace.site(), failures::kDateTimeFromBinary, kBadField);
  if (isWithin(begin, count, length))
    target.*core::kBinaryFields[index] =
        core::wrappingAdd(core::readSigned(static_cast<const unsigned char*>(data) + begin, count), adjustment);
  offset = core::wrappingAdd(begin, count);
}

void PWFDateTimeFormatter::subFormat(void* target, int length, int& offset, int count, unsigned short letter,
                                     int adjustment, const PWFDateTime& value, UErrorCode& status) const {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::subFormat", kFormatterPath);
  if (!isWithin(offset, count, length)) {
    status = U_INVALID_FORMAT_ERROR;
    return;
  }
  const int index = EstablishBinaryField(letter);
  // The failure of reading, although this writes: BinaryDateTimes.Writes.
  if (index < 0) raise<KelConversionException>(trace.site(), failures::kDateTimeFromBinary, kBadField);
  const bool isFiller = index == core::kFillerIndex;
  unsigned char* const field = static_cast<unsigned char*>(target) + offset;
  if (core::isBinarySize(count))
    core::writeLow(core::wrappingSubtract(isFiller ? 0 : value.*core::kBinaryFields[index], adjustment), field, count);
  else if (isFiller)
    std::fill_n(field, std::max(count, 0), static_cast<unsigned char>(0));
  else
    raise<KelConversionException>(trace.site(), failures::kDateTimeToBinary, kBadField);
  offset += count;
}
