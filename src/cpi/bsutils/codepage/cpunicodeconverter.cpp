#include "cpunicodeconverter.hpp"

#include <unicode/ucnv_err.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "codepage/directpath.hpp"
#include "kelconverter.hpp"
#include "support/isrange.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

constexpr char kSourcePath[] = "src/cpi/bsutils/cpunicodeconverter";
constexpr int kLocalCcsid = 1208;  // UTF-8

class Trace : public FunctionTrace {
 public:
  explicit Trace(const char* function) : FunctionTrace(nullptr, function, kSourcePath) {}
};

// Conversions with trace on, out of the way: with trace off not even the object that traces is made.
template <class Convert>
[[gnu::cold, gnu::noinline]] void traced(const char* function, Convert convert) {
  const Trace trace(function);
  convert();
}

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
  if (U_FAILURE(status)) raise<KelRecoverableException>(trace.site(), failure, ccsid, static_cast<int>(status));
}

void requireConverted(const Trace& trace, UErrorCode status, const char* text) {
  if (U_FAILURE(status))
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError, text, static_cast<int>(status));
}

// The first stretch of a conversion, on the way around ICU. True when that was all: the source is used up, or the room.
template <class From, class To>
[[gnu::always_inline]] inline bool takeDirectPath(const CPUnicodeConverter& page, const From*& source,
                                                  const From* sourceLimit, To*& target, const To* targetLimit,
                                                  UErrorCode& status) {
  constexpr std::ptrdiff_t kMost = 0x3FFFFFFF;  // of longer ranges ICU thinks that they are a mistake
  const std::ptrdiff_t length = sourceLimit - source, room = targetLimit - target;
  if (U_FAILURE(status) || length <= 0 || length > kMost || room < 0 || room > kMost) return false;
  const core::Progress done = DirectPath::convert(page, std::span(source, static_cast<std::size_t>(length)),
                                                  std::span(target, static_cast<std::size_t>(room)));
  if (done.read == 0) return false;
  source += done.read;
  target += done.written;
  if (source == sourceLimit) return true;
  if (target != targetLimit) return false;
  status = U_BUFFER_OVERFLOW_ERROR;
  return true;
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
    raise<KelRecoverableException>(trace.site(), failures::kInvalidCodePage, ccsid, name);
  requireConverter(trace, status, failures::kConverterCreation, ccsid);
  ucnv_setToUCallBack(converter.getAlias(), substituteAllButTruncation, nullptr, nullptr, nullptr, &status);
  requireConverter(trace, status, failures::kConverterSetup, ccsid);
  ucnv_setFromUCallBack(converter.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  requireConverter(trace, status, failures::kConverterSetup, ccsid);
  ucnv_setFallback(converter.getAlias(), true);
  byteTable = shared->singleByteTable();
  unitTable = shared->unitTable();
  form = formOf(*shared);
  minBytesPerChar = ucnv_getMinCharSize(converter.getAlias());
  maxBytesPerChar = ucnv_getMaxCharSize(converter.getAlias());
}

CPUnicodeConverter::~CPUnicodeConverter() {
  converter.adoptInstead(nullptr);  // while the buffer that it lies in is still there
}

CPUnicodeConverter::Form CPUnicodeConverter::formOf(const KelConverter& shared) const {
  if (shared.singleByteTable() != nullptr) return Form::eSingleByte;
  UErrorCode ignored = U_ZERO_ERROR;
  // Only the plain forms have these names; a form that reads or writes a mark has a longer one.
  const std::string_view icuName = ucnv_getName(converter.getAlias(), &ignored);
  if (icuName == "UTF-8") return Form::eUtf8;
  if (icuName == "UTF-16BE") return Form::eUtf16Big;
  return icuName == "UTF-16LE" ? Form::eUtf16Little : Form::eOther;
}

// One conversion: around ICU as far as that goes, the rest through it. With offsets all is ICU's. Inline, as a field is
// converted in the time of a few calls.
[[gnu::always_inline]] inline void CPUnicodeConverter::decodeStep(unsigned short*& target,
                                                                  const unsigned short* targetLimit,
                                                                  const char*& source, const char* sourceLimit,
                                                                  int* offsets, bool flush,
                                                                  UErrorCode& stepStatus) const {
  if (offsets != nullptr || !takeDirectPath(*this, source, sourceLimit, target, targetLimit, stepStatus))
    decodeByIcu(target, targetLimit, source, sourceLimit, offsets, flush, stepStatus);
}

[[gnu::always_inline]] inline void CPUnicodeConverter::encodeStep(char*& target, const char* targetLimit,
                                                                  const unsigned short*& source,
                                                                  const unsigned short* sourceLimit, int* offsets,
                                                                  bool flush, UErrorCode& stepStatus) const {
  if (offsets != nullptr || !takeDirectPath(*this, source, sourceLimit, target, targetLimit, stepStatus))
    encodeByIcu(target, targetLimit, source, sourceLimit, offsets, flush, stepStatus);
}

[[gnu::noinline]] void CPUnicodeConverter::decodeByIcu(unsigned short*& target, const unsigned short* targetLimit,
                                                       const char*& source, const char* sourceLimit, int* offsets,
                                                       bool flush, UErrorCode& stepStatus) const {
  if (U_FAILURE(stepStatus)) return;
  char16_t* const begin = toIcu(target);
  char16_t* end = begin;
  ucnv_toUnicode(converter.getAlias(), &end, toIcu(targetLimit), &source, sourceLimit, offsets, flush, &stepStatus);
  target += end - begin;
  UErrorCode ignored = U_ZERO_ERROR;
  holdsUnitsBack = U_FAILURE(stepStatus) || (!flush && ucnv_toUCountPending(converter.getAlias(), &ignored) != 0);
}

[[gnu::noinline]] void CPUnicodeConverter::encodeByIcu(char*& target, const char* targetLimit,
                                                       const unsigned short*& source, const unsigned short* sourceLimit,
                                                       int* offsets, bool flush, UErrorCode& stepStatus) const {
  if (U_FAILURE(stepStatus)) return;
  const char16_t* const begin = toIcu(source);
  const char16_t* end = begin;
  ucnv_fromUnicode(converter.getAlias(), &target, targetLimit, &end, toIcu(sourceLimit), offsets, flush, &stepStatus);
  source += end - begin;
  UErrorCode ignored = U_ZERO_ERROR;
  holdsBytesBack = U_FAILURE(stepStatus) || (!flush && ucnv_fromUCountPending(converter.getAlias(), &ignored) != 0);
}

// Whole conversions; the result is the number of units, or bytes, written. After an error the converter starts anew: a
// later text must not begin with what found no room in this one.
int CPUnicodeConverter::decodeWhole(unsigned short* target, int room, const char* source, int length,
                                    UErrorCode& wholeStatus) const {
  if (U_SUCCESS(wholeStatus) && !(isRange(target, room) && isRange(source, length)))
    wholeStatus = U_ILLEGAL_ARGUMENT_ERROR;
  if (U_FAILURE(wholeStatus)) return 0;
  unsigned short* end = target;
  decodeStep(end, target + room, source, source + length, nullptr, true, wholeStatus);
  if (U_FAILURE(wholeStatus)) forgetHeldUnits();
  return static_cast<int>(end - target);
}

int CPUnicodeConverter::encodeWhole(char* target, int room, const unsigned short* source, int length,
                                    UErrorCode& wholeStatus) const {
  if (U_SUCCESS(wholeStatus) && !(isRange(target, room) && isRange(source, length)))
    wholeStatus = U_ILLEGAL_ARGUMENT_ERROR;
  if (U_FAILURE(wholeStatus)) return 0;
  char* end = target;
  encodeStep(end, target + room, source, source + length, nullptr, true, wholeStatus);
  if (U_FAILURE(wholeStatus)) {
    ucnv_resetFromUnicode(converter.getAlias());
    holdsBytesBack = false;
  }
  return static_cast<int>(end - target);
}

// A work area after the other. A text may have more units than fit into the first: characters above U+FFFF, and units
// held back from before.
void CPUnicodeConverter::decodeInPasses(KelWstring& target, const char* source, int length,
                                        UErrorCode& wholeStatus) const {
  // Less than the shortest character still needs a unit's room, or units held back would overflow for ever.
  const int room = form == Form::eUtf8 ? length : std::max(length / ucnv_getMinCharSize(converter.getAlias()), 1);
  Scratch<unsigned short, 256> work(static_cast<std::size_t>(room));
  // Mostly one pass is all, and ICU has no part in it.
  const std::span bytes(source, static_cast<std::size_t>(length));
  const core::Progress direct = DirectPath::convert(*this, bytes, std::span(work.data(), work.size()));
  if (direct.read == bytes.size()) {
    std::copy_n(work.data(), direct.written, target.resizeForOverwrite(static_cast<unsigned>(direct.written)));
    wholeStatus = U_ZERO_ERROR;
    return;
  }
  const auto pass = [&, limit = source + length] {
    wholeStatus = U_ZERO_ERROR;
    unsigned short* end = work.data();
    decodeStep(end, work.data() + room, source, limit, nullptr, true, wholeStatus);
    return static_cast<unsigned>(end - work.data());
  };
  const unsigned first = pass();
  std::copy_n(work.data(), first, target.resizeForOverwrite(first));
  while (wholeStatus == U_BUFFER_OVERFLOW_ERROR)
    target.appendInternal(work.data(), pass(), 0);
  if (U_FAILURE(wholeStatus)) forgetHeldUnits();
}

void CPUnicodeConverter::forgetHeldUnits() const {
  ucnv_resetToUnicode(converter.getAlias());
  holdsUnitsBack = false;
}

int CPUnicodeConverter::toUnicode(unsigned short*& target, const unsigned short* targetLimit, const char*& source,
                                  const char* sourceLimit, int* offsets, signed char flush,
                                  UErrorCode& conversionStatus) {
  if (debugTraceOn()) [[unlikely]]
    traced("CPUnicodeConverter::toUnicode", [=, this, &target, &source, &conversionStatus] {
      decodeStep(target, targetLimit, source, sourceLimit, offsets, flush != 0, conversionStatus);
    });
  else
    decodeStep(target, targetLimit, source, sourceLimit, offsets, flush != 0, conversionStatus);
  return conversionStatus;
}

int CPUnicodeConverter::fromUnicode(char*& target, const char* targetLimit, const unsigned short*& source,
                                    const unsigned short* sourceLimit, int* offsets, signed char flush,
                                    UErrorCode& conversionStatus) {
  if (debugTraceOn()) [[unlikely]]
    traced("CPUnicodeConverter::fromUnicode", [=, this, &target, &source, &conversionStatus] {
      encodeStep(target, targetLimit, source, sourceLimit, offsets, flush != 0, conversionStatus);
    });
  else
    encodeStep(target, targetLimit, source, sourceLimit, offsets, flush != 0, conversionStatus);
  return conversionStatus;
}

void CPUnicodeConverter::fromUnicode(char* target, int* targetLength, const unsigned short* source, int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromUnicode");
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written = encodeWhole(target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting to text to codepage");
  *targetLength = written;
}

void CPUnicodeConverter::fromLocalToUnicode(unsigned short* target, int* targetLength, const char* source,
                                            int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromLocalToUnicode");
  const CPUnicodeConverter local(kLocalCcsid, eEndianLittle);
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written = local.decodeWhole(target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting from local codepage to unicode");
  *targetLength = written;
}

void CPUnicodeConverter::fromUnicodeToLocal(char* target, int* targetLength, const unsigned short* source,
                                            int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromUnicodeToLocal");
  const CPUnicodeConverter local(kLocalCcsid, eEndianLittle);
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written = local.encodeWhole(target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting to text to local codepage");
  *targetLength = written;
}

int CPUnicodeConverter::getMinBytesPerChar() const {
  const Trace trace("CPUnicodeConverter::getMinBytesPerChar");
  return minBytesPerChar;
}

int CPUnicodeConverter::getMaxBytesPerChar() const {
  const Trace trace("CPUnicodeConverter::getMaxBytesPerChar");
  return maxBytesPerChar;
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
  forgetHeldUnits();
}

void CPUnicodeConverter::toUnicodeString(KelWstring& target, const char* source, int length,
                                         UErrorCode& conversionStatus) const {
  if (length <= 0 || source == nullptr) {
    conversionStatus = U_ILLEGAL_ARGUMENT_ERROR;
    return;
  }
  const std::span bytes(source, static_cast<std::size_t>(length));
  if (const std::size_t count = DirectPath::unitsOf(*this, bytes)) {
    unsigned short* const units = target.resizeForOverwrite(static_cast<unsigned>(count));
    if (DirectPath::convertAll(*this, bytes, std::span(units, count))) {
      conversionStatus = U_ZERO_ERROR;
      return;
    }
  }
  decodeInPasses(target, source, length, conversionStatus);
}

void CPUnicodeConverter::fromUnicodeString(char* target, int& targetLength, const KelWstring& source,
                                           UErrorCode& conversionStatus) const {
  if (targetLength <= 0)
    conversionStatus = U_ILLEGAL_ARGUMENT_ERROR;
  else
    targetLength =
        encodeWhole(target, targetLength, source.characters(), static_cast<int>(source.length()), conversionStatus);
}
