#include <gtest/gtest.h>

#include <regex>

#include "oxrrec/runs.hpp"
#include "records/parallel/orderedwork.hpp"

namespace oxr::rec::test {
namespace {

constexpr char kDots[] = "01 R. 05 K PIC 9(5). 05 D PIC X(25).";
constexpr char kCounted[] = "01 R. 05 K PIC 9(5). 05 N PIC 9. 05 D PIC X OCCURS 0 TO 9 DEPENDING ON N. 05 E PIC X(15).";
constexpr int kRecords = 30'000;  // some chunks

// Records whose number is K, or is bad in every `badEach`th.
std::string records(const RecordForm& form, bool isCounted, int badEach) {
  RecordFramer framer(form, 1000);
  std::string file;
  for (int i = 1; i <= kRecords; ++i) {
    std::string record = badEach != 0 && i % badEach == 0 ? "bad!!" : std::to_string(100'000 + i).substr(1);
    record += isCounted ? std::to_string(i % 10) + std::string(static_cast<std::size_t>(i % 10) + 15, 'x')
                        : std::string(25, '.');
    framer.add({reinterpret_cast<const unsigned char*>(record.data()), record.size()}, file);
  }
  framer.finish(file);
  return file;
}

struct Input {
  const char* copybook;
  const char* arguments;
  std::string bytes;
};

// Each form; and faults, in fields and in the form, in the middle and at the end.
std::vector<Input> inputs() {
  const std::string rdw = records({Framing::rdw}, true, 0);
  const std::string counted = records({Framing::fixed}, true, 0);
  return {
      {kDots, "fixed", records({Framing::fixed}, false, 0)},
      {kDots, "bdw", records({Framing::bdw}, false, 0)},
      {kDots, "spanned", records({Framing::spanned}, false, 0)},
      {kDots, "length2", records({Framing::length2}, false, 0)},
      {kDots, "lines", records({Framing::lines}, false, 0)},
      {kCounted, "rdw", rdw},
      {kCounted, "auto", rdw},
      {kCounted, "fixed --to csv", counted},
      {kDots, "fixed", ""},
      {kDots, "rdw --on-error null", records({Framing::rdw}, false, 2'000)},
      {kDots, "rdw --on-error null", records({Framing::rdw}, false, 500)},
      {kDots, "lines --on-error skip", records({Framing::lines}, false, 3)},
      {kDots, "fixed", records({Framing::fixed}, false, 17'000)},
      {kCounted, "rdw", rdw.substr(0, 700'000) + "?" + rdw.substr(700'000)},
      {kCounted, "rdw", rdw.substr(0, rdw.size() - 3)},
      {kCounted, "fixed", counted.substr(0, counted.size() - 3)},
      {kCounted, "fixed --on-error null", counted.substr(0, 505'000) + "?" + counted.substr(505'000)},
      {kDots, "rdw", records({Framing::fixed}, false, 0)},
  };
}

TEST(JobsThreads, GiveWhatOneJobGives) {
  for (const Input& input : inputs()) {
    SCOPED_TRACE(input.arguments);
    const std::string arguments = std::string("--ccsid 819 --records ") + input.arguments;
    const Outcome one = decodeBytes(input.copybook, input.bytes, arguments);
    const Outcome three = decodeBytes(input.copybook, input.bytes, arguments + " --jobs 3");
    EXPECT_EQ(one.messages, three.messages);
    EXPECT_EQ(one.code, three.code);
    EXPECT_TRUE(one.lines == three.lines) << one.lines.size() << " and " << three.lines.size() << " bytes";
  }
}

TEST(JobsThreads, AreRefusedWhereRecordsBelongTogether) {
  for (const char* const other : {"--check", "--errors /dev/null", "--nest A:B --when K=1:A --when K=2:B"})
    EXPECT_EQ(decodeBytes(kDots, "", std::string("--jobs 2 ") + other).code, kFailed);
}

// The ranges of an index cover the file; decoded one by one they give the lines of the whole.
TEST(Index, TellsRangesThatGiveTheWhole) {
  for (const Input& input : inputs()) {
    SCOPED_TRACE(input.arguments);
    const std::string page = std::string("--ccsid 819 --records ") + input.arguments + ' ';
    const Outcome whole = decodeBytes(input.copybook, input.bytes, page);
    if (whole.code != kDone || whole.lines.empty()) continue;
    const Folder folder;
    const std::string arguments = "--format free --copybook " + folder.write("c", input.copybook) + ' ' +
                                  replaced(page, "--to csv", "") + folder.write("in", input.bytes);
    const std::string index = runProgram("index --every 200000 " + arguments).lines;
    EXPECT_NE(index.find("\"records\":30000}\n"), std::string::npos) << index;
    std::string lines;
    std::string places;
    const std::regex range("\"begin\":([0-9]+),\"end\":([0-9]+),\"firstRecord\":([0-9]+)");
    for (std::sregex_iterator at(index.begin(), index.end(), range), end; at != end; ++at) {
      const std::string bounds = (*at)[1].str() + '-' + (*at)[2].str();
      places += bounds + ' ';
      lines += runProgram("decode " + arguments + " --range " + bounds +
                          (page.find("csv") == std::string::npos ? "" : " --to csv"))
                   .lines;
    }
    EXPECT_TRUE(lines == whole.lines) << lines.size() << " and " << whole.lines.size() << " bytes";
    EXPECT_TRUE(places.starts_with("0-") && places.ends_with('-' + std::to_string(input.bytes.size()) + ' ')) << places;
  }
}

TEST(Index, OfNothingHasNoRange) {
  const Folder folder;
  EXPECT_EQ(runProgram("index - --format free --ccsid 819 --copybook " + folder.write("c", kDots)).lines,
            "{\"ranges\":[],\"records\":0}\n");
}

// Whatever ends the work, all threads end, and all results before it are given.
TEST(OrderedWorkThreads, EndsInOrder) {
  for (const int bad : {0, 1, 5, 200}) {
    for (const bool failsInTaking : {false, true}) {
      int taken = 0;
      int given = 0;
      const auto failAt = [bad](int piece) {
        if (piece == bad) throw std::runtime_error("bad");
        return piece;
      };
      OrderedWork<int, int> work(
          [&] { return taken == 100 ? std::nullopt : std::optional(failsInTaking ? failAt(taken++) : taken++); },
          [&](int result) {
            EXPECT_EQ(result, given);
            return ++given != 50;
          });
      const auto run = [&] { work.run({4, failAt}); };
      if (bad < 50)
        EXPECT_THROW(run(), std::runtime_error);
      else
        run();
      EXPECT_EQ(given, std::min(bad, 50));
    }
  }
}

}  // namespace
}  // namespace oxr::rec::test
