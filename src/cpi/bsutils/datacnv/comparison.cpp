// Values as equal or not. Most types compare what they hold; decimals compare what StrFromDec makes of them, so that
// "1.50" is "1.5". It makes it with a converter of the library's own, whose settings have no part in it: what the text
// is made of can be compared without one, as long as both texts are decimals.

#include <cstring>

#include "core/decimaltext.hpp"
#include "core/duration.hpp"
#include "datacnv/plainconverter.hpp"
#include "pwfdata.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

bool compareDecimalsFast(const KelWstring& left, const KelWstring& right, bool& areEqual) {
  const auto plainLeft = core::plainDecimal(left.view()), plainRight = core::plainDecimal(right.view());
  if (!plainLeft || !plainRight) return false;
  areEqual = plainLeft->negative == plainRight->negative && plainLeft->leadingZero == plainRight->leadingZero &&
             plainLeft->digits == plainRight->digits;
  return true;
}

// The definition, which raises where one of them is no decimal.
[[gnu::cold, gnu::noinline]] bool areDecimalsEqualGeneral(const PWFData& left, const PWFData& right) {
  DataCnv converter = plainConverter();
  const PWFData first = converter.StrFromDec(left.getDecimalValue());
  return first == converter.StrFromDec(right.getDecimalValue());
}

// Of no bytes, too, where a pointer may be null.
bool areBytesEqual(const PWFData& left, const PWFData& right) {
  const int length = left.getDataLength();
  if (length != right.getDataLength()) return false;
  const void* const bytes = left.getDataValue();
  const void* const others = right.getDataValue();
  if (bytes == others || length <= 0) return true;
  return bytes != nullptr && others != nullptr && std::memcmp(bytes, others, static_cast<std::size_t>(length)) == 0;
}

}  // namespace

// Two nulls have no case of their own: PwfDataComparison.NullNumbersRaise.
bool PWFData::operator==(const PWFData& other) const {
  if (logicalType != other.logicalType || nullFlag != other.nullFlag) return false;
  switch (logicalType) {
    case STRING:
      return getPWFStringValue() == other.getPWFStringValue();
    case INTEGER:
      return getInt64Value() == other.getInt64Value();
    case FLOAT:
      return getDoubleValue() == other.getDoubleValue();
    case BOOLEAN:
      return getBooleanValue() == other.getBooleanValue();
    case BINARY:
      return areBytesEqual(*this, other);
    case INTERVAL:
      return core::sameDuration(valueArea.interval, other.valueArea.interval);
    case DATETIME:
      return std::memcmp(valueArea.bytes, other.valueArea.bytes, sizeof valueArea.bytes) == 0;
    case DECIMAL: {
      bool areEqual;
      if (wentFast([&] { return compareDecimalsFast(stringValue, other.stringValue, areEqual); })) [[likely]]
        return areEqual;
      return areDecimalsEqualGeneral(*this, other);
    }
    default:
      return true;
  }
}

bool PWFData::operator!=(const PWFData& other) const {
  return !(*this == other);
}
