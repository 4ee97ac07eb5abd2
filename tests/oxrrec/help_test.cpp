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
  const std::string page = manPage(kOxrrec, all);
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

}  // namespace
}  // namespace oxr::rec::test
