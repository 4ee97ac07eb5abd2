#include <gmock/gmock.h>

#include <algorithm>

#include "oxrrec/processes.hpp"

// The program with less memory than it needs, from the least that the system can start it with up to the least that it
// works with.

namespace oxr::rec::test {
namespace {

constexpr int kNotStarted = 127;

class LittleMemory : public testing::Test {
 protected:
  // The program's exit code with so many KiB of addresses; what it tells is kept.
  int run(std::size_t size, const std::string& arguments) {
    std::vector<std::string> words = {"prlimit", "--as=" + std::to_string(size << 10), "--core=0", OXRREC_PROGRAM};
    for (const std::string& word :
         wordsOf(replaced(replaced(arguments, "@", folder_.path("")), "SAMPLES", OXR_SAMPLES_DIR)))
      words.push_back(word);
    Process program(words);
    const int code = program.wait();
    messages_ = program.messages();
    return code;
  }

  const Folder folder_;
  std::string messages_;
};

// Sizes are KiB.
constexpr struct {
  const char* arguments;
  std::size_t step;
} kCommands[] = {
    {"decode -o @out @in", 64},
    {"decode --jobs 2 -o @out @in", 1024},
    {"decode --to csv -o @out @in", 64},
    {"encode -o @out @lines", 64},
    {"verify @in", 64},
    {"explain 3 --html @out @in", 64},
    {"profile -o @out @in", 64},
    {"index --every 100KB -o @out @in", 64},
};

TEST_F(LittleMemory, IsToldInOneMessageAndLeavesNoFile) {
  const std::string samples = OXR_SAMPLES_DIR;
  const std::string records = contentOf(samples + "/customers.rdw.bin"),
                    lines = contentOf(samples + "/customers.expected.jsonl");
  std::string manyRecords, manyLines;
  for (int i = 0; i < 300; ++i) {
    manyRecords += records;
    manyLines += lines;
  }
  folder_.write("in", manyRecords);
  folder_.write("lines", manyLines);
  std::size_t least = 0;
  for (std::size_t bit = std::size_t{1} << 17; bit >= 32; bit /= 2)
    if (run(least + bit, "help") == kNotStarted) least += bit;
  for (const auto& [command, step] : kCommands) {
    const std::string arguments = std::string(command) + " --copybook SAMPLES/customers.cob --ccsid 37 --records rdw";
    int sizes = 0;
    for (std::size_t size = least + 32;; size += step, ++sizes) {
      SCOPED_TRACE(std::to_string(size) + ' ' + command);
      std::filesystem::remove(folder_.path("out"));
      const int code = run(size, arguments);
      if (code == kDone) break;
      ASSERT_EQ(code, kFailed) << messages_;
      EXPECT_THAT(messages_,
                  testing::AnyOf("oxrrec: out of memory\n", testing::StartsWith("oxrrec: cannot start a thread: ")));
      EXPECT_EQ(std::count(messages_.begin(), messages_.end(), '\n'), 1);
      EXPECT_EQ(folder_.names(), "in lines");
    }
    EXPECT_GT(sizes, 5) << command;
    EXPECT_EQ(messages_, "") << command;
  }
}

}  // namespace
}  // namespace oxr::rec::test
