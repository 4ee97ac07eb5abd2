// The members of DataCnv but for date-times: fields beyond what a text holds inside an object, and beyond the room on
// the stack.

#include <unicode/decimfmt.h>

#include <cmath>

#include "dataconv.hpp"
#include "fuzz/allocation/operations.hpp"
#include "harness/converter.hpp"

namespace oxr::test {
namespace {

const KelWstring kComma = u","_k, kPoint = u"."_k, kPlus = u"+"_k, kMinus = u"-"_k;
// A decimal of 40 digits with a point, the like of an integer, and one with an exponent that ICU alone reads.
const KelWstring kDecimal = u"-12345678901234567890123456789012345678.90"_k, kInteger = u"0000000000000000012345"_k,
                 kFloat = u"  -1.2345678901234567890E+00012"_k, kField = u"-12345678901234567890123456,78****"_k,
                 kWords = u"a text of more than sixteen units"_k;
const unsigned char kPacked[] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x3D};
const unsigned char kHalfBytes[] = {0xFD, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34};
const unsigned char kExternal[] = {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9,
                                   0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xD9};
const unsigned char kMany[2001] = {0x0C};  // more than any scratch room of the stack
const unsigned short* const kNoTable = nullptr;

const unsigned short* units(const KelWstring& text) {
  return text.characters();
}
int lengthOf(const KelWstring& text) {
  return static_cast<int>(text.length());
}
// The common end of the arguments of fields in text messages, and of external decimals.
template <class CallField>
auto withField(CallField call) {
  return call(eSignLeadingSeparate, units(kMinus), units(kPlus), eTrimPadding, eJustifyLeft, '*', true);
}
template <class CallField>
auto withLook(CallField call) {
  return call(eSignLeadingSeparate, units(kMinus), units(kPlus), true, eJustifyRight, 0x5C, false);
}
template <class CallField>
auto withForm(CallField call) {
  return call(eSignTrailingIncluded, eJustifyRight, 0xF0, false, false, kNoTable, kNoTable);
}
// Writes into a field, and tells its bytes.
template <int kSize, class Write>
std::string written(Write write) {
  unsigned char field[kSize] = {};
  int size = kSize;
  write(field, size);
  return toldBytes(field, kSize);
}
template <class Write>
std::string writtenText(Write write) {
  KelBufferedWstring<16u> text;
  int length = 60;
  write(static_cast<KelWstring&>(text), length);
  return told(static_cast<const KelWstring&>(text));
}
template <class Edit>
std::string edited(const KelWstring& before, Edit edit) {
  KelBufferedWstring<16u> text(before);
  edit(static_cast<KelWstring&>(text));
  return told(static_cast<const KelWstring&>(text));
}

struct Row {
  const char* name;
  std::string (*use)(DataCnv&);
  int ccsid = 37;
};

const Row kIntegersAndFloats[] = {
    {"IntToDec", [](DataCnv& c) { return told(c.IntToDec(kPacked, 8, -9)); }},
    {"IntToDec, bad size", [](DataCnv& c) { return told(c.IntToDec(kPacked, 3, 0)); }},
    {"IntFromDec",
     [](DataCnv& c) { return written<8>([&](auto* f, int n) { c.IntFromDec(units(kInteger), f, n, 2); }); }},
    {"IntFromDec, too long",
     [](DataCnv& c) { return written<8>([&](auto* f, int n) { c.IntFromDec(units(kDecimal), f, n, 2); }); }},
    {"IntFromInt64, too long",
     [](DataCnv& c) { return written<1>([&](auto* f, int n) { c.IntFromInt64(1000, f, n, eSignNone); }); }},
    {"FltToDec", [](DataCnv& c) { return told(c.FltToDec(kPacked, 8, 3)); }},
    {"FltFromDec",
     [](DataCnv& c) { return written<8>([&](auto* f, int n) { c.FltFromDec(units(kFloat), f, n, 1); }); }},
    {"doubleToUString, plain",
     [](DataCnv& c) { return writtenText([&](auto& t, int&) { c.doubleToUString(-1.25e-300, t, false); }); }},
    {"doubleToUString, exponential",
     [](DataCnv& c) { return writtenText([&](auto& t, int&) { c.doubleToUString(0.9999999999999999, t, true); }); }},
    {"doubleToUString, infinity",
     [](DataCnv& c) { return writtenText([&](auto& t, int&) { c.doubleToUString(-INFINITY, t, true); }); }},
    {"PWFStringTodouble", [](DataCnv& c) { return told(c.PWFStringTodouble(u"-1.23x4567890123456789"_k)); }},
    {"PWFStringTodouble, no number", [](DataCnv& c) { return told(c.PWFStringTodouble(kWords)); }},
    {"PWFStringTodouble, a point", [](DataCnv& c) { return told(c.PWFStringTodouble(u".1234567890123456789012"_k)); }},
    {"getDecimalFormatter",
     [](DataCnv& c) {
       const icu::DecimalFormat* const formatter = c.getDecimalFormatter();
       const Unfailing unfailing;
       icu::UnicodeString text;
       std::string utf8;
       return formatter->format(-1234.5, text).toUTF8String(utf8);
     }},
};

const Row kDecimals[] = {
    {"PckdDecToDec", [](DataCnv& c) { return told(c.PckdDecToDec(kPacked, 12, 2, eSignLeadingIncluded)); }},
    {"PckdDecToDec, large", [](DataCnv& c) { return told(c.PckdDecToDec(kMany, 2001, 2, eSignNone)); }},
    {"PckdDecToDec, no sign", [](DataCnv& c) { return told(c.PckdDecToDec(kPacked, 11, 2, eSignNone)); }},
    {"PckdDecFromDec",
     [](DataCnv& c) {
       return written<24>([&](auto* f, int n) { c.PckdDecFromDec(units(kDecimal), f, n, 2, eSignLeadingIncluded); });
     }},
    {"PckdDecFromDec, too long",
     [](DataCnv& c) {
       return written<4>([&](auto* f, int n) { c.PckdDecFromDec(units(kDecimal), f, n, 2, eSignLeadingIncluded); });
     }},
    {"PckdDecToDbl", [](DataCnv& c) { return told(c.PckdDecToDbl(kPacked, 12, 2, eSignLeadingIncluded)); }},
    {"PckdDecToDbl, short", [](DataCnv& c) { return told(c.PckdDecToDbl(kPacked + 10, 2, 2, eSignLeadingIncluded)); }},
    {"PckdDecToPWFInt64, too long",
     [](DataCnv& c) { return told(c.PckdDecToPWFInt64(kPacked, 12, 0, eSignLeadingIncluded)); }},
    {"PckdDecFromDbl",
     [](DataCnv& c) {
       return written<24>([&](auto* f, int n) { c.PckdDecFromDbl(-1.25e22, f, n, 2, eSignLeadingIncluded); });
     }},
    {"ExtDecToDec",
     [](DataCnv& c) { return told(withForm([&](auto... a) { return c.ExtDecToDec(kExternal, 20, 2, a...); })); }},
    {"ExtDecToDec, MBCS",
     [](DataCnv& c) {
       return told(c.ExtDecToDec(kExternal + 10, 9, 2, eSignNone, eJustifyRight, '0', true, false, kNoTable, kNoTable));
     },
     930},
    {"ExtDecToDec, bad",
     [](DataCnv& c) { return told(withForm([&](auto... a) { return c.ExtDecToDec(kPacked, 12, 2, a...); })); }},
    {"ExtDecToDbl",
     [](DataCnv& c) { return told(withForm([&](auto... a) { return c.ExtDecToDbl(kExternal, 20, 2, a...); })); }},
    {"ExtDecToStr",
     [](DataCnv& c) { return told(withForm([&](auto... a) { return c.ExtDecToStr(kExternal, 20, a...); })); }},
    {"ExtDecToInt64",
     [](DataCnv& c) { return told(withForm([&](auto... a) { return c.ExtDecToInt64(kExternal + 10, 10, a...); })); }},
    {"ExtDecFromDec",
     [](DataCnv& c) {
       return written<50>(
           [&](auto* f, int& n) { withForm([&](auto... a) { c.ExtDecFromDec(units(kDecimal), f, n, 2, a...); }); });
     }},
    {"ExtDecFromDec, too long",
     [](DataCnv& c) {
       return written<5>(
           [&](auto* f, int& n) { withForm([&](auto... a) { c.ExtDecFromDec(units(kDecimal), f, n, 2, a...); }); });
     }},
    {"ExtDecFromDbl",
     [](DataCnv& c) {
       return written<50>(
           [&](auto* f, int& n) { withForm([&](auto... a) { c.ExtDecFromDbl(-1.25e22, f, n, 2, a...); }); });
     }},
    {"ExtDecFromInt64",
     [](DataCnv& c) {
       return written<50>(
           [&](auto* f, int& n) { withForm([&](auto... a) { c.ExtDecFromInt64(-123456789012345678, f, n, a...); }); });
     },
     930},
    {"UStringToExtDec",
     [](DataCnv& c) {
       return written<50>(
           [&](auto* f, int& n) { withForm([&](auto... a) { c.UStringToExtDec(kDecimal, f, n, -2, a...); }); });
     },
     1208},
    {"TLOGPckdStrToStr", [](DataCnv& c) { return told(c.TLOGPckdStrToStr(kPacked, 12, eEndianLittle)); }},
    {"TLOGPckdDecToDec", [](DataCnv& c) { return told(c.TLOGPckdDecToDec(kHalfBytes, 12, eEndianBig)); }},
    {"TLOGPckdDecToDec, bad", [](DataCnv& c) { return told(c.TLOGPckdDecToDec(kPacked, 12, eEndianBig)); }},
    {"TLOGFLPckdStrToStr",
     [](DataCnv& c) {
       return edited({}, [&](auto& t) {
         c.TLOGFLPckdStrToStr(kPacked, t, 12, eEndianBig, eTrimPadding, eJustifyRight, 1, false);
       });
     }},
    {"TLOGFLPckdDecToDec",
     [](DataCnv& c) {
       return edited({}, [&](auto& t) {
         c.TLOGFLPckdDecToDec(kHalfBytes, t, 12, eEndianLittle, eTrimPadding, eJustifyLeft, 15, false);
       });
     }},
    {"getUnpackedBuffer",
     [](DataCnv& c) {
       const std::unique_ptr<unsigned char[]> bytes(c.getUnpackedBuffer(kPacked, 12, eEndianLittle));
       return toldBytes(bytes.get(), 24);
     }},
    {"TLOGPWFDataToPckdDecimal",
     [](DataCnv& c) {
       PWFData value(units(kInteger), DECIMAL);
       int count = 0;
       return written<24>([&](auto* f, int n) { c.TLOGPWFDataToPckdDecimal(value, f, n, eEndianBig, true, count); });
     }},
    {"TLOGPWFDataToPckdStr",
     [](DataCnv& c) {
       const PWFData value(kInteger);
       return written<24>([&](auto* f, int n) { c.TLOGPWFDataToPckdStr(value, f, n, eEndianLittle); });
     },
     1208},
};

const Row kTexts[] = {
    {"StrToDecimal",
     [](DataCnv& c) {
       return told(withField(
           [&](auto... a) { return c.StrToDecimal(units(kField), lengthOf(kField), false, 2, units(kComma), a...); }));
     }},
    {"StrToDecimal, bad",
     [](DataCnv& c) {
       return told(withField(
           [&](auto... a) { return c.StrToDecimal(units(kWords), lengthOf(kWords), false, 2, units(kComma), a...); }));
     }},
    {"StrToDec",
     [](DataCnv& c) {
       return told(withField(
           [&](auto... a) { return c.StrToDec(units(kField), lengthOf(kField), true, 2, units(kComma), a...); }));
     }},
    {"StrToDec, bytes",
     [](DataCnv& c) {
       int length = 19;
       return told(c.StrToDec(kExternal, length, 2));
     }},
    {"StrToDbl",
     [](DataCnv& c) {
       return told(withField(
           [&](auto... a) { return c.StrToDbl(units(kField), lengthOf(kField), false, -1, units(kComma), a...); }));
     }},
    {"StrToDbl, plain", [](DataCnv& c) { return told(c.StrToDbl(units(kFloat), lengthOf(kFloat))); }},
    {"StrToDbl, hexadecimal", [](DataCnv& c) { return told(c.StrToDbl(units(u"0x1.8p3"_k), 7)); }},
    {"StrToDbl, no number", [](DataCnv& c) { return told(c.StrToDbl(units(kWords), lengthOf(kWords))); }},
    {"StrToInt64",
     [](DataCnv& c) {
       return told(withField([&](auto... a) { return c.StrToInt64(units(kInteger), lengthOf(kInteger), a...); }));
     }},
    {"UStringToInt64", [](DataCnv& c) { return told(c.UStringToInt64(kInteger)); }},
    {"StrFromInt64",
     [](DataCnv& c) {
       return writtenText(
           [&](auto& t, int& n) { withLook([&](auto... a) { c.StrFromInt64(-123456789L, t, n, a...); }); });
     }},
    {"StrFromDbl",
     [](DataCnv& c) {
       return writtenText([&](auto& t, int& n) {
         withLook([&](auto... a) { c.StrFromDbl(-1.25e22, t, n, false, 2, units(kComma), a...); });
       });
     }},
    {"StrFromDbl, exponential",
     [](DataCnv& c) {
       return writtenText([&](auto& t, int& n) {
         withLook([&](auto... a) { c.StrFromDbl(0.9999999999999999, t, n, false, -3, units(kComma), a...); });
       });
     }},
    {"StrFromDbl, plain", [](DataCnv& c) { return told(c.StrFromDbl(-1.2345678901234567e-300)); }},
    {"StrFromDec",
     [](DataCnv& c) {
       return writtenText([&](auto& t, int& n) {
         c.StrFromDec(units(kDecimal), t, n, false, 2, units(kComma), eSignTrailingSeparate, units(kMinus),
                      units(kPlus), true, eJustifyRight, '*', true, true);
       });
     }},
    {"StrFromDec, too long",
     [](DataCnv& c) {
       return writtenText([&](auto& t, int&) {
         int length = 20;
         c.StrFromDec(units(kDecimal), t, length, false, 2, units(kComma), eSignTrailingSeparate, units(kMinus),
                      units(kPlus), true, eJustifyRight, '*', true, true);
       });
     }},
    {"StrFromDec, plain", [](DataCnv& c) { return told(c.StrFromDec(units(kDecimal))); }},
    {"StrFromDec, bytes",
     [](DataCnv& c) { return written<60>([&](auto* f, int& n) { c.StrFromDec(units(kDecimal), f, n, 1); }); }},
    {"StandardStrToData, INTEGER", [](DataCnv& c) { return told(c.StandardStrToData(INTEGER, kInteger)); }},
    {"StandardStrToData, DECIMAL", [](DataCnv& c) { return told(c.StandardStrToData(DECIMAL, kDecimal)); }},
    {"StandardStrToData, FLOAT", [](DataCnv& c) { return told(c.StandardStrToData(FLOAT, kFloat)); }},
    {"StandardStrToData, BINARY",
     [](DataCnv& c) { return told(c.StandardStrToData(BINARY, u"00112233 445566778899aabbccddeeff"_k)); }},
    {"StandardStrToData, INTERVAL", [](DataCnv& c) { return told(c.StandardStrToData(INTERVAL, u"-P1DT2H3M4.5S"_k)); }},
    {"StandardStrToData, bad", [](DataCnv& c) { return told(c.StandardStrToData(INTEGER, kWords)); }},
    {"StandardStrFromData",
     [](DataCnv& c) { return told(c.StandardStrFromData(PWFData(kPacked, 12, BINARY, REFERENCE))); }},
    {"StandardStrFromData, FLOAT", [](DataCnv& c) { return told(c.StandardStrFromData(PWFData(1.25e-300))); }},
    {"StrFromInterval",
     [](DataCnv& c) { return told(c.StrFromInterval(c.StrToInterval(units(u"P12345678DT23H59M58.123456S"_k), -1))); }},
    {"StrToInterval, bad", [](DataCnv& c) { return c.StrToInterval(units(kWords), -1), told("read"); }},
    {"StrToInterval, fine seconds",
     [](DataCnv& c) { return told(c.StrFromInterval(c.StrToInterval(units(u"PT1.123456789S"_k), -1))); }},
    {"AppendIntervalField",
     [](DataCnv& c) { return edited(kWords, [&](auto& t) { c.AppendIntervalField(50000, t, true); }); }},
};

const Row kEdits[] = {
    {"PadData",
     [](DataCnv& c) { return edited(kWords, [&](auto& t) { c.PadData(t, 300, eJustifyRight, 0x5C, false); }); }},
    {"PadData, bytes",
     [](DataCnv& c) {
       return written<2000>([&](auto* f, int n) { c.PadData(f + 10, n - 10, 10, eJustifyRight, '*', true); });
     }},
    {"PadData, invalid",
     [](DataCnv& c) {
       return edited(kWords, [&](auto& t) { c.TrimData(t, eTrimPadding, eJustifyLeft, 0xFFFF, false); });
     },
     1208},
    {"PadString",
     [](DataCnv& c) { return edited(kWords, [&](auto& t) { c.PadString(t, 300, 40, '*', eJustifyLeft, true); }); }},
    {"TrimData",
     [](DataCnv& c) {
       return edited(u"****"_k + kWords, [&](auto& t) { c.TrimData(t, eTrimPadding, eJustifyRight, 0x5C, false); });
     }},
    {"TrimString",
     [](DataCnv& c) {
       unsigned short buffer[40];
       std::copy_n(units(kWords), kWords.length(), buffer);
       return told(c.TrimString(buffer, lengthOf(kWords), 's', eJustifyLeft, eTrimPadding, true));
     }},
    {"TruncateData",
     [](DataCnv& c) {
       return edited(kWords, [&](auto& t) { c.TruncateData(t, 20, eJustifyRight, eLengthBytes, c.getConverter()); });
     },
     930},
    {"ExtDecAddSign",
     [](DataCnv& c) {
       return edited(kInteger, [&](auto& t) {
         bool negative = true;
         c.ExtDecAddSign(t, eSignLeadingSeparate, nullptr, nullptr, negative);
       });
     }},
    {"ExtDecPadData",
     [](DataCnv& c) {
       return edited(kInteger, [&](auto& t) { c.ExtDecPadData(t, 40, 18, eJustifyRight, 0xF0, false); });
     }},
    {"SubstituteMinusSign",
     [](DataCnv& c) {
       return edited(kDecimal, [&](auto& t) { c.SubstituteMinusSign(t, eSignTrailingSeparate, units(kWords), false); });
     }},
    {"ReplaceExponentialSign",
     [](DataCnv& c) {
       return edited(u"1.234567890123456789Eminus12"_k,
                     [&](auto& t) { c.ReplaceExponentialSign(t, units(u"minus"_k), nullptr); });
     }},
    {"adjustDecimalForString",
     [](DataCnv& c) { return edited(kInteger, [&](auto& t) { c.adjustDecimalForString(t, 60); }); }},
    {"adjustPrecisionForString",
     [](DataCnv& c) { return edited(kInteger, [&](auto& t) { c.adjustPrecisionForString(t, 60); }); }},
    {"UpdateDecimal",
     [](DataCnv& c) { return edited(kDecimal, [&](auto& t) { c.UpdateDecimal(t, units(kPoint), units(kWords)); }); }},
    {"toUnicodeString",
     [](DataCnv& c) { return edited({}, [&](auto& t) { c.toUnicodeString(t, kExternal, sizeof kExternal); }); }},
    {"fromUnicodeString",
     [](DataCnv& c) { return written<60>([&](auto* f, int& n) { c.fromUnicodeString(kDecimal, f, n); }); }, 943},
    {"RawCharsToPWFData", [](DataCnv& c) { return told(c.RawCharsToPWFData("a text with more than some units", 32)); },
     1208},
    {"RawCharsToPWFData, large",
     [](DataCnv& c) {
       const PWFData text = c.RawCharsToPWFData(reinterpret_cast<const char*>(kMany), 2000);
       return told(text.getStringLength());
     },
     1388},
    {"getConverter, no such page", [](DataCnv& c) { return c.getConverter(), told("made"); }, 99999},
    {"IsCcsidEBCDIC", [](DataCnv& c) { return told(c.IsCcsidEBCDIC()); }, 930},
};

void add(Operations& operations, const Row& row) {
  addBoth(
      operations, row.name, [row] { return sharedOf([row] { return converterFor(row.ccsid); }); }, row.use);
}

}  // namespace

Operations conversionOperations() {
  Operations operations;
  for (const Row& row : kIntegersAndFloats)
    add(operations, row);
  for (const Row& row : kDecimals)
    add(operations, row);
  for (const Row& row : kTexts)
    add(operations, row);
  for (const Row& row : kEdits)
    add(operations, row);
  return operations;
}

}  // namespace oxr::test
