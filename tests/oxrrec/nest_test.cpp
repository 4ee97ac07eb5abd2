// Records of several kinds put into each other: the kinds of the records, in order, and the lines without quotes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

using testing::HasSubstr;

constexpr char kCopybook[] =
    "01 A. 05 K PIC X. 05 N PIC 9. 01 B. 05 K PIC X. 05 N PIC 9. 01 C. 05 K PIC X. 05 N PIC 9.";
constexpr char kWhen[] = "--ccsid 819 --when K=a:A --when K=b:B --when K=c:C --when K=*:A ";

const struct {
  const char* arguments;
  const char* records;
  const char* lines;
  const char* told = "";
} kCases[] = {
    {"--nest b:a", "a1b2b3a4", "{K:a,N:1,B:[{K:b,N:2},{K:b,N:3}]} {K:a,N:4,B:[]}"},
    // Two levels; a child of the lower one belongs to the last of the upper one.
    {"--nest B:A --nest C:B", "a1b2c3c4b5a6b7c8",
     "{K:a,N:1,B:[{K:b,N:2,C:[{K:c,N:3},{K:c,N:4}]},{K:b,N:5,C:[]}]} {K:a,N:6,B:[{K:b,N:7,C:[{K:c,N:8}]}]}"},
    // Two kinds of children.
    {"--nest B:A --nest C:A", "a1c2b3c4", "{K:a,N:1,B:[{K:b,N:3}],C:[{K:c,N:2},{K:c,N:4}]}"},
    // A kind of no hierarchy overtakes the parent that is open.
    {"--nest B:A", "a1c2b3", "{K:c,N:2} {K:a,N:1,B:[{K:b,N:3}]}"},
    {"--nest B:A --nest C:B", "c1b2c3a4", "{K:c,N:1} {K:b,N:2,C:[{K:c,N:3}]} {K:a,N:4,B:[]}",
     "2 records stand on lines of their own, since they come before any parent; the first is record 1, a C\n"},
    // A parent that is left out takes no children from its forerunner.
    {"--nest B:A --on-error skip", "a1b2axb3", "{K:a,N:1,B:[{K:b,N:2}]} {K:b,N:3}", "the first is record 4, a B\n"},
    // What the work ends at is not there, what came before is.
    {"--nest B:A", "a1b2bx", "{K:a,N:1,B:[{K:b,N:2}]}"},
    {"--nest B:A", "", ""},
    {"--nest B", "a1", "", "--nest B: it is to be CHILD:PARENT"},
    {"--nest D:A", "a1", "", "--nest: no --when tells which records are D"},
    {"--nest B:A --nest A:B", "a1", "", "--nest A:B: a record cannot be below itself"},
    {"--nest B:A --nest B:C", "a1", "", "--nest B:C: the child has a parent already"},
    {"--nest B:A --to csv", "a1", "", "--nest is not for --to csv"},
};

TEST(Nest, PutsRecordsIntoTheirParents) {
  for (const auto& [arguments, records, lines, told] : kCases) {
    SCOPED_TRACE(std::string(arguments) + ' ' + records);
    const Outcome outcome = decodeBytes(kCopybook, records, kWhen + std::string(arguments));
    EXPECT_EQ(replaced(outcome.lines, "\"", ""), replaced(lines, " ", "\n") + (*lines == '\0' ? "" : "\n"));
    EXPECT_THAT(outcome.messages, HasSubstr(told));
  }
}

}  // namespace
}  // namespace oxr::rec::test
