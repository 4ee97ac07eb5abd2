#include "cpunicodeconverter.hpp"

#include <unicode/ucnv_err.h>

#include <algorithm>

#include "isrange.hpp"
#include "kelalloc.hpp"
#include "kelconverter.hpp"
#include "raise.hpp"
#include "singlebytepage.hpp"
#include "trace.hpp"

using namespace oxr;

namespace {

constexpr char kSourcePath[] = "src/cpi/bsutils/cpunicodeconverter";
constexpr int kLocalCcsid = 1208;  // UTF-8

class Trace : public FunctionTrace {
 public:
  explicit Trace(const char* function) : FunctionTrace(nullptr, function, kSourcePath) {}
};

// ICU's own callback would also substitute a character that the end of the input cuts off, and the caller would never
// learn that bytes are missing.
void substituteAllButTruncation(const void* context, UConverterToUnicodeArgs* arguments, const char* bytes,
                                std::int32_t length, UConverterCallbackReason reason, UErrorCode* status) {
  if (*status == U_TRUNCATED_CHAR_FOUND) return;
  UCNV_TO_U_CALLBACK_SUBSTITUTE(context, arguments, bytes, length, reason, status);
}

// ICU would rather have clones on the heap. Converters are made by the thousand, and this one call needs none.
UConverter* cloneInto(char* buffer, int& size, const UConverter* shared, UErrorCode& status) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  return ucnv_safeClone(shared, buffer, &size, &status);
#pragma GCC diagnostic pop
}

int byteOrderArgument(EEndian endian) {
  if (endian == eEndianUnset) return 0;
  return endian == eEndianLittle ? -1 : 1;
}

std::string messageName(int ccsid, EEndian endian) {
  if (!CPUnicodeConverter::IsUnicode(ccsid)) return "ibm-" + std::to_string(ccsid);
  if (endian == eEndianLittle) return "utf-16le";
  return endian == eEndianBig ? "utf-16be" : "";
}

void requireConverter(const Trace& trace, UErrorCode status, const Failure& failure, int ccsid) {
  if (U_FAILURE(status))
    raise<KelRecoverableException>(trace.site(), failure, failure.text, ccsid, static_cast<int>(status));
}

void requireConverted(const Trace& trace, UErrorCode status, const char* text) {
  if (U_FAILURE(status))
    raise<KelConversionException>(trace.site(), failures::kInternalError, text, static_cast<int>(status));
}

// Whole conversions; the result is the number of units, or bytes, written. After an error the converter starts anew: a
// later text must not begin with what found no room in this one.
int decode(UConverter* converter, unsigned short* target, int room, const char* source, int length,
           UErrorCode& status) {
  if (U_SUCCESS(status) && !(isRange(target, room) && isRange(source, length))) status = U_ILLEGAL_ARGUMENT_ERROR;
  if (U_FAILURE(status)) return 0;
  char16_t* const begin = toIcu(target);
  char16_t* end = begin;
  ucnv_toUnicode(converter, &end, begin + room, &source, source + length, nullptr, true, &status);
  if (U_FAILURE(status)) ucnv_resetToUnicode(converter);
  return static_cast<int>(end - begin);
}

int encode(UConverter* converter, char* target, int room, const unsigned short* source, int length,
           UErrorCode& status) {
  if (U_SUCCESS(status) && !(isRange(target, room) && isRange(source, length))) status = U_ILLEGAL_ARGUMENT_ERROR;
  if (U_FAILURE(status)) return 0;
  const char16_t* from = toIcu(source);
  char* end = target;
  ucnv_fromUnicode(converter, &end, target + room, &from, from + length, nullptr, true, &status);
  if (U_FAILURE(status)) ucnv_resetFromUnicode(converter);
  return static_cast<int>(end - target);
}

// Any text through ICU, a work area after the other. A text may have more units than `room`: characters above U+FFFF,
// and units held back from before.
void decodeInPasses(UConverter* converter, KelWstring& target, const char* source, int length, UErrorCode& status) {
  // Less than the shortest character still needs a unit's room, or units held back would overflow for ever.
  const int room = std::max(length / ucnv_getMinCharSize(converter), 1);
  const KelBlock<unsigned short> work = allocateBlock<unsigned short>(static_cast<unsigned long>(room));
  target.eraseInternal(0, KelWstring::npos);
  char16_t* const begin = toIcu(work.get());
  const char* const limit = source + length;
  do {
    status = U_ZERO_ERROR;
    char16_t* end = begin;
    ucnv_toUnicode(converter, &end, begin + room, &source, limit, nullptr, true, &status);
    target.appendInternal(work.get(), static_cast<unsigned>(end - begin), 0);
  } while (status == U_BUFFER_OVERFLOW_ERROR);
  if (U_FAILURE(status)) ucnv_resetToUnicode(converter);
}

}  // namespace

CPBaseUnicodeConverter::CPBaseUnicodeConverter(int ccsid, EEndian endian) : name(messageName(ccsid, endian)) {}

bool CPUnicodeConverter::IsUnicode(int ccsid) {
  return ccsid == 1200 || ccsid == 13488 || ccsid == 17584;
}

