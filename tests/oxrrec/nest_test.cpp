// Records of several kinds put into each other: the kinds of the records, in order, and the lines without quotes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

using testing::HasSubstr;

constexpr char kCopybook[] =
    "01 A. 05 K PIC X. 05 N PIC 9. 01 B. 05 K PIC X. 05 N PIC 9. 01 C. 05 K PIC X. 05 N PIC 9.";
constexpr char kOwn[] =
    "01 A. 05 K PIC X. 05 G. 10 B PIC 9. 01 B. 05 K PIC X. 05 N PIC 9. 01 C. 05 K PIC X. 05 N PIC 9.";
constexpr char kAreas[] = "05 K PIC X. 05 A. 10 N PIC 9. 05 B REDEFINES A PIC X. 05 C REDEFINES A. 10 G. 15 A PIC 9.";
constexpr char kWhen[] = "--ccsid 819 --when K=a:A --when K=b:B --when K=c:C --when K=*:A ";
// Arrays are called as the copybook spells what they hold.
constexpr char kWhenOnly[] = "--ccsid 819 --when K=a:A --when K=b:b --when K=c:C ";

const struct {
  const char* arguments;
  const char* records;
  const char* lines;
  const char* told = "";
  const char* copybook = kCopybook;
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
     "2 records stand on lines of their own, since they come before any parent; the first is record 1, C\n"},
    // A parent that is left out takes no children from its forerunner.
    {"--nest B:A --on-error skip", "a1b2axb3", "{K:a,N:1,B:[{K:b,N:2}]} {K:b,N:3}",
     "record stands on a line of its own, since its parent was left out; the first is record 4, B\n"},
    // One that is left out in one parent is none to miss in the next.
    {"--nest B:A --nest C:B --on-error skip", "a1bxc2a3c4", "{K:c,N:2} {K:a,N:1,B:[]} {K:c,N:4} {K:a,N:3,B:[]}",
     "since it comes before any parent; the first is record 5, C\n"},
    // What the work ends at is not there, what came before is.
    {"--nest B:A", "a1b2bx", "{K:a,N:1,B:[{K:b,N:2}]}"},
    {"--nest B:A", "", ""},
    // The parts of a file, where a parent may lie in the part before.
    {"--nest B:A --range 2-6 --first-record 2", "a1b2a3b4", "{K:b,N:2} {K:a,N:3,B:[]}", "the first is record 2, B\n"},
    // What no condition calls anything, between a parent and its child.
    {"--nest B:A --on-unknown raw", "a1z9b2", "{RAW:7A39} {K:a,A:{N:1},B:[{K:b,B:2}]}", "", kAreas},
    {"--nest B:A --on-unknown skip", "a1z9b2", "{K:a,A:{N:1},B:[{K:b,B:2}]}", "", kAreas},
    // A child with the name of a field that stands in its parent's object.
    {"--nest B:A", "a1b2", "{K:a,G:{B:1},B:[{K:b,N:2}]}", "", kOwn},
    {"--nest B:A --flat", "a1", "", "--nest B:A: A has a field B, and its object cannot have two of that name", kOwn},
    {"--nest B:A --flat", "a1b2", "{K:a,N:1,B:[{K:b,B:2}]}", "", kAreas},
    {"--nest A:C", "c1a2", "{K:c,C:{G:{A:1}},A:[{K:a,A:{N:2}}]}", "", kAreas},
    {"--nest A:C --flat", "c1", "", "--nest A:C: C has a field A, and", kAreas},
    {"--nest B", "a1", "", "--nest B: it is to be CHILD:PARENT"},
    {"--nest D:A", "a1", "", "--nest: no --when tells which records are D"},
    {"--nest B:A --nest A:B", "a1", "", "--nest A:B: a record cannot be below itself"},
    {"--nest B:A --nest B:C", "a1", "", "--nest B:C: the child has a parent already"},
    {"--nest B:A --to csv", "a1", "", "--nest is not for --to csv"},
};

TEST(Nest, PutsRecordsIntoTheirParents) {
  for (const auto& [arguments, records, lines, told, copybook] : kCases) {
    SCOPED_TRACE(std::string(arguments) + ' ' + records);
    const Outcome outcome =
        decodeBytes(copybook, records, (copybook == kAreas ? kWhenOnly : kWhen) + std::string(arguments));
    EXPECT_EQ(replaced(outcome.lines, "\"", ""), replaced(lines, " ", "\n") + (*lines == '\0' ? "" : "\n"));
    EXPECT_THAT(outcome.messages, HasSubstr(told));
  }
}

}  // namespace
}  // namespace oxr::rec::test
