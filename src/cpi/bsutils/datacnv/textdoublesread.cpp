// Plain texts of numbers, read as doubles: canonical text as ICU takes it, and any text as strtod takes it. What both
// would read alike, and most texts are such, is read without them.

#include <unicode/decimfmt.h>

#include <clocale>
#include <cstdlib>
#include <new>
#include <utility>

#include "core/numbertextread.hpp"
#include "datacnv/formatters.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "kelforkhold.hpp"
#include "kelmemory.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "support/validrange.hpp"

using namespace oxr;

namespace {

constexpr int kLocalCcsid = 1208;         // UTF-8
constexpr std::size_t kUsualChars = 128;  // up to so many bytes a text needs no heap

// A type that no number has. ICU leaves it where it read a number, but had no memory to hand it over.
icu::Formattable noNumber() {
  return {0.0, icu::Formattable::kIsDate};
}

// The number that ICU read, whichever type it chose for it.
double valueOf(const icu::Formattable& number) {
  switch (number.getType()) {
    case icu::Formattable::kLong:
      return number.getLong();
    case icu::Formattable::kInt64:
      return static_cast<double>(number.getInt64());
    case icu::Formattable::kDouble:
      return number.getDouble();
    default:
      throw std::bad_alloc();
  }
}

// What ICU makes of the text as far as it goes. Without memory it finds no number, or not all of its digits.
bool askIcu(const icu::DecimalFormat& formatter, const icu::UnicodeString& text, icu::Formattable& number) {
  UErrorCode status = U_ZERO_ERROR;
  number = noNumber();
  static_cast<const icu::NumberFormat&>(formatter).parse(text, number, status);
  requireMemory(status);
  requireMemory();
  return U_SUCCESS(status);
}

// Whether a number begins the text. Where there is none, ICU is asked for some that it must find, and again.
bool readByIcu(const icu::DecimalFormat& formatter, const icu::UnicodeString& text, icu::Formattable& number) {
  if (askIcu(formatter, text, number)) return true;
  for (const auto& [certain, value] : {std::pair(u"-.25", -.25), std::pair(u"-12.5", -12.5)})
    if (!askIcu(formatter, icu::UnicodeString(certain), number) || valueOf(number) != value) throw std::bad_alloc();
  return askIcu(formatter, text, number);
}

// The process may have any locale, and change it. A number that was written with "." is read with "." all the same:
// NumbersFromText.LocalesChangeNothing.
locale_t plainLocale() {
  return madeOnce<[] {
    const locale_t made = newlocale(LC_ALL_MASK, "C", nullptr);
    if (made == nullptr) throw std::bad_alloc();
    return made;
  }>();
}

// Appends the text's UTF-8 form at `target`, which moves on.
void encode(const FailureSite& site, CPUnicodeConverter& converter, char*& target, char* limit,
            const unsigned short* text, int length) {
  UErrorCode status = U_ILLEGAL_ARGUMENT_ERROR;
  if (isValidRange(text, length)) {
    status = U_ZERO_ERROR;
    converter.fromUnicode(target, limit, text, text + length, nullptr, true, status);
  }
  if (U_FAILURE(status)) raiseInternalError(site, "Error converting from unicode", static_cast<int>(status));
}

// Serves plain numbers while ICU's symbols are ASCII. ICU is asked as long as there is no formatter, whose symbols
// could be looked at: the first number of the process makes it.
inline bool readCanonicalFast(const KelWstring& text, double& value) {
  return DataCnvParts::hasAsciiSymbols() && core::readPlainDouble(text.view(), value);
}

// Reads whatever ICU takes, as far as it goes.
[[gnu::noinline]] double readCanonicalGeneral(DataCnv& cnv, const KelWstring& text) {
  // The traced name isn't the operation's own: NumbersFromText.Trace.
  const FunctionTrace trace(&cnv, "DataCnv::UStringTodouble", kDataCnvPath);
  const icu::DecimalFormat& formatter = *cnv.getDecimalFormatter();
  if (bool& hasRead = DataCnvParts::hasReadByIcu(cnv); !hasRead) [[unlikely]] {
    const KelForkHold hold;
    readFirstNumber(formatter);
    hasRead = true;
  }
  icu::UnicodeString units(toIcu(text.characters()), static_cast<std::int32_t>(text.length()));
  requireMemory(units.findAndReplace(DataCnvParts::otherCaseExponentSymbol(), DataCnvParts::exponentSymbol()));
  icu::Formattable number;
  if (readByIcu(formatter, units, number)) return valueOf(number);
  // A text that begins with a point, and is no number, counts as zero: NumbersFromText.ReadPlainTexts.
  if (!text.view().starts_with(u'.'))
    raise<KelConversionException>(trace.site(), failures::kInvalidData, "string", text);
  return 0;
}

inline bool readTextFast(const unsigned short* text, int length, double& value) {
  return text != nullptr && length >= 0 && core::readPlainDouble({text, static_cast<unsigned>(length)}, value);
}

// Reads whatever strtod takes, and refuses a text of which it takes only the beginning.
[[gnu::noinline]] double readTextGeneral(DataCnv& cnv, const unsigned short* text, int length) {
  const FunctionTrace trace(&cnv, "DataCnv::StrToDbl", kDataCnvPath);
  if (length < 0)
    raiseBare<KelConversionException>(trace.site(), failures::kInvalidData,
                                      "Tried to convert a zero length string to a double", "float");
  constexpr unsigned short kEnd[1] = {};
  std::unique_ptr<CPUnicodeConverter>& localConverter = DataCnvParts::localConverter(cnv);
  if (localConverter == nullptr) localConverter = std::make_unique<CPUnicodeConverter>(kLocalCcsid, eEndianLittle);
  const auto maxBytes = static_cast<std::size_t>(localConverter->getMaxBytesPerChar());
  Scratch<char, kUsualChars> chars((static_cast<std::size_t>(length) + 1) * maxBytes);
  char* const limit = chars.data() + chars.size();
  char* end = chars.data();
  encode(trace.site(), *localConverter, end, limit, text, length);
  const char* const endOfText = end;
  encode(trace.site(), *localConverter, end, limit, kEnd, 1);  // strtod wants a zero after the text
  char* endOfNumber = nullptr;
  const double value = strtod_l(chars.data(), &endOfNumber, plainLocale());
  if (endOfNumber != endOfText)
    raise<KelConversionException>(trace.site(), failures::kInvalidData, "string",
                                  KelWstring(text, static_cast<unsigned>(length)));
  return value;
}

}  // namespace

double DataCnv::PWFStringTodouble(const KelWstring& text) {
  double value;
  if (wentFast([&] { return readCanonicalFast(text, value); })) [[likely]]
    return value;
  return readCanonicalGeneral(*this, text);
}

double DataCnv::StrToDbl(const unsigned short* text, int length) {
  double value;
  if (wentFast([&] { return readTextFast(text, length, value); })) [[likely]]
    return value;
  return readTextGeneral(*this, text, length);
}
