#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <random>

#include "oxrrec/processes.hpp"

// The program as a process of its own, which something outside of it ends or hinders.

namespace oxr::rec::test {
namespace {

constexpr char kBook[] = "01 R. 05 A PIC X(30). 05 N PIC 9(10).";
constexpr std::size_t kRecords = 20000;

std::string records() {
  std::string all;
  for (std::size_t i = 0; i < kRecords; ++i)
    all += std::string(29, 'a') + "z0000" + std::to_string(100000 + i);
  return all;
}

class Interrupted : public testing::Test {
 protected:
  Interrupted() {
    folder_.write("book", kBook);
    folder_.write("in", records());
  }

  std::vector<std::string> words(const std::string& arguments, const std::string& limit = {}) const {
    std::vector<std::string> all = wordsOf(limit);
    all.emplace_back(OXRREC_PROGRAM);
    const std::string whole = arguments + " --copybook @book --ccsid 819";
    for (const std::string& word : wordsOf(replaced(whole, "@", folder_.path(""))))
      all.push_back(word);
    return all;
  }
  // What the command writes to @out when nothing hinders it.
  std::string undisturbed(const std::string& arguments) const {
    EXPECT_EQ(Process(words(arguments)).wait(), kDone) << arguments;
    std::string content = contentOf(folder_.path("out"));
    std::filesystem::remove(folder_.path("out"));
    EXPECT_FALSE(content.empty());
    return content;
  }

  const Folder folder_;
};

constexpr const char* kWriting[] = {"decode -o @out @in", "decode --jobs 2 -o @out @in", "encode -o @out @lines",
                                    "decode --to csv -o @out @in"};

// Whatever the moment is, there is no file under the final name that is not whole; and no other one either, unless the
// program had no say.
TEST_F(Interrupted, ASignalLeavesAWholeFileOrNone) {
  ASSERT_EQ(Process(words("decode -o @lines @in")).wait(), kDone);
  const char* const asked = std::getenv("OXR_KILLS");
  const int kills = asked != nullptr ? std::atoi(asked) : 40;
  std::mt19937 random(20260101);
  int ended = 0;
  for (const char* const command : kWriting) {
    const std::string whole = undisturbed(command);
    const auto begin = std::chrono::steady_clock::now();
    undisturbed(command);
    const auto time = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
    std::uniform_int_distribution<std::int64_t> moments(0, time.count());
    for (int i = 0; i < kills / 4; ++i) {
      const int signal = std::array{SIGKILL, SIGTERM, SIGINT, SIGHUP}[static_cast<std::size_t>(i) % 4];
      SCOPED_TRACE(std::string(command) + ", signal " + std::to_string(signal));
      Process program(words(command));
      std::this_thread::sleep_for(std::chrono::microseconds(moments(random)));
      const int code = program.end(signal);
      ended += code == -signal ? 1 : 0;
      EXPECT_TRUE(code == -signal || code == kDone) << code;
      const std::string out = folder_.path("out");
      const bool isThere = std::filesystem::exists(out);
      EXPECT_TRUE(isThere ? contentOf(out) == whole : code == -signal);
      if (isThere) std::filesystem::remove(out);
      EXPECT_TRUE(signal == SIGKILL || folder_.names() == "book in lines") << folder_.names();
      for (const auto& entry : std::filesystem::directory_iterator(folder_.path("")))
        if (entry.path().extension() == ".part") std::filesystem::remove(entry.path());
    }
  }
  EXPECT_GT(ended, kills / 4);
}

TEST_F(Interrupted, AReaderThatGoesAwayEndsItWithoutAWord) {
  for (const char* const command : {"decode @in", "decode --jobs 2 @in", "decode --to csv @in"})
    for (const std::size_t taken : {0, 1, 5000, 200000}) {
      auto [from, to] = pipe();
      Process program(words(command), -1, ::fileno(to.get()));
      to.reset();
      std::string bytes(taken, ' ');
      EXPECT_EQ(std::fread(bytes.data(), 1, taken, from.get()), taken);
      from.reset();
      EXPECT_EQ(program.wait(), kDone) << command << ", after " << taken;
      EXPECT_EQ(program.messages(), "");
    }
}

// So many bytes of a file there is room for.
TEST_F(Interrupted, AFullDiskLeavesNoFile) {
  ASSERT_EQ(Process(words("decode -o @lines @in")).wait(), kDone);
  for (const char* const command : {kWriting[0], kWriting[1], kWriting[2], "profile --to json -o @out @in",
                                    "decode -o /dev/null --on-error skip --errors @out @bad"}) {
    if (std::string_view(command).ends_with("@bad")) folder_.write("bad", replaced(records(), "z0", "zx"));
    const std::string before = folder_.names();
    for (const char* const room : {"0", "1", "100", "262144"}) {
      Process program(words(command, std::string("prlimit --fsize=") + room));
      const int code = program.wait();
      const bool isSmall = std::string_view(command).starts_with("profile") && room[1] == '6';
      SCOPED_TRACE(std::string(command) + ", room for " + room);
      EXPECT_EQ(code, isSmall ? kDone : kFailed);
      if (isSmall) std::filesystem::remove(folder_.path("out"));
      // What is told goes to a file with as little room.
      if (!isSmall && room[1] == '6') {
        EXPECT_THAT(program.messages(), testing::HasSubstr("cannot write " + folder_.path("out") + ": File too large"));
      }
      EXPECT_EQ(folder_.names(), before);
    }
  }
}

// The program waits with most of its input unread, since nobody takes what it writes; then the file changes.
TEST_F(Interrupted, AFileThatChangesIsReadAsItWasOrRefused) {
  std::string much;
  for (int i = 0; i < 8; ++i)
    much += records();
  for (const bool grows : {false, true}) {
    const std::string path = folder_.write("much", much);
    auto [from, to] = pipe();
    Process program(words("decode @much"), -1, ::fileno(to.get()));
    to.reset();
    ASSERT_EQ(std::getc(from.get()), '{');
    std::filesystem::resize_file(path, grows ? much.size() + 400 : much.size() / 2);
    std::size_t lines = 0;
    for (int c = std::getc(from.get()); c != EOF; c = std::getc(from.get()))
      lines += c == '\n' ? 1 : 0;
    EXPECT_EQ(program.wait(), grows ? kDone : kFailed);
    const std::string shorter = "oxrrec: " + path + " became shorter while it was read: ";
    EXPECT_THAT(program.messages(), grows ? testing::Matcher<std::string>("") : testing::StartsWith(shorter));
    EXPECT_EQ(lines, grows ? 8 * kRecords : 4 * kRecords);
  }
}

TEST_F(Interrupted, AnOutputThatGoesAwayIsTold) {
  std::filesystem::create_directory(folder_.path("there"));
  auto [from, to] = pipe();
  Process program(words("decode -o @there/out -"), ::fileno(from.get()));
  from.reset();
  ASSERT_TRUE(comes([&] { return !std::filesystem::is_empty(folder_.path("there")); }));
  std::filesystem::remove_all(folder_.path("there"));
  std::fputs(records().substr(0, 40).c_str(), to.get());
  to.reset();
  EXPECT_EQ(program.wait(), kFailed);
  EXPECT_EQ(program.messages(), "oxrrec: cannot write " + folder_.path("there/out") + ": No such file or directory\n");
  EXPECT_EQ(folder_.names(), "book in");
}

}  // namespace
}  // namespace oxr::rec::test
