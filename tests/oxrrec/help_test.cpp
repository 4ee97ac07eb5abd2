// The installed man page and completion are looked at by tests/install/run.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"
#include "records/program/help/model.hpp"

namespace oxr::rec::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Help, TellsOfEachCommandAndTopic) {
  const std::vector<CommandText> all = textOfAll(kOxrrec);
  const std::string overview = runProgram("help").lines;
  EXPECT_EQ(runProgram("--help").lines, overview);
  const std::string page = manPage(kOxrrec, all), completion = bashCompletion(kOxrrec, all);
  std::string inTopics;
  for (const Topic& topic : kOxrrec.topics) {
    EXPECT_THAT(overview, HasSubstr(std::string("\n  ") + topic.name + ' '));
    inTopics += runProgram(std::string("help ") + topic.name).lines;
  }
  for (const CommandText& command : all) {
    SCOPED_TRACE(command.name);
    EXPECT_THAT(overview, HasSubstr("\n  " + command.name + ' '));
    const std::string help = runProgram(command.name + " --help").lines;
    EXPECT_EQ(runProgram("help " + command.name).lines, help);
    EXPECT_THAT(help, StartsWith("Usage: oxrrec " + command.name));
    for (const OptionText& option : command.options) {
      if (!option.isArgument) {
        EXPECT_THAT(completion, HasSubstr(option.names.back()));
      }
      // An option whose group is no topic would be found nowhere.
      EXPECT_THAT(help, HasSubstr("\n  " + option.names.front()));
      if (option.topic.empty()) continue;
      EXPECT_THAT(inTopics, HasSubstr("\n  " + option.names.front()));
      EXPECT_THAT(page, HasSubstr(replaced(option.names.back(), "-", "\\-")));
    }
  }
  const Outcome unknown = runProgram("help nothing");
  EXPECT_EQ(unknown.code, kFailed);
  EXPECT_THAT(unknown.messages, HasSubstr("nothing"));
  EXPECT_THAT(runProgram("--version").lines, StartsWith("oxrrec 1."));
}

// What is wrong with arguments is told in one line, with what helps.
TEST(Help, IsNamedWhereArgumentsAreWrong) {
  constexpr const char* kCases[][2] = {
      {"", "the first argument is to be a command (oxrrec help lists them)"},
      {"--ccsid 37 decode x", "the first argument is to be a command (oxrrec help lists them)"},
      {"decod x", "no command is called decod; is decode meant? (oxrrec help lists them)"},
      {"decode x", "--copybook is required (oxrrec decode --help tells more)"},
      {"decode --copybok c x", "there is no option --copybok; is --copybook meant? (oxrrec decode --help tells more)"},
      {"encode --jobs 2 x", "there is no option --jobs (oxrrec encode --help tells more)"},
      {"explain x", "N: x is no whole number from 1 (oxrrec explain --help tells more)"},
      {"decode --jobs 300 x", "--jobs: 300 is no whole number from 1 to 256 (oxrrec decode --help tells more)"},
      {"index --every 5x x",
       "--every: 5x is no number of bytes such as 1000 or 64MiB (oxrrec index --help tells more)"},
      {"index --every 0 x", "--every: 0 is no number of bytes such as 1000 or 64MiB (oxrrec index --help tells more)"},
      {"decode --ccsid 37 --ccsid 819 x", "--ccsid is given more than once (oxrrec decode --help tells more)"},
      {"decode x -o", "--output is given without a value (oxrrec decode --help tells more)"},
      {"decode --flat=x x", "there is no --flat = x (oxrrec decode --help tells more)"},
      {"help a b", "there is no use for b (oxrrec help --help tells more)"},
  };
  for (const auto& [arguments, told] : kCases) {
    const Outcome outcome = runProgram(arguments);
    EXPECT_EQ(outcome.messages, "oxrrec: " + std::string(told) + '\n');
    EXPECT_EQ(outcome.code, kFailed);
  }
}

}  // namespace
}  // namespace oxr::rec::test
