// What conversions lean on beside the settings: the converter of the object's code page, raw text in that page, and the
// decimal formatter.
//
// ICU's formatter takes long to make and serves one thread at a time. So the process makes one, which is never changed
// once others can see it, and each object clones that for itself on first use.

#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/numfmt.h>

#include <algorithm>
#include <iterator>

#include "codepage/codepage.hpp"
#include "datacnv/formatters.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "kelforkhold.hpp"
#include "kelmemory.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

// Nothing in the library asks for the formatter while it loads, so these are always built before they are used.
KelMutex DataCnv::_global_decFormatterWriteMutex;
std::atomic<icu::DecimalFormat*> DataCnv::_global_decFormatter = nullptr;
icu::UnicodeString DataCnv::_exponentSymbol;
icu::UnicodeString DataCnv::_otherCaseExponentSymbol;
bool DataCnv::_symbolsAreAscii = false;

namespace {

// The default locale's formatter as ICU gives it. The result is null, with a status above zero, where the locale has
// none.
std::unique_ptr<icu::DecimalFormat> openFormatter(UErrorCode& status) {
  std::unique_ptr<icu::NumberFormat> made(icu::NumberFormat::createInstance(status));
  auto* const decimal = dynamic_cast<icu::DecimalFormat*>(made.get());
  // A locale may ask for numbers in words, which no decimal formatter writes.
  if (U_SUCCESS(status) && decimal == nullptr) status = U_UNSUPPORTED_ERROR;
  if (U_FAILURE(status)) return nullptr;
  static_cast<void>(made.release());  // `decimal` is the same object
  return std::unique_ptr<icu::DecimalFormat>(decimal);
}

using Symbols = icu::DecimalFormatSymbols;

// The symbols of the default locale. ICU takes its own where it has no memory to look them up, and says nothing.
Symbols localeSymbols() {
  UErrorCode status = U_ZERO_ERROR;
  Symbols symbols(icu::Locale::getDefault(), status);
  requireMemory(status);
  return symbols;
}

// The symbols that do not differ from locale to locale. The texts of infinity and of what is no number are among them:
// NumbersToText.LocalesChangeNothing.
constexpr struct {
  Symbols::ENumberFormatSymbol symbol;
  const char16_t* text;
} kOurSymbols[] = {{Symbols::kDecimalSeparatorSymbol, u"."},
                   {Symbols::kGroupingSeparatorSymbol, u","},
                   {Symbols::kInfinitySymbol, u"INF"},
                   {Symbols::kNaNSymbol, u"NaN"}};

// The same formatter, but always with "." and ",".
std::unique_ptr<icu::DecimalFormat> makeFormatter(UErrorCode& status) {
  std::unique_ptr<icu::DecimalFormat> formatter = openFormatter(status);
  if (formatter == nullptr) return nullptr;
  formatter->applyPattern(icu::UnicodeString(), status);
  if (U_FAILURE(status)) return nullptr;
  Symbols symbols = askTwice(localeSymbols);
  for (const auto& [symbol, text] : kOurSymbols)
    symbols.setSymbol(symbol, icu::UnicodeString(text), symbol != Symbols::kInfinitySymbol);
  formatter->setDecimalFormatSymbols(symbols);
  formatter->setRoundingIncrement(0.0);
  formatter->setDecimalSeparatorAlwaysShown(true);
  requireWhole(*formatter);
  if (!(*formatter->getDecimalFormatSymbols() == symbols)) throw std::bad_alloc();
  return formatter;
}

// Whether numbers can be read and written without ICU. Some locales have digits, a minus (U+2212) or an exponent
// symbol of their own.
bool hasAsciiSymbols(const icu::DecimalFormatSymbols& symbols) {
  constexpr struct {
    Symbols::ENumberFormatSymbol symbol;
    char16_t text;
  } kPresumed[] = {
      {Symbols::kZeroDigitSymbol, u'0'},  {Symbols::kOneDigitSymbol, u'1'},   {Symbols::kTwoDigitSymbol, u'2'},
      {Symbols::kThreeDigitSymbol, u'3'}, {Symbols::kFourDigitSymbol, u'4'},  {Symbols::kFiveDigitSymbol, u'5'},
      {Symbols::kSixDigitSymbol, u'6'},   {Symbols::kSevenDigitSymbol, u'7'}, {Symbols::kEightDigitSymbol, u'8'},
      {Symbols::kNineDigitSymbol, u'9'},  {Symbols::kMinusSignSymbol, u'-'},  {Symbols::kPlusSignSymbol, u'+'},
      {Symbols::kExponentialSymbol, u'E'}};
  return std::all_of(std::begin(kPresumed), std::end(kPresumed), [&](const auto& presumed) {
    return symbols.getConstSymbol(presumed.symbol) == icu::UnicodeString(presumed.text);
  });
}

// The symbol in its other case: "e" for "E" and "E" for "e". A symbol without case stays. The rules of case are not
// those of the locale, since the texts that are read know none.
icu::UnicodeString otherCase(const icu::UnicodeString& symbol) {
  icu::UnicodeString other(symbol);
  requireMemory(other.toLower(icu::Locale::getRoot()));
  return other == symbol ? requireMemory(other.toUpper(icu::Locale::getRoot())) : other;
}

std::span<const char> textOf(const unsigned char* bytes, int size) {
  return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

UErrorCode readTextGeneral(DataCnv& cnv, KelWstring& out, const unsigned char* bytes, int size) {
  const FunctionTrace trace(&cnv, "DataCnv::toUnicodeString", kDataCnvPath);
  const CPUnicodeConverter& page = *cnv.getConverter();
  if (size < page.getMinBytesPerChar())
    raiseInternalError(trace.site(), numbered("size < MinBytesPerChar for codepage: ", DataCnvParts::ccsid(cnv)));
  UErrorCode status = U_ZERO_ERROR;
  page.toUnicodeString(out, reinterpret_cast<const char*>(bytes), size, status);
  return status;
}
// What is not plain, or has no place in the string yet.
[[gnu::noinline]] UErrorCode readText(DataCnv& cnv, KelWstring& out, const unsigned char* bytes, int size) {
  const auto readFast = [&] {
    return bytes != nullptr && size > 0 && CodePage::readAnyFast(*cnv.getConverter(), out, textOf(bytes, size));
  };
  return wentFast(readFast) ? U_ZERO_ERROR : readTextGeneral(cnv, out, bytes, size);
}

// Reads a plain text without a call: saving registers for one would cost a fifth of it. `page` may be missing yet.
[[gnu::always_inline]] inline bool readPlainFast(const CPUnicodeConverter* page, KelWstring& out,
                                                 const unsigned char* bytes, int size) {
  return !debugTraceOn() && page != nullptr && bytes != nullptr && size > 0 &&
         CodePage::readPlainFast(*page, out, textOf(bytes, size));
}

[[gnu::noinline]] void readRawText(DataCnv& cnv, KelWstring& out, const char* bytes, int size) {
  // The traced name has the arguments in it: CodePageServices.Convert.
  const FunctionTrace trace(&cnv, "DataCnv::RawCharsToPWFData( const char* source, PWFInt32 size )", kDataCnvPath);
  readText(cnv, out, reinterpret_cast<const unsigned char*>(bytes), size);
}

[[gnu::noinline]] UErrorCode writeTextGeneral(const CPUnicodeConverter& page, const KelWstring& text,
                                              unsigned char* bytes, int& size) {
  UErrorCode status = U_ZERO_ERROR;
  page.fromUnicodeString(reinterpret_cast<char*>(bytes), size, text, status);
  return status;
}

}  // namespace

// A converter is costly to open, and an object that reads integers alone never has one.
CPUnicodeConverter* DataCnv::getConverter() {
  if (converter == nullptr) converter = std::make_unique<CPUnicodeConverter>(ccsid, integerEndian);
  return converter.get();
}

// The code page tells by its digit zero, so that no table of pages is needed. A page that has no zero is no EBCDIC.
bool DataCnv::IsCcsidEBCDIC() {
  constexpr unsigned short kZero[] = {'0'};
  constexpr unsigned char kEbcdicZero = 0xF0;
  if (ebcdicState == -1) {
    int size = getConverter()->getMaxBytesPerChar();
    Scratch<unsigned char, 16> bytes(static_cast<std::size_t>(size));
    bytes.data()[0] = 0;  // what a failed conversion leaves
    fromUnicodeString(KelBufferedWstring<16u>(kZero, 1), bytes.data(), size);
    ebcdicState = bytes.data()[0] == kEbcdicZero ? 1 : 0;
  }
  return ebcdicState == 1;
}

// The status is for the caller to look at; only a size that no character fits is a failure.
UErrorCode DataCnv::toUnicodeString(KelWstring& out, const unsigned char* bytes, int size) {
  if (readPlainFast(converter.get(), out, bytes, size)) [[likely]]
    return U_ZERO_ERROR;
  return readText(*this, out, bytes, size);
}

// Nothing is raised here: too little room is the caller's to tell.
UErrorCode DataCnv::fromUnicodeString(const KelWstring& text, unsigned char* bytes, int& size) {
  const CPUnicodeConverter& page = *getConverter();
  const auto writeFast = [&]() __attribute__((always_inline)) {
    return size > 0 && CodePage::writeTextFast(page, reinterpret_cast<char*>(bytes), size, text.view());
  };
  return wentFast(writeFast) ? U_ZERO_ERROR : writeTextGeneral(page, text, bytes, size);
}

PWFData DataCnv::RawCharsToPWFData(const char* bytes, int size) {
  PWFData value = TextInPlace::make(STRING);
  KelWstring& text = TextInPlace::text(value);
  if (!readPlainFast(converter.get(), text, reinterpret_cast<const unsigned char*>(bytes), size)) [[unlikely]] {
    readRawText(*this, text, bytes, size);
    TextInPlace::traceMade(value);
  }
  return value;
}

icu::DecimalFormat* DataCnv::getDecimalFormatter() {
  if (decFormatter != nullptr) return decFormatter.get();  // without a lock
  UErrorCode status = U_ZERO_ERROR;
  {
    // Always in this order: no fork, the object's mutex and then the one of the process.
    const KelForkHold hold;
    const KelMutex::Mutex lock(decFormatterMutex);
    icu::DecimalFormat* shared = _global_decFormatter.load(std::memory_order_acquire);
    if (shared == nullptr) {
      const KelMutex::Mutex writeLock(_global_decFormatterWriteMutex);
      shared = _global_decFormatter.load(std::memory_order_relaxed);
      if (shared == nullptr) {
        std::unique_ptr<icu::DecimalFormat> made = makeFormatter(status);
        if (made != nullptr) {
          const Symbols& symbols = *made->getDecimalFormatSymbols();
          _exponentSymbol = symbols.getConstSymbol(Symbols::kExponentialSymbol);
          _otherCaseExponentSymbol = otherCase(_exponentSymbol);
          _symbolsAreAscii = hasAsciiSymbols(symbols);
          shared = made.release();
          // This store is the last, and a release: who sees the formatter sees its symbols, and never one half set up.
          _global_decFormatter.store(shared, std::memory_order_release);
        }
      }
    }
    if (shared != nullptr) decFormatter = cloneWhole(*shared);
  }
  if (decFormatter == nullptr)
    raise<KelRecoverableException>(untracedSite(nullptr, "DataCnv::getDecimalFormatter", kDataCnvHeaderPath),
                                   failures::kDecimalFormatter, failures::kDecimalFormatter.text,
                                   static_cast<int>(status));
  return decFormatter.get();
}
