#include <gtest/gtest.h>
#include <unicode/decimfmt.h>

#include <barrier>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "harness/newprocess.hpp"
#include "harness/table.hpp"

namespace oxr::test {
namespace {

const Members kMembers = {
    {"IsCcsidEBCDIC", [](Case& c) { return shown(c.converter().IsCcsidEBCDIC()); }},
    {"toUnicodeString",
     [](Case& c) {
       KelWstring text = u"old"_k;
       const int status = c.converter().toUnicodeString(text, c.bytes("data"), c.sizeOf("data"));
       return toUtf8(text) + "; " + std::to_string(status);
     }},
    {"RawCharsToPWFData",
     [](Case& c) {
       return shown(c.converter().RawCharsToPWFData(reinterpret_cast<const char*>(c.bytes("data")), c.sizeOf("data")));
     }},
};

TEST(CodePageServices, Convert) {
  runTable(R"(
    member            page  data   ->
    IsCcsidEBCDIC     1399  ''     -> true
    ~                 1200  ''     -> false
    ~                 99999 ''     -> KelRecoverableException OXR2132 bare: Invalid codepage (or missing table) | 99999 | ibm-99999
    toUnicodeString   37    C1C240 -> AB ; 0
    ~                 1208  E282ACFF -> €�; 0
    ~                 1232  00AAAA -> OXR5502: size < MinBytesPerChar for codepage: 1232
    RawCharsToPWFData 37    F0F1F2F3F4F5F6F7F8F9F0F1F2F3F4F5F6 -> STRING 01234567890123456
    ~                 1208  41E2   -> STRING A
  )",
           kMembers);
  runTable(R"(
    member            page  data ->
    RawCharsToPWFData 37    C1   -> RawCharsToPWFData( const char* source, PWFInt32 size ) toUnicodeString
  )",
           tracesOf(kMembers));
}

std::string formatted(const icu::DecimalFormat& format, double value) {
  icu::UnicodeString text;
  std::string utf8;
  return format.format(value, text).toUTF8String(utf8);
}

// One formatter serves the process, so that the first calls are what counts: eight objects on threads of their own.
TEST(DecimalFormatterThreads, ObjectsThatAskTogetherGetAFormatterEach) {
  inANewProcess([] {
    useLocale("de_DE");
    constexpr int kThreads = 8;
    std::barrier start(kThreads);
    std::vector<std::unique_ptr<DataCnv>> objects(kThreads);
    std::vector<const icu::DecimalFormat*> formats(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t)
      threads.emplace_back([&, t] {
        objects[t].reset(new DataCnv(converterFor(37)));
        start.arrive_and_wait();
        formats[t] = objects[t]->getDecimalFormatter();
        for (int i = 0; i < 20; ++i)
          EXPECT_EQ(formatted(*formats[t], -1234.25 - i), "-" + std::to_string(1234 + i) + ".25");
      });
    for (std::thread& thread : threads)
      thread.join();
    EXPECT_EQ(std::set(formats.begin(), formats.end()).size(), std::size_t{kThreads});
    EXPECT_EQ(objects[0]->getDecimalFormatter(), formats[0]);
    EXPECT_EQ(formatted(*formats[0], -7), "-7.");
  });
}

TEST(DecimalFormatter, ALocaleWithoutDigitsIsRefusedAndTheNextCallTriesAnew) {
  inANewProcess([] {
    useLocale("zh@numbers=hans");  // numbers in words
    DataCnv cnv = converterFor(37);
    const char* const text = "Error creating Decimal NumberFormat single instance.";
    for (int i = 0; i < 2; ++i)
      EXPECT_EQ(raisedBy([&] { cnv.getDecimalFormatter(); }), recoverableFailure(2112, {text, text, "16"}));
    useLocale("en_US");
    EXPECT_EQ(formatted(*cnv.getDecimalFormatter(), 0.5), "0.5");
  });
}

}  // namespace
}  // namespace oxr::test
