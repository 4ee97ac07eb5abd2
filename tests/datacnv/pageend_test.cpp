// Texts that end where their page does, with a page behind that can't be read: the conversions that take a text many
// units at a time stop there.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

#include "harness/converter.hpp"

namespace oxr::test {
namespace {

class PageEnd : public ::testing::Test {
 protected:
  PageEnd() : page_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) {
    memory_ = ::mmap(nullptr, 3 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    end_ = static_cast<char*>(memory_) + 2 * page_;
    ::mprotect(end_, page_, PROT_NONE);
  }
  ~PageEnd() override { ::munmap(memory_, 3 * page_); }

  // The units, of which the last is the last that can be read but `before`.
  const unsigned short* place(const std::string& text, std::size_t before) const {
    auto* const units = static_cast<unsigned short*>(end_) - before - text.size();
    std::copy(text.begin(), text.end(), units);
    return units;
  }

  std::size_t unitsOfPage() const { return page_ / sizeof(unsigned short); }

 private:
  std::size_t page_;
  void* memory_;
  void* end_;
};

TEST_F(PageEnd, IsNotPassed) {
  DataCnv cnv = converterFor(37);
  for (const char* const number :
       {"7", "-123", "1234567", "-12345678901234", "1234567890123456", "00000000000000000000000000000000000042"}) {
    // The last of the places is that of a text that lies on two pages.
    for (std::size_t step = 0; step <= 40; ++step) {
      const std::size_t before = step < 40 ? step : unitsOfPage() - 8;
      SCOPED_TRACE(std::string(number) + ", units before the end: " + std::to_string(before));
      std::string terminated(number);
      terminated += '\0';
      const unsigned short* const text = place(terminated, before);
      for (int width : {9, 16}) {
        std::array<unsigned char, 16> field;
        cnv.PckdDecFromDec(text, field.data(), width, 0, eSignLeadingIncluded);
        EXPECT_EQ(cnv.PckdDecToPWFInt64(field.data() + width - 9, 9, 0, eSignLeadingIncluded), std::stol(number));
      }
      std::array<unsigned char, 16> external;
      int size = 16;
      cnv.ExtDecFromDec(text, external.data(), size, 0, eSignTrailingIncluded, eJustifyRight, '0', true, false, nullptr,
                        nullptr);
      EXPECT_EQ(cnv.ExtDecToInt64(external.data(), 16, eSignTrailingIncluded, eJustifyRight, '0', true, false, nullptr,
                                  nullptr),
                std::stol(number));
      const std::string shortest = std::to_string(std::stol(number));
      EXPECT_EQ(cnv.StrToInt64(place(shortest, before), static_cast<int>(shortest.size()), eSignLeadingSeparate,
                               DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), eTrimNone, eJustifyRight,
                               ' ', true),
                std::stol(number));
    }
  }
}

// The point may be the last unit: nothing is to be read for the places that are not there.
TEST_F(PageEnd, IsNotPassedByDoubles) {
  DataCnv cnv = converterFor(37);
  cnv.getDecimalFormatter();  // doubles go the fast way once the process has one
  for (const char* const number : {"5", "0.5", "123456789012345.", "1234567890123456.", "123456789012345.6",
                                   "12345678901234567.", "123456789.0123456789", ".1234567890123456"}) {
    for (std::size_t before = 0; before <= 20; ++before) {
      SCOPED_TRACE(std::string(number) + ", units before the end: " + std::to_string(before));
      std::string field(number);
      const auto length = static_cast<int>(field.size());
      EXPECT_EQ(cnv.StrToDbl(place(field, before), length), std::stod(number));
      std::replace(field.begin(), field.end(), '.', ',');
      constexpr unsigned short kComma[] = {',', 0};
      EXPECT_EQ(cnv.StrToDbl(place(field, before), length, false, -1, kComma, eSignLeadingSeparate,
                             DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), eTrimNone, eJustifyRight,
                             ' ', true),
                std::stod(number));
    }
  }
}

}  // namespace
}  // namespace oxr::test
