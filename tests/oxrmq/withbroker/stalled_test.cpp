// A broker that takes a part of a message, and then no more; and an input that does not go on.

#include <sys/stat.h>

#include "oxrmq/withbroker/fixture.hpp"

namespace oxr::mq::test {
namespace {

using testing::HasSubstr;

constexpr milliseconds kSoon{500};   // in which a connection's buffers are filled
constexpr milliseconds kLate{3000};  // after which signs of life are missed

TEST_F(WithBroker, AMessageThatIsHalfSentHoldsNothingUp) {
  // More than what the buffers of a connection take.
  const std::string records = customers(12000);
  constexpr char kNoMemory[] = "ctl set_vm_memory_high_watermark 0", kMemory[] = "ctl set_vm_memory_high_watermark 0.6";
  struct Case {
    const char* options;
    const char* before;  // what happens to the broker before the message,
    const char* told;    // what the program says then,
    milliseconds pause;
    int signal;         // what it gets,
    const char* after;  // what happens to the broker in the end,
    int code;           // and how the program ends
  };
  const Case cases[] = {
      {"--heartbeat 1", "freeze", "the broker is silent; trying again", {}, 0, "thaw", 0},
      {"--heartbeat 0 --grace 1", "freeze", "", kSoon, SIGTERM, "thaw", 1},
      {"--heartbeat 0", "freeze", "", kSoon, 0, "kill", 0},
      // It gives signs of life.
      {"--heartbeat 1", kNoMemory, "", kLate, 0, kMemory, 0},
      {"--grace 1", kNoMemory, "", kSoon, SIGTERM, kMemory, 1},
  };
  for (const Case& each : cases) {
    const std::string name = "in" + std::to_string(&each - cases);
    SCOPED_TRACE(name);
    auto [input, output] = pipe();
    const auto feeding = oxrmq("feed - --source f --records rdw --message-bytes 100000000 --declare classic --to /@" +
                                   name + ' ' + each.options,
                               {}, ::fileno(input.get()));
    input.reset();
    ASSERT_TRUE(comes([&] { return hasQueue(name); }));
    broker->command(each.before);
    std::fwrite(records.data(), 1, records.size(), output.get());
    output.reset();
    EXPECT_TRUE(feeding->tells(each.told)) << feeding->messages();
    std::this_thread::sleep_for(each.pause);
    EXPECT_TRUE(feeding->isRunning());
    EXPECT_EQ(feeding->messages().empty(), std::string(each.told).empty()) << feeding->messages();
    if (each.signal != 0) {
      EXPECT_EQ(feeding->end(each.signal), each.code);
      EXPECT_THAT(feeding->messages(), HasSubstr("stopped at byte 0"));
    }
    broker->command(each.after);
    EXPECT_EQ(feeding->wait(), each.code) << feeding->messages();
    if (each.code == 0) {
      EXPECT_TRUE(receive(name, 1).begin()->second.body == records);
    }
  }
}

TEST_F(WithBroker, AnInputThatWaitsHoldsNothingUp) {
  const std::string records = customers(1), arguments = "feed - --source f --declare classic --heartbeat 1 --to /@in ";
  auto [input, output] = pipe();
  const auto feeding = oxrmq(arguments + "--records rdw", {}, ::fileno(input.get()));
  const auto ended = oxrmq(arguments + "--records rdw", {}, ::fileno(input.get()));
  // The first bytes are to tell how the records lie, before there is a connection.
  const auto unbegun =
      oxrmq(arguments + "--records auto --copybook SAMPLES/customers.cob --ccsid 37", {}, ::fileno(input.get()));
  ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  ASSERT_TRUE(comes([&] { return hasQueue("in"); }));
  const auto unopened = oxrmq("feed " + folder_.path("pipe") + " --source f --records rdw --to /@in");
  std::this_thread::sleep_for(kLate);
  for (const auto* const each : {&ended, &unbegun, &unopened}) {
    EXPECT_EQ((*each)->end(SIGTERM), 1);
    EXPECT_THAT((*each)->messages(), HasSubstr("stopped"));
  }
  std::fwrite(records.data(), 1, records.size(), output.get());
  output.reset();
  EXPECT_EQ(feeding->wait(), 0);
  EXPECT_THAT(feeding->messages(), testing::Not(HasSubstr("trying again")));
  EXPECT_EQ(receive("in", 1).begin()->second.body, records);
}

}  // namespace
}  // namespace oxr::mq::test
