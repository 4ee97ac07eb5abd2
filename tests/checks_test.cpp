// The comparisons that the fuzz targets make, each on seeded random inputs: models, and one way against the other.
// OXR_RANDOM_CASES says how many inputs a check gets; the seed is fixed, so that a failure repeats.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "fuzz/buffers/base64_check.hpp"
#include "fuzz/buffers/growingbytebuffer_check.hpp"
#include "fuzz/buffers/textreader_check.hpp"
#include "fuzz/buffers/textwriter_check.hpp"
#include "fuzz/codepage/codepage_check.hpp"
#include "fuzz/datacnv/duration_check.hpp"
#include "fuzz/datacnv/external_check.hpp"
#include "fuzz/datacnv/floats_check.hpp"
#include "fuzz/datacnv/integers_check.hpp"
#include "fuzz/datacnv/numbertext_check.hpp"
#include "fuzz/datacnv/packed_check.hpp"
#include "fuzz/datacnv/standardstrings_check.hpp"
#include "fuzz/datacnv/tlog_check.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/host/kelbuffer_check.hpp"
#include "fuzz/host/keltimepattern_check.hpp"
#include "fuzz/host/keltimestamp_check.hpp"
#include "fuzz/host/kelwstring_check.hpp"
#include "fuzz/pwffrmtr/binarydatetime_check.hpp"
#include "fuzz/pwffrmtr/datetime_check.hpp"
#include "fuzz/records/copybook_check.hpp"
#include "fuzz/records/diagnosis_check.hpp"
#include "fuzz/records/fieldwriter_check.hpp"
#include "fuzz/records/framing_check.hpp"
#include "fuzz/records/jsonvalue_check.hpp"
#include "fuzz/records/recordreader_check.hpp"
#include "fuzz/records/roundtrip_check.hpp"
#include "fuzz/workers/statechecker_check.hpp"

namespace oxr::test {
namespace {

struct Check {
  const char* name;
  void (*run)(fuzz::Choices&);
  int cases;  // some tenths of a second each
};

// clang-format off
constexpr Check kChecks[] = {
    {"KelBuffer",     fuzz::checkKelBuffer,      5'000},
    {"KelWstring",    fuzz::checkKelWstring,     2'000},
    {"TimeStampIcu",  fuzz::checkTimeStampAgainstIcu, 600},
    {"TimeCarryOver", fuzz::checkTimeStampCarryOver, 30'000},
    {"TimeRoundTrip", fuzz::checkTimeStampRoundTrip, 20'000},
    {"TimePattern",   fuzz::checkTimePatternAndText, 20'000},
    {"CodePage",      fuzz::checkCodePage,       2'000},
    {"GrowingBuffer", fuzz::checkGrowingByteBuffer, 5'000},
    {"TextReader",    fuzz::checkTextReader,     3'000},
    {"TextWriter",    fuzz::checkTextWriter,     3'000},
    {"Base64",        fuzz::checkBase64,           500},
    {"Base64Units",   fuzz::checkBase64Units,      200},
    {"ExternalRead",  fuzz::checkExternalRead,  10'000},
    {"ExternalSigns", fuzz::checkExternalSigns,     40},
    {"ExternalWrite", fuzz::checkExternalWrite, 20'000},
    {"ExternalWord",  fuzz::checkExternalWord,  10'000},
    {"PackedRead",    fuzz::checkPackedRead,    20'000},
    {"PackedWrite",   fuzz::checkPackedWrite,   20'000},
    {"PackedNumbers", fuzz::checkPackedNumbers, 20'000},
    {"IntegerRead",   fuzz::checkIntegerRead,   20'000},
    {"IntegerWrite",  fuzz::checkIntegerWrite,  10'000},
    {"FloatFields",   fuzz::checkFloatFields,   10'000},
    {"FloatFormats",  fuzz::checkFloatFormats, 100'000},
    {"TlogRead",      fuzz::checkTlogRead,      10'000},
    {"TlogWrite",     fuzz::checkTlogWrite,     10'000},
    {"NumberField",   fuzz::checkNumberField,   15'000},
    {"NumberRead",    fuzz::checkNumberRead,    10'000},
    {"NumberWrite",   fuzz::checkNumberWrite,   10'000},
    {"DecimalText",   fuzz::checkDecimalText,   10'000},
    {"BinaryTime",    fuzz::checkBinaryDateTime, 10'000},
    {"IsoTime",       fuzz::checkIsoDateTime,   10'000},
    {"TimeText",      fuzz::checkDateTimeText,   3'000},
    {"EpochTime",     fuzz::checkEpochDateTime, 10'000},
    {"DurationRead",  fuzz::checkDurationRead,  20'000},
    {"DurationWrite", fuzz::checkDurationWrite, 20'000},
    {"StandardValue", fuzz::checkStandardValue, 10'000},
    {"StandardText",  fuzz::checkStandardText,  10'000},
    {"HexText",       fuzz::checkHexText,        5'000},
    {"SameDecimals",  fuzz::checkDecimalComparison, 10'000},
    {"SameDurations", fuzz::checkDurationComparison, 10'000},
    {"Copybook",      fuzz::checkCopybook,      10'000},
    {"JsonValue",     fuzz::checkJsonValue,     20'000},
    {"Framing",       fuzz::checkFraming,        5'000},
    {"AnyFraming",    fuzz::checkAnyFraming,     5'000},
    {"Diagnosis",     fuzz::checkDiagnosis,      5'000},
    {"FieldWriter",   fuzz::checkFieldWriter,    5'000},
    {"RecordReader",  fuzz::checkRecordReader,   3'000},
    {"RoundTrip",     fuzz::checkRoundTrip,      2'000},
    {"StateChecker",  fuzz::checkStateChecker,   1'500},
};
// clang-format on

class Checks : public ::testing::TestWithParam<Check> {};

TEST_P(Checks, Hold) {
  constexpr std::size_t kMostBytes = 512;
  const char* const wanted = std::getenv("OXR_RANDOM_CASES");
  const long cases = wanted != nullptr ? std::stol(wanted) : GetParam().cases;
  std::mt19937_64 random(20261121);
  std::vector<std::uint64_t> words(kMostBytes / sizeof(std::uint64_t));
  for (long i = 0; i < cases; ++i) {
    for (std::uint64_t& word : words)
      word = random();
    fuzz::Choices choices({reinterpret_cast<const std::uint8_t*>(words.data()), kMostBytes - random() % kMostBytes});
    try {
      GetParam().run(choices);
    } catch (const fuzz::Disagreement& disagreement) {
      FAIL() << "case " << i << ": " << disagreement.what();
    }
  }
}

// Every text of up to four units that matter, or as many texts as OXR_RANDOM_CASES says: 22000000 for up to seven.
TEST(Checks, ShortDurationsHold) {
  const char* const wanted = std::getenv("OXR_RANDOM_CASES");
  const long texts = std::min(wanted != nullptr ? std::stol(wanted) : 16'105, fuzz::kShortDurations);
  for (long i = 0; i < texts; ++i)
    ASSERT_NO_THROW(fuzz::checkShortDuration(i)) << i;
}

INSTANTIATE_TEST_SUITE_P(All, Checks, ::testing::ValuesIn(kChecks), [](const auto& check) { return check.param.name; });

}  // namespace
}  // namespace oxr::test