CPUnicodeConverter::CPUnicodeConverter(int ccsid, EEndian endian) : CPBaseUnicodeConverter(ccsid, endian) {
  const Trace trace("CPUnicodeConverter::CPUnicodeConverter");
  const KelConverter* const shared =
      KelConverter::createConverter(static_cast<unsigned>(ccsid), byteOrderArgument(endian), nullptr);
  status = shared->status();
  converter.adoptInstead(cloneInto(cloneBuffer, cloneSize, shared->converter(), status));
  if (status == U_INVALID_TABLE_FORMAT || status == U_INVALID_TABLE_FILE || status == U_FILE_ACCESS_ERROR)
    raise<KelRecoverableException>(trace.site(), failures::kInvalidCodePage, failures::kInvalidCodePage.text, ccsid,
                                   name);
  requireConverter(trace, status, failures::kConverterCreation, ccsid);
  ucnv_setToUCallBack(converter.getAlias(), substituteAllButTruncation, nullptr, nullptr, nullptr, &status);
  requireConverter(trace, status, failures::kConverterSetup, ccsid);
  ucnv_setFromUCallBack(converter.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  requireConverter(trace, status, failures::kConverterSetup, ccsid);
  ucnv_setFallback(converter.getAlias(), true);
  byteTable = shared->singleByteTable();
}

CPUnicodeConverter::~CPUnicodeConverter() {
  converter.adoptInstead(nullptr);  // while the buffer that it lies in is still there
}

int CPUnicodeConverter::toUnicode(unsigned short*& target, const unsigned short* targetLimit, const char*& source,
                                  const char* sourceLimit, int* offsets, signed char flush,
                                  UErrorCode& conversionStatus) {
  const Trace trace("CPUnicodeConverter::toUnicode");
  char16_t* const begin = toIcu(target);
  char16_t* end = begin;
  ucnv_toUnicode(converter.getAlias(), &end, toIcu(targetLimit), &source, sourceLimit, offsets, flush,
                 &conversionStatus);
  target += end - begin;
  if (conversionStatus == U_BUFFER_OVERFLOW_ERROR)
    holdsUnitsBack = true;
  else if (U_SUCCESS(conversionStatus))
    holdsUnitsBack = false;
  return conversionStatus;
}

int CPUnicodeConverter::fromUnicode(char*& target, const char* targetLimit, const unsigned short*& source,
                                    const unsigned short* sourceLimit, int* offsets, signed char flush,
                                    UErrorCode& conversionStatus) {
  const Trace trace("CPUnicodeConverter::fromUnicode");
  const char16_t* const begin = toIcu(source);
  const char16_t* end = begin;
  ucnv_fromUnicode(converter.getAlias(), &target, targetLimit, &end, toIcu(sourceLimit), offsets, flush,
                   &conversionStatus);
  source += end - begin;
  return conversionStatus;
}

void CPUnicodeConverter::fromUnicode(char* target, int* targetLength, const unsigned short* source, int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromUnicode");
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written = encode(converter.getAlias(), target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting to text to codepage");
  *targetLength = written;
}

void CPUnicodeConverter::fromLocalToUnicode(unsigned short* target, int* targetLength, const char* source,
                                            int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromLocalToUnicode");
  const CPUnicodeConverter local(kLocalCcsid, eEndianLittle);
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written = decode(local.converter.getAlias(), target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting from local codepage to unicode");
  *targetLength = written;
}

void CPUnicodeConverter::fromUnicodeToLocal(char* target, int* targetLength, const unsigned short* source,
                                            int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromUnicodeToLocal");
  const CPUnicodeConverter local(kLocalCcsid, eEndianLittle);
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written = encode(local.converter.getAlias(), target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting to text to local codepage");
  *targetLength = written;
}

int CPUnicodeConverter::getMinBytesPerChar() const {
  const Trace trace("CPUnicodeConverter::getMinBytesPerChar");
  return ucnv_getMinCharSize(converter.getAlias());
}

int CPUnicodeConverter::getMaxBytesPerChar() const {
  const Trace trace("CPUnicodeConverter::getMaxBytesPerChar");
  return ucnv_getMaxCharSize(converter.getAlias());
}

UConverterType CPUnicodeConverter::getType() const {
  const Trace trace("CPUnicodeConverter::getType");
  return ucnv_getType(converter.getAlias());
}

const char* CPUnicodeConverter::getName(UErrorCode& nameStatus) const {
  const Trace trace("CPUnicodeConverter::getName");
  return ucnv_getName(converter.getAlias(), &nameStatus);
}

void CPUnicodeConverter::resetToUnicode() {
  const Trace trace("CPUnicodeConverter::resetToUnicode");
  ucnv_resetToUnicode(converter.getAlias());
  holdsUnitsBack = false;
}

void CPUnicodeConverter::toUnicodeString(KelWstring& target, const char* source, int length,
                                         UErrorCode& conversionStatus) const {
  if (length <= 0 || source == nullptr) {
    conversionStatus = U_ILLEGAL_ARGUMENT_ERROR;
  } else if (const core::SingleByteTable* const table = SingleBytePage::tableOf(*this)) {
    const auto count = static_cast<unsigned>(length);
    core::decodeSingleBytes({reinterpret_cast<const unsigned char*>(source), count}, *table,
                            target.resizeForOverwrite(count));
    conversionStatus = U_ZERO_ERROR;
  } else {
    decodeInPasses(converter.getAlias(), target, source, length, conversionStatus);
  }
}

void CPUnicodeConverter::fromUnicodeString(char* target, int& targetLength, const KelWstring& source,
                                           UErrorCode& conversionStatus) const {
  if (targetLength <= 0)
    conversionStatus = U_ILLEGAL_ARGUMENT_ERROR;
  else
    targetLength = encode(converter.getAlias(), target, targetLength, source.characters(),
                          static_cast<int>(source.length()), conversionStatus);
}
