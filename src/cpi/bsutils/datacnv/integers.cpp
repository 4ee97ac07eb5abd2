#include "core/byteorder.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "raise.hpp"
#include "trace.hpp"

using namespace oxr;

namespace {

template <class... Details>
[[noreturn]] void raiseInternal(const FailureSite& site, const Details&... details) {
  raise<KelConversionException>(site, failures::kInternalError, details...);
}

// The tests that reading an integer begins with. `nullText` differs from member to member.
void requireField(const FunctionTrace& trace, const unsigned char* source, bool validSize, int size,
                  const char* nullText) {
  if (source == nullptr) [[unlikely]]
    raiseInternal(trace.site(), failures::kInternalError.text, nullText);
  if (!validSize) [[unlikely]]
    raiseInternal(trace.site(), failures::kInternalError.text, numbered("Invalid integer size: ", size));
}

}  // namespace

void DataCnv::SwapEnds(unsigned char* target, const unsigned char* source, int length) {
  // These failures go without the usual first insert: SwapEnds.RefusesInTheStatedOrderWithoutAFirstInsert.
  const auto site = [](int line = __builtin_LINE()) {
    return untracedSite(nullptr, "DataCnv::SwapEnds", kDataCnvHeaderPath, line);
  };
  if (source == nullptr) raiseInternal(site(), "Null input pointer");
  if (target == nullptr) raiseInternal(site(), "Null output buffer pointer");
  if (length <= 0) raiseInternal(site(), numbered("Invalid input length: ", length));
  // Forward and without a temporary, also where the two overlap: SwapEnds.MirrorsABufferThatIsSourceAndTarget.
  unsigned char* out = target + length;
  for (int i = 0; i < length; ++i)
    *--out = source[i];
}

PWFInt64 DataCnv::IntToInt64(const unsigned char* source, int size, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::IntToInt64", kDataCnvPath);
  requireField(trace, source, core::isIntegerSize(size), size, "Null input pointer passed into DataCnv::IntToInt64");
  const std::uint64_t bits = core::loadInteger(source, size, integerEndian == eEndianLittle);
  if (sign == eSignLeadingIncluded) return core::signExtended(bits, size);
  const PWFInt64 value = static_cast<PWFInt64>(bits);
  if (value < 0) [[unlikely]]
    raise<KelConversionException>(trace.site(), failures::kTooLong, "Overflow converting a PWFUInt64 to PWFInt64",
                                  "integer", "8-byte integer", 8, value);
  return value;
}

PWFInt32 DataCnv::IntToInt32(const unsigned char* source, int size, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::IntToInt32", kDataCnvPath);
  requireField(trace, source, core::isIntegerSize(size) && size <= 4, size,
               "DataCnv::IntToInt32 called with a Null input pointer for the source.");
  const std::uint64_t bits = core::loadInteger(source, size, integerEndian == eEndianLittle);
  if (sign == eSignLeadingIncluded) return static_cast<PWFInt32>(core::signExtended(bits, size));
  const PWFInt32 value = static_cast<PWFInt32>(bits);
  if (value < 0) [[unlikely]]
    raise<KelConversionException>(trace.site(), failures::kTooLong, "Overflow converting a PWFUInt32 to PWFInt32",
                                  "integer", "4-byte integer", 4, value);
  return value;
}

PWFUInt64 DataCnv::UIntToUInt64(const unsigned char* source, int size) {
  const FunctionTrace trace(this, "DataCnv::UIntToUInt64", kDataCnvPath);
  requireField(trace, source, core::isIntegerSize(size), size, "Null input pointer");
  return core::loadInteger(source, size, integerEndian == eEndianLittle);
}
