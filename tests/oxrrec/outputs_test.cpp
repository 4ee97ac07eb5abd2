#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <thread>

#include "oxrrec/runs.hpp"
#include "records/program/signals.hpp"

namespace oxr::rec::test {
namespace {

using testing::StartsWith;

// A command, the option that names a file to write, and the files of the test that it reads; "@" begins their names.
constexpr struct {
  const char* command;
  const char* option;
  const char* reads;
} kOutputs[] = {
    {"decode", "-o", "book copied settings in"},
    {"decode --jobs 2", "-o", "book copied settings in"},
    {"decode --to csv -o @out", "--errors", "book copied settings in"},
    {"explain 1", "--html", "book copied settings in"},
    {"index", "-o", "book copied settings in"},
    {"profile", "-o", "book copied settings in"},
    {"encode", "-o", "book copied settings in"},
    {"layout", "-o", "book copied"},
};

// Other names for the file NAME.
constexpr const char* kNames[] = {"@NAME", "@./NAME", "@NAME.hard", "@NAME.soft"};

TEST(Outputs, AreNoFilesThatAreRead) {
  const Folder folder;
  folder.write("book", "01 R. COPY copied.");
  folder.write("copied", "05 A PIC X.");
  folder.write("settings", "# none");
  folder.write("in", "A");
  const std::string before = folder.names();
  for (const auto& [command, option, reads] : kOutputs) {
    const bool isLayout = std::string_view(command) == "layout";
    const std::string all = std::string(command) + " --copybook @book" +
                            (isLayout ? " " : " --ccsid 819 --fields @settings @in ") + option + ' ';
    std::istringstream names(reads);
    for (std::string name; names >> name;) {
      std::filesystem::create_hard_link(folder.path(name), folder.path(name + ".hard"));
      std::filesystem::create_symlink(folder.path(name), folder.path(name + ".soft"));
      for (const char* const other : kNames) {
        SCOPED_TRACE(all + name + other);
        const std::string content = contentOf(folder.path(name));
        const std::string path = replaced(replaced(other, "NAME", name), "@", folder.path(""));
        const Outcome outcome = runProgram(replaced(all, "@", folder.path("")) + path);
        EXPECT_EQ(outcome.code, kFailed);
        EXPECT_THAT(outcome.messages, StartsWith("oxrrec: cannot write " + path + ": it is "));
        EXPECT_EQ(contentOf(folder.path(name)), content);
      }
      std::filesystem::remove(folder.path(name + ".hard"));
      std::filesystem::remove(folder.path(name + ".soft"));
    }
  }
  EXPECT_EQ(folder.names(), before);
}

// The last one is not there yet. A device may take all.
TEST(Outputs, AreDifferentFiles) {
  const Folder folder;
  const std::string decode = "decode --ccsid 819 --copybook " + folder.write("book", "01 R. 05 A PIC X.") + ' ' +
                             folder.write("in", "A") + " -o ";
  std::filesystem::create_symlink(folder.write("there", "old"), folder.path("link"));
  for (const std::string name : {"there", "link", "new"}) {
    const std::string other = folder.path(name == "link" ? "there" : "./" + name);
    EXPECT_EQ(runProgram(decode + folder.path(name) + " --errors " + other).messages,
              "oxrrec: --errors " + other + ": the lines go there already\n");
  }
  EXPECT_EQ(runProgram(decode + folder.path("new") + " --errors " + folder.path("bad")).code, kDone);
  EXPECT_EQ(runProgram(decode + "/dev/null --errors /dev/null").code, kDone);
}

// Ended while it waits for more input.
TEST(Outputs, GoWhenASignalEndsTheProgram) {
  const Folder folder;
  const std::string arguments = "decode --ccsid 819 --copybook " + folder.write("book", "01 R. 05 A PIC X.") + " -o " +
                                folder.path("out") + " --errors " + folder.path("bad") + " -";
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    std::array<int, 2> ends;
    ASSERT_EQ(::pipe(ends.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
      std::signal(signal, SIG_DFL);  // a shell has its background ignore some, and then the program does
      setSignals();
      std::ostringstream messages;
      ::_exit(runOn({ends[0], 1, messages, false}, arguments));
    }
    for (int i = 0; i < 5000 && folder.names().find("book out.") == std::string::npos; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ::kill(child, signal);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal);
    EXPECT_EQ(folder.names(), "book");
    ::close(ends[0]);
    ::close(ends[1]);
  }
}

// Names and data that a terminal would obey are shown, in messages and in tables for people.
TEST(Messages, ShowWhatATerminalWouldObey) {
  EXPECT_THAT(runProgram("layout --copybook /no/\x1b[2J\u009b\u202e\x9b\u00e4").messages,
              StartsWith("oxrrec: /no/\\x1b[2J\\u009b\\u202e\\x9b\u00e4: "));
  EXPECT_THAT(runProgram("decode --\u0085x").messages, StartsWith("oxrrec: there is no option --\\u0085x"));
  const Folder folder;
  const std::string options = " --ccsid 1208 --copybook " + folder.write("book", "01 R. 05 A PIC X(5). 05 N PIC 9.") +
                              ' ' + folder.write("in", "\u009b\u202eX");
  const Outcome outcome = runProgram("explain 1" + options);
  EXPECT_THAT(outcome.lines, testing::HasSubstr("\"\\u009b\\u202e\""));
  EXPECT_EQ((outcome.lines + outcome.messages).find("\u009b"), std::string::npos);
}

}  // namespace
}  // namespace oxr::rec::test
