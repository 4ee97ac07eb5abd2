#include <unicode/decimfmt.h>

#include <cmath>
#include <limits>
#include <new>

#include "core/numbertext.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "trace.hpp"

using namespace oxr;

namespace {

// Decimal places that any double's shortest digits end within: ICU, left to itself, would round to six.
constexpr int kAllPlaces = std::numeric_limits<double>::max_digits10 - std::numeric_limits<double>::min_exponent10;

std::unique_ptr<icu::DecimalFormat> makeNotation(const icu::DecimalFormat& formatter, bool exponential) {
  std::unique_ptr<icu::DecimalFormat> made(formatter.clone());
  if (made == nullptr) throw std::bad_alloc();
  made->setMinimumIntegerDigits(1);
  made->setScientificNotation(exponential);
  made->setMaximumIntegerDigits(exponential ? 1 : 9999);
  if (exponential) made->setExponentSignAlwaysShown(true);
  made->setMaximumFractionDigits(kAllPlaces);
  return made;
}

}  // namespace

void DataCnv::Int64ToUString(long value, KelWstring& out) {
  const FunctionTrace trace(this, "DataCnv::Int64ToUString", kDataCnvPath);
  const core::IntegerText number(value);
  number.write(out.resizeForOverwrite(number.length()));
}

void DataCnv::doubleToUString(double value, KelWstring& out, bool exponential) {
  const FunctionTrace trace(this, "DataCnv::doubleToUString", kDataCnvPath);
  const icu::DecimalFormat* const formatter = getDecimalFormatter();
  if (!_symbolsAreAscii || !std::isfinite(value)) [[unlikely]] {
    formatDouble(*formatter, value, out, exponential);
    return;
  }
  const core::DoubleText number(value);
  if (!exponential)
    number.writePlain(out.resizeForOverwrite(number.plainLength()));
  else if (!number.isNines()) [[likely]]
    number.writeExponential(out.resizeForOverwrite(number.exponentialLength()));
  else  // "0.09999999999999999E+1" at times, which is ICU's to decide: Format.WritesDoublesAsTheFormatterDoes
    formatDouble(*formatter, value, out, true);
}

// The formatter's own text. A clone a notation, since a switch from one to the other makes ICU build the formatter
// anew.
void DataCnv::formatDouble(const icu::DecimalFormat& formatter, double value, KelWstring& out, bool exponential) {
  std::unique_ptr<icu::DecimalFormat>& notation = notations[exponential ? 1 : 0];
  if (notation == nullptr) notation = makeNotation(formatter, exponential);
  icu::UnicodeString text;
  icu::FieldPosition position;
  notation->format(value, text, position);
  // A text that ICU could not make has no length.
  const auto length = static_cast<unsigned>(text.length());
  text.extract(0, text.length(), toIcu(out.resizeForOverwrite(length)), 0);
}
