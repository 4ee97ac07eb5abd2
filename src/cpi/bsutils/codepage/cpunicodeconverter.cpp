// The exported members of a converter: each goes by the form of its code page as far as that serves; from the place
// that the form has come to, ICU converts.
//
// What ICU holds back between two calls (units or bytes without room, half a character, a shift state) is known in two
// flags, so that a form is never taken past it.

#include "cpunicodeconverter.hpp"

#include <unicode/ucnv_err.h>

#include <algorithm>
#include <span>

#include "codepage/codepage.hpp"
#include "kelconverter.hpp"
#include "kelforkhold.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "support/validrange.hpp"

using namespace oxr;

namespace {

constexpr char kSourcePath[] = "src/cpi/bsutils/cpunicodeconverter";
constexpr int kLocalCcsid = 1208;  // UTF-8

// Of longer ranges ICU thinks that they are a mistake.
constexpr bool isTakenByIcu(std::ptrdiff_t count) {
  return count >= 0 && count <= 0x3FFFFFFF;
}

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
  const KelForkHold hold;
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

// Converts the first stretch of a text by the form of its code page and moves the pointers over it. True when that was
// all: the source is used up, or the room.
template <class From, class To>
[[gnu::always_inline]] inline bool convertStretchFast(const CPUnicodeConverter& page, To*& target,
                                                      const To* targetLimit, const From*& source,
                                                      const From* sourceLimit, const int* offsets, UErrorCode& status) {
  const std::ptrdiff_t length = sourceLimit - source, room = targetLimit - target;
  if (offsets != nullptr || U_FAILURE(status) || length == 0 || !isTakenByIcu(length) || !isTakenByIcu(room))
    return false;
  const core::Advance done = CodePage::convertFast(page, std::span(source, static_cast<std::size_t>(length)),
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
  UErrorCode ignored = U_ZERO_ERROR;
  form = CodePage::formOf(*shared, ucnv_getName(converter.getAlias(), &ignored));
  minBytesPerChar = ucnv_getMinCharSize(converter.getAlias());
  maxBytesPerChar = ucnv_getMaxCharSize(converter.getAlias());
}

bool CodePage::readAnyFast(const CPUnicodeConverter& page, KelWstring& target, std::span<const char> bytes) {
  if (const std::size_t count = unitCount(page, bytes))
    return convertCountedFast(page, bytes, target.resizeForOverwrite(static_cast<unsigned>(count)));
  if (!isAtStart(page)) return false;
  constexpr std::size_t kBlock = 16;  // units that may be overwritten, so that the last ones need no copy of their own
  Scratch<unsigned short, 256> work(bytes.size() + kBlock);
  const core::Advance done = convertFast(page, bytes, std::span(work.data(), work.size()));
  if (done.read != bytes.size()) return false;
  std::copy_n(work.data(), done.written, target.resizeForOverwrite(static_cast<unsigned>(done.written)));
  return true;
}

CPUnicodeConverter::~CPUnicodeConverter() {
  const KelForkHold hold;
  converter.adoptInstead(nullptr);  // while the buffer that it lies in is still there
}

// The general way, by ICU, and whole texts. `member` names the exported member that is traced; null for none.
struct CodePage::General {
  [[gnu::noinline]] static void convert(const char* member, const CPUnicodeConverter& page, unsigned short*& target,
                                        const unsigned short* targetLimit, const char*& source, const char* sourceLimit,
                                        int* offsets, bool flush, UErrorCode& status) {
    if (member != nullptr && debugTraceOn()) [[unlikely]] {
      const Trace trace(member);
      return convert(nullptr, page, target, targetLimit, source, sourceLimit, offsets, flush, status);
    }
    if (U_FAILURE(status)) return;
    UConverter* const icu = page.converter.getAlias();
    char16_t* const begin = toIcu(target);
    char16_t* end = begin;
    ucnv_toUnicode(icu, &end, toIcu(targetLimit), &source, sourceLimit, offsets, flush, &status);
    target += end - begin;
    UErrorCode ignored = U_ZERO_ERROR;
    page.holdsUnitsBack = U_FAILURE(status) || (!flush && ucnv_toUCountPending(icu, &ignored) != 0);
  }
  [[gnu::noinline]] static void convert(const char* member, const CPUnicodeConverter& page, char*& target,
                                        const char* targetLimit, const unsigned short*& source,
                                        const unsigned short* sourceLimit, int* offsets, bool flush,
                                        UErrorCode& status) {
    if (member != nullptr && debugTraceOn()) [[unlikely]] {
      const Trace trace(member);
      return convert(nullptr, page, target, targetLimit, source, sourceLimit, offsets, flush, status);
    }
    if (U_FAILURE(status)) return;
    UConverter* const icu = page.converter.getAlias();
    const char16_t* const begin = toIcu(source);
    const char16_t* end = begin;
    if (offsets != nullptr)
      convertWithOffsets(page, target, targetLimit, end, toIcu(sourceLimit), offsets, flush, status);
    else
      ucnv_fromUnicode(icu, &target, targetLimit, &end, toIcu(sourceLimit), nullptr, flush, &status);
    source += end - begin;
    UErrorCode ignored = U_ZERO_ERROR;
    page.holdsBytesBack = U_FAILURE(status) || (!flush && ucnv_fromUCountPending(icu, &ignored) != 0);
  }

  // A whole text; the result is the number of units, or bytes, written. After an error the converter starts anew: a
  // later text must not begin with what found no room in this one.
  template <class From, class To>
  static int convertWhole(const CPUnicodeConverter& page, To* target, int room, const From* source, int length,
                          UErrorCode& status) {
    if (U_SUCCESS(status) && !(isValidRange(target, room) && isValidRange(source, length)))
      status = U_ILLEGAL_ARGUMENT_ERROR;
    if (U_FAILURE(status)) return 0;
    To* end = target;
    convertStep(page, end, target + room, source, source + length, status);
    if (U_FAILURE(status)) forgetHeld(page, source);
    return static_cast<int>(end - target);
  }

  // A text of any length in one pass after another over a work area. A text may have more units than fit into the
  // first: characters above U+FFFF, and units held back from before.
  static void readInPasses(const CPUnicodeConverter& page, KelWstring& target, const char* source, int length,
                           UErrorCode& status) {
    // Less than the shortest character still needs a unit's room, or units held back would overflow for ever.
    const int room = std::max(length / page.minBytesPerChar, 1);
    Scratch<unsigned short, 256> work(static_cast<std::size_t>(room));
    const auto pass = [&, limit = source + length] {
      status = U_ZERO_ERROR;
      unsigned short* end = work.data();
      convertStep(page, end, work.data() + room, source, limit, status);
      return static_cast<unsigned>(end - work.data());
    };
    const unsigned first = pass();
    std::copy_n(work.data(), first, target.resizeForOverwrite(first));
    while (status == U_BUFFER_OVERFLOW_ERROR)
      target.appendInternal(work.data(), pass(), 0);
    if (U_FAILURE(status)) forgetHeldUnits(page);
  }

 private:
  template <class From, class To>
  [[gnu::always_inline]] static void convertStep(const CPUnicodeConverter& page, To*& target, const To* targetLimit,
                                                 const From*& source, const From* sourceLimit, UErrorCode& status) {
    if (!wentFast([&]() __attribute__((always_inline)) {
          return convertStretchFast(page, target, targetLimit, source, sourceLimit, nullptr, status);
        })) [[unlikely]]
      convert(nullptr, page, target, targetLimit, source, sourceLimit, nullptr, true, status);
  }
  // In a code page of single bytes ICU writes one offset more than bytes where half of a pair stands alone, and the
  // caller's array may end before that. So the offsets of the bytes are copied.
  static void convertWithOffsets(const CPUnicodeConverter& page, char*& target, const char* targetLimit,
                                 const char16_t*& source, const char16_t* sourceLimit, int* offsets, bool flush,
                                 UErrorCode& status) {
    UConverter* const icu = page.converter.getAlias();
    const std::ptrdiff_t length = sourceLimit - source, room = targetLimit - target;
    if (!isTakenByIcu(length) || !isTakenByIcu(room))
      return ucnv_fromUnicode(icu, &target, targetLimit, &source, sourceLimit, offsets, flush, &status);
    // As many bytes as ICU promises to be enough for a text, shifts included, and for what it holds back.
    constexpr std::ptrdiff_t kShifts = 10, kHeldBack = 32;
    const std::ptrdiff_t most = std::min(room, (length + kShifts) * page.maxBytesPerChar + kHeldBack);
    Scratch<int, 256> work(static_cast<std::size_t>(most) + 1);
    const char* const begin = target;
    ucnv_fromUnicode(icu, &target, begin + most, &source, sourceLimit, work.data(), flush, &status);
    std::copy_n(work.data(), target - begin, offsets);
  }
  static void forgetHeld(const CPUnicodeConverter& page, const char*) { forgetHeldUnits(page); }
  static void forgetHeld(const CPUnicodeConverter& page, const unsigned short*) { forgetHeldBytes(page); }
};

int CPUnicodeConverter::toUnicode(unsigned short*& target, const unsigned short* targetLimit, const char*& source,
                                  const char* sourceLimit, int* offsets, signed char flush,
                                  UErrorCode& conversionStatus) {
  if (!wentFast([&] {
        return convertStretchFast(*this, target, targetLimit, source, sourceLimit, offsets, conversionStatus);
      })) [[unlikely]]
    CodePage::General::convert("CPUnicodeConverter::toUnicode", *this, target, targetLimit, source, sourceLimit,
                               offsets, flush != 0, conversionStatus);
  return conversionStatus;
}

int CPUnicodeConverter::fromUnicode(char*& target, const char* targetLimit, const unsigned short*& source,
                                    const unsigned short* sourceLimit, int* offsets, signed char flush,
                                    UErrorCode& conversionStatus) {
  if (!wentFast([&] {
        return convertStretchFast(*this, target, targetLimit, source, sourceLimit, offsets, conversionStatus);
      })) [[unlikely]]
    CodePage::General::convert("CPUnicodeConverter::fromUnicode", *this, target, targetLimit, source, sourceLimit,
                               offsets, flush != 0, conversionStatus);
  return conversionStatus;
}

void CPUnicodeConverter::fromUnicode(char* target, int* targetLength, const unsigned short* source, int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromUnicode");
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written =
      CodePage::General::convertWhole(*this, target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting to text to codepage");
  *targetLength = written;
}

void CPUnicodeConverter::fromLocalToUnicode(unsigned short* target, int* targetLength, const char* source,
                                            int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromLocalToUnicode");
  const CPUnicodeConverter local(kLocalCcsid, eEndianLittle);
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written =
      CodePage::General::convertWhole(local, target, *targetLength, source, sourceLength, conversionStatus);
  requireConverted(trace, conversionStatus, "Error converting from local codepage to unicode");
  *targetLength = written;
}

void CPUnicodeConverter::fromUnicodeToLocal(char* target, int* targetLength, const unsigned short* source,
                                            int sourceLength) {
  const Trace trace("CPUnicodeConverter::fromUnicodeToLocal");
  const CPUnicodeConverter local(kLocalCcsid, eEndianLittle);
  UErrorCode conversionStatus = U_ZERO_ERROR;
  const int written =
      CodePage::General::convertWhole(local, target, *targetLength, source, sourceLength, conversionStatus);
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
  CodePage::forgetHeldUnits(*this);
}

void CPUnicodeConverter::toUnicodeString(KelWstring& target, const char* source, int length,
                                         UErrorCode& conversionStatus) const {
  if (length <= 0 || source == nullptr) {
    conversionStatus = U_ILLEGAL_ARGUMENT_ERROR;
    return;
  }
  const std::span bytes(source, static_cast<std::size_t>(length));
  if (wentFast([&] { return CodePage::readTextFast(*this, target, bytes); })) [[likely]]
    conversionStatus = U_ZERO_ERROR;
  else
    CodePage::General::readInPasses(*this, target, source, length, conversionStatus);
}

void CPUnicodeConverter::fromUnicodeString(char* target, int& targetLength, const KelWstring& source,
                                           UErrorCode& conversionStatus) const {
  const auto writeFast = [&]() __attribute__((always_inline)) {
    return CodePage::writeTextFast(*this, target, targetLength, source.view());
  };
  if (targetLength <= 0)
    conversionStatus = U_ILLEGAL_ARGUMENT_ERROR;
  else if (U_FAILURE(conversionStatus) || !wentFast(writeFast))
    targetLength = CodePage::General::convertWhole(*this, target, targetLength, source.characters(),
                                                   static_cast<int>(source.length()), conversionStatus);
}
