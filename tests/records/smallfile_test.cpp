#include "records/smallfile.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <thread>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

constexpr std::size_t kMost = 2048;

// The size of what was read, or why nothing was.
std::string read(const std::string& path) {
  try {
    return std::to_string(readSmallFile(path, kMost, std::chrono::milliseconds(200)).size());
  } catch (const SmallFileError& fault) {
    return fault.what();
  }
}

TEST(SmallFile, IsReadUpToItsLimit) {
  const Folder folder;
  const struct {
    std::string path;
    const char* expected;
  } cases[] = {
      {folder.write("empty", ""), "0"},
      {folder.write("full", std::string(kMost, 'x')), "2048"},
      {folder.write("more", std::string(kMost + 1, 'x')), "it has more than 2 KiB"},
      {folder.path("none"), "No such file or directory"},
      {folder.path(""), "it is a folder"},
      {"/dev/null", "0"},
      {"/dev/zero", "it has more than 2 KiB"},
      {"/proc/self/stat", "*"},  // has no size before it is read
  };
  for (const auto& [path, expected] : cases)
    EXPECT_THAT(read(path), testing::MatchesRegex(asPattern(expected))) << path;
}

// What is written to a pipe, in the file system, by a writer that comes late; with what is read, and left in the pipe.
TEST(SmallFile, APipeIsReadToItsEndOrForAWhile) {
  const Folder folder;
  const std::string path = folder.path("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const struct {
    std::size_t written;
    bool staysOpen;
    const char* expected;
    int left;
  } cases[] = {
      {0, false, "0", 0},
      {10, false, "10", 0},
      {10, true, "its end did not come within 0 s", 0},
      {kMost + 10, true, "it has more than 2 KiB", 9},  // one byte beyond the limit is read
  };
  EXPECT_EQ(read(path), cases[2].expected) << "without a writer";
  for (const auto& c : cases) {
    // It has both ends, so that what is left can be counted, and opening it never waits.
    const int other = c.staysOpen ? ::open(path.c_str(), O_RDWR | O_CLOEXEC) : -1;
    const std::string bytes(c.written, 'x');
    std::thread writer([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      const int file = c.staysOpen ? other : ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
      EXPECT_EQ(::write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(c.written));
      if (!c.staysOpen) ::close(file);
    });
    EXPECT_EQ(read(path), c.expected);
    writer.join();
    int waiting = 0;
    EXPECT_TRUE(!c.staysOpen || ::ioctl(other, FIONREAD, &waiting) == 0);
    EXPECT_EQ(waiting, c.left);
    ::close(other);
  }
}

// Files that have no end, wherever a program takes a small one or a line.
TEST(SmallFile, EndlessInputIsRefusedByTheProgram) {
  const Folder folder;
  const std::string book = " --ccsid 819 --copybook " + folder.write("book", "01 R. 05 A PIC X.");
  const struct {
    std::string arguments;
    const char* expected;
  } cases[] = {
      {"layout --copybook /dev/zero", "oxrrec: /dev/zero: the copybook can't be read: it has more than 4 MiB\n"},
      {"decode --fields /dev/zero x" + book,
       "oxrrec: the settings of fields in /dev/zero cannot be read: it has more than 256 KiB*"},
      {"encode --max-line 1MiB /dev/zero" + book,
       "oxrrec: /dev/zero: line 1 is longer than 1048576 bytes (--max-line)\n"},
      {"encode --max-line 9 " + folder.write("in", "{\"A\":\"x\"}\n{\"A\":\"yy\"}\n") + book,
       "oxrrec: *in: line 2 is longer than 9 bytes (--max-line)\n"},
      {"encode --max-line 10 " + folder.write("fits", "{\"A\":\"yy\"}") + book, "oxrrec: *fits: line 1, A: *"},
  };
  for (const auto& [arguments, expected] : cases) {
    const Outcome outcome = runProgram(arguments);
    EXPECT_THAT(outcome.messages, testing::MatchesRegex(asPattern(expected))) << arguments;
  }
}

}  // namespace
}  // namespace oxr::rec::test
