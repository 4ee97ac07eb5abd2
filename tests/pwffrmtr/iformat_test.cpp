#include <gtest/gtest.h>

#include "harness/datetimes.hpp"
#include "harness/rows.hpp"

namespace oxr::test {
namespace {

// All shapes there are, then what is next to one.
TEST(IsoShapes, TextsTellTheirPatterns) {
  const char kCases[] =
      "-01 -yy; 2001 yyyy; --12 --MM; ---31 ---dd; -01-02 -yy-MM; 2001-02 yyyy-MM; --02-03 --MM-dd; "
      "-01-02-03 -yy-MM-dd; 2001-02-03 yyyy-MM-dd; T12 'T'HH; 12:30 HH:mm; 12+01 HHZZ; 12-01 HHZZ; 12:30:15 HH:mm:ss; "
      "12:30+01 HH:mmZZ; 12:30:15.1 HH:mm:ss.S; 12:30:15,1 HH:mm:ss,S; 12:30:15.12 HH:mm:ss.SS; "
      "12:30:15,12 HH:mm:ss,SS; 12:30:15-01 HH:mm:ssZZ; 12:30+01:00 HH:mmZZZ; 12:30Z HH:mmZZZ; "
      "12:30:15.123 HH:mm:ss.SSS; 12:30:15,123 HH:mm:ss,SSS; 12:30:15.1+01 HH:mm:ss.SZZ; 12:30:15,1+01 HH:mm:ss,SZZ; "
      "12:30:15.12+01 HH:mm:ss.SSZZ; 12:30:15,12+01 HH:mm:ss,SSZZ; 12:30:15Z HH:mm:ssZZZ; 12:30:15-01:00 HH:mm:ssZZZ; "
      "12:30:15.123+01 HH:mm:ss.SSSZZ; 12:30:15,123-01 HH:mm:ss,SSSZZ; 12:30:15.1Z HH:mm:ss.SZZZ; "
      "12:30:15.1+01:00 HH:mm:ss.SZZZ; 12:30:15,1Z HH:mm:ss,SZZZ; 12:30:15,1-01:00 HH:mm:ss,SZZZ; "
      "12:30:15.12Z HH:mm:ss.SSZZZ; 12:30:15.12+01:00 HH:mm:ss.SSZZZ; 12:30:15,12Z HH:mm:ss,SSZZZ; "
      "12:30:15,12-01:00 HH:mm:ss,SSZZZ; 12:30:15.123Z HH:mm:ss.SSSZZZ; 12:30:15.123+01:00 HH:mm:ss.SSSZZZ; "
      "12:30:15,123Z HH:mm:ss,SSSZZZ; 12:30:15,123+01:00 HH:mm:ss,SSSZZZ; ab:cd HH:mm; T12:30 'T'HH:mm; "
      "2001-02-03T04:05:06Z yyyy-MM-dd'T'HH:mm:ssZZZ; ---31T12:00 ---dd'T'HH:mm; --02-03T12:00 --MM-dd'T'HH:mm; "
      "-01-02-03T12:00 -yy-MM-dd'T'HH:mm; '' OXR5544; T OXR5544; 12 HH; x1 OXR5544; x001 OXR5544; 2001T12 OXR5544; "
      "2001-02T12:30 OXR5544; -01-02T12:30 OXR5544; -01T12 OXR5544; --12T12 OXR5544; 2001-02-03T OXR5544; "
      "2001-02-03Tx OXR5544; 20010203T12:30 OXR5544; 20010203 OXR5544; 2001/02 OXR5544; 1-2-3-456 OXR5544; "
      "1230Z OXR5544; 12:30x OXR5544; 12:30:15x OXR5544; 12:30:15.1234567890 OXR5544; 12:30:15.1234567890Z OXR5544; "
      "2001-02-03T12:30T OXR5544";
  PWFDateTimeFormatter formatter(false, nullptr, 53, nullptr, 0, false);
  for (const Row& c : rows(kCases))
    EXPECT_EQ(outcomeOf([&] { return formatter.IdentifyIFormatPattern(k(c.at(0))); }), c.at(1)) << shown(c);
  EXPECT_EQ(PWFDateTimeFormatter::IdentifyIDatePattern(u"2001-02-03"_k), 8);
  EXPECT_EQ(PWFDateTimeFormatter::IdentifyIDatePattern(u"12:30"_k), -1);
  EXPECT_EQ(PWFDateTimeFormatter::IdentifyITimePattern(u"12:30:15,123+01:00"_k), 25);
}

TEST(IsoShapes, TypesTellTheirPatterns) {
  KelWstring pattern;
  for (const Row& c : rows("date yyyy-MM-dd; time HH:mm:ss.SSSZZZ; gDay ---dd; gYear yyyy; gMonth --MM; "
                           "gMonthDay --MM-dd; gYearMonth yyyy-MM; dateTime yyyy-MM-dd'T'HH:mm:ss.SSSZZZ; "
                           "gyear yyyy-MM-dd'T'HH:mm:ss.SSSZZZ; '' yyyy-MM-dd'T'HH:mm:ss.SSSZZZ")) {
    PWFDateTimeFormatter::EstablishIFormat(k(c.at(0)).characters(), pattern);
    EXPECT_EQ(toUtf8(pattern), c.at(1)) << shown(c);
  }
  PWFDateTimeFormatter::EstablishIFormat(nullptr, pattern);
  EXPECT_EQ(pattern, u"yyyy-MM-dd'T'HH:mm:ss.SSSZZZ"_k);
}

}  // namespace
}  // namespace oxr::test
