#include <unicode/decimfmt.h>

#include <clocale>
#include <cstdlib>

#include "core/numbertextread.hpp"
#include "datacnv/asciinumbers.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "support/validrange.hpp"

using namespace oxr;

namespace {

constexpr int kLocalCcsid = 1208;         // UTF-8
constexpr std::size_t kUsualChars = 128;  // of a text that needs no heap

double valueOf(const icu::Formattable& number) {
  switch (number.getType()) {
    case icu::Formattable::kLong:
      return number.getLong();
    case icu::Formattable::kInt64:
      return static_cast<double>(number.getInt64());
    default:
      return number.getDouble();
  }
}

// The process may have any locale, and change it: a number that was written with "." is read with "." all the same.
locale_t plainLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

void encode(const FailureSite& site, CPUnicodeConverter& converter, char*& target, char* limit,
            const unsigned short* text, int length) {
  UErrorCode status = U_ILLEGAL_ARGUMENT_ERROR;
  if (isValidRange(text, length)) {
    status = U_ZERO_ERROR;
    converter.fromUnicode(target, limit, text, text + length, nullptr, true, status);
  }
  if (U_FAILURE(status)) raiseInternalError(site, "Error converting from unicode", static_cast<int>(status));
}

// Whatever ICU takes.
double parsedDouble(DataCnv& cnv, const FailureSite& site, const KelWstring& text) {
  const icu::DecimalFormat& formatter = *cnv.getDecimalFormatter();
  icu::UnicodeString units(toIcu(text.characters()), static_cast<std::int32_t>(text.length()));
  units.findAndReplace(DataCnvParts::otherCaseExponentSymbol(), DataCnvParts::exponentSymbol());
  icu::Formattable number;
  UErrorCode status = U_ZERO_ERROR;
  static_cast<const icu::NumberFormat&>(formatter).parse(units, number, status);
  // A point alone counts as zero: NumbersFromText.CanonicalTextIsReadAsFarAsItGoes.
  if (U_FAILURE(status) && !text.view().starts_with(u'.'))
    raise<KelConversionException>(site, failures::kInvalidData, "string", text);
  return valueOf(number);
}

// Whatever strtod takes.
double systemDouble(DataCnv& cnv, const FailureSite& site, const unsigned short* text, int length) {
  constexpr unsigned short kEnd[1] = {};
  std::unique_ptr<CPUnicodeConverter>& localConverter = DataCnvParts::localConverter(cnv);
  if (localConverter == nullptr) localConverter = std::make_unique<CPUnicodeConverter>(kLocalCcsid, eEndianLittle);
  const auto maxBytes = static_cast<std::size_t>(localConverter->getMaxBytesPerChar());
  Scratch<char, kUsualChars> chars((static_cast<std::size_t>(length) + 1) * maxBytes);
  char* const limit = chars.data() + chars.size();
  char* end = chars.data();
  encode(site, *localConverter, end, limit, text, length);
  const char* const endOfText = end;
  encode(site, *localConverter, end, limit, kEnd, 1);
  char* endOfNumber = nullptr;
  const double value = strtod_l(chars.data(), &endOfNumber, plainLocale());
  if (endOfNumber != endOfText)
    raise<KelConversionException>(site, failures::kInvalidData, "string",
                                  KelWstring(text, static_cast<unsigned>(length)));
  return value;
}

}  // namespace

double DataCnv::PWFStringTodouble(const KelWstring& text) {
  // The traced name isn't the operation's own: NumbersFromText.TraceUnderTheirNames.
  const FunctionTrace trace(this, "DataCnv::UStringTodouble", kDataCnvPath);
  if (readsAsciiNumbers()) [[likely]] {
    if (const auto value = core::readPlainDouble(text.view())) return *value;
  }
  return parsedDouble(*this, trace.site(), text);
}

double DataCnv::StrToDbl(const unsigned short* text, int length) {
  const FunctionTrace trace(this, "DataCnv::StrToDbl", kDataCnvPath);
  if (length < 0)
    raiseBare<KelConversionException>(trace.site(), failures::kInvalidData,
                                      "Tried to convert a zero length string to a double", "float");
  if (text != nullptr && !debugTraceOn()) [[likely]] {
    if (const auto value = core::readPlainDouble({text, static_cast<unsigned>(length)})) return *value;
  }
  return systemDouble(*this, trace.site(), text, length);
}
