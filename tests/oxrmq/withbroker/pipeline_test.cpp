// What goes in at one end comes out at the other, whatever happens in between.

#include <amqp_tcp_socket.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <random>

#include "oxrmq/withbroker/fixture.hpp"
#include "oxrmq/withbroker/kills.hpp"

namespace oxr::mq::test {
namespace {

using testing::HasSubstr;

TEST_F(WithBroker, RecordsBecomeTheLinesOfAFileAndRecordsAgain) {
  const std::string bytes = customers(50), path = folder_.write("c.bin", bytes), metrics = folder_.path("metrics");
  EXPECT_EQ(feed(path, "--to /@in --message-records 12")->wait(), 0);
  EXPECT_EQ(feed(path, "--to /@in2 --message-records 3 --source other")->wait(), 0);
  const auto decoding = decode("--from @in2 --consumers 2 --prefetch 5 --metrics " + metrics);
  const auto lines = receive("out", 34 + 134);
  EXPECT_EQ(joined(lines, "c.bin"), linesOf(path));
  EXPECT_EQ(joined(lines, "other"), linesOf(path));
  EXPECT_EQ(doubles_, 0U);
  const auto second = std::find_if(lines.begin(), lines.end(), [](const auto& entry) {
    return entry.first.starts_with("other:") && entry.second.headers.at("oxr-record") == "4";
  });
  ASSERT_NE(second, lines.end());
  // It counts bytes of the records.
  EXPECT_EQ(second->second.headers.count("oxr-offset"), 0U);
  EXPECT_EQ(second->second.headers.at("oxr-file"), "other");
  EXPECT_EQ(second->second.headers.at("oxr-records"), "3");
  EXPECT_EQ(second->second.type, "application/x-ndjson");
  EXPECT_EQ(decoding->end(SIGTERM), 0) << decoding->messages();
  const std::string counts = rec::test::contentOf(metrics);
  EXPECT_THAT(counts, HasSubstr("\noxrmq_records_total 800\n"));
  EXPECT_THAT(counts, HasSubstr("\noxrmq_messages_out_total 168\n"));

  for (const auto& [id, message] : lines)
    publish("lines", id, message.body, message.type);
  const auto encoding = consume("encode", "lines", "back", "");
  const auto back = receive("back", lines.size());
  EXPECT_EQ(joined(back, "c.bin"), bytes);
  EXPECT_EQ(joined(back, "other"), bytes);
  EXPECT_EQ(encoding->end(SIGTERM), 0) << encoding->messages();
}

TEST_F(WithBroker, AnotherFileOfTheSameNameHasOtherIds) {
  std::string bytes = customers(50);
  const std::string path = folder_.write("c.bin", bytes), state = folder_.path("state");
  const std::string arguments = "--to /@in --message-records 100 --resume " + state;
  ASSERT_EQ(feed(path, arguments)->wait(), 0);
  // It differs in the last message only.
  const auto time = std::filesystem::last_write_time(path);
  bytes.back() = static_cast<char>(bytes.back() ^ 1);
  folder_.write("c.bin", bytes);
  std::filesystem::last_write_time(path, time);
  std::filesystem::remove(state);
  ASSERT_EQ(feed(path, arguments)->wait(), 0);
  EXPECT_EQ(receive("in", 5).size(), 5U);
  // Or not even in that, but it is not the one that was fed.
  std::filesystem::last_write_time(path, time + seconds(1));
  const auto again = feed(path, arguments);
  EXPECT_EQ(again->wait(), 2);
  EXPECT_THAT(again->messages(), HasSubstr("the file has changed since"));
  ASSERT_EQ(feed(path, "--to /@in --message-records 100")->wait(), 0);
  EXPECT_EQ(receive("in", 4).size(), 4U);
  // A part of the file is not more than that when it is gone on with.
  for (const char* const sent : {"1 messages with 8 records sent", "0 messages with 0 records sent"}) {
    const auto part = feed(path, "--to /@in --range 1350-2700 --resume " + folder_.path("part"));
    EXPECT_EQ(part->wait(), 0);
    EXPECT_THAT(part->messages(), HasSubstr(sent));
  }
}

// What the broker tells of a queue.
class QueueCounts {
 public:
  explicit QueueCounts(const Address& address) {
    amqp_socket_t* const socket = amqp_tcp_socket_new(state_.get());
    if (amqp_socket_open(socket, address.host.c_str(), address.port) != AMQP_STATUS_OK ||
        amqp_login(state_.get(), "/", 1, 131072, 0, AMQP_SASL_METHOD_PLAIN, "guest", "guest").reply_type !=
            AMQP_RESPONSE_NORMAL ||
        amqp_channel_open(state_.get(), 1) == nullptr)
      throw std::runtime_error("no connection");
  }
  // Messages that wait, and consumers.
  std::pair<unsigned, unsigned> of(const std::string& queue) {
    const auto* const told = amqp_queue_declare(state_.get(), 1, bytesOf(queue), 1, 0, 0, 0, amqp_empty_table);
    if (told == nullptr) throw std::runtime_error("no queue " + queue);
    return {told->message_count, told->consumer_count};
  }

 private:
  struct Release {
    void operator()(amqp_connection_state_t state) const { amqp_destroy_connection(state); }
  };
  const std::unique_ptr<std::remove_pointer_t<amqp_connection_state_t>, Release> state_{amqp_new_connection()};
};

TEST_F(WithBroker, NothingIsLostWhenConsumersAreKilled) {
  const std::string path = folder_.write("c.bin", customers(800));
  std::mt19937 random(20261122);
  const auto oneOf = [&](int most) { return milliseconds(std::uniform_int_distribution<>(1, most)(random)); };
  QueueCounts counts(address());
  int killed = 0, files = 0;
  while (killed < kills) {
    ASSERT_LT(files, kills);
    const std::string file = "f" + std::to_string(++files);
    ASSERT_EQ(feed(path, "--to /@in --message-records 1 --window 1000 --source " + file)->wait(), 0);
    while (killed < kills) {
      const auto first = decode("--prefetch 20"), second = decode("--prefetch 20");
      ASSERT_TRUE(comes([&] { return counts.of(queue("in")).second == 2; }));
      std::this_thread::sleep_for(oneOf(20));
      // Where messages wait, consumers have others in hand.
      if (counts.of(queue("in")).first == 0) break;
      EXPECT_EQ(first->end(SIGKILL), -SIGKILL) << first->messages();
      ++killed;
    }
    const auto last = decode();
    const auto lines = receive("out", 6400, file + ':');
    ASSERT_TRUE(joined(lines, file) == linesOf(path)) << lines.size();
    EXPECT_EQ(last->end(SIGTERM), 0);
  }
  // Something was published, and not acknowledged yet, when its consumer was killed.
  EXPECT_GT(doubles_, 0U);
  std::cout << killed << " kills with " << files << " files: " << doubles_ << " doubles\n";
}

TEST_F(WithBroker, AConsumerThatIsAskedToEndLeavesNothingHalfDone) {
  constexpr unsigned kMessages = 4000;
  const std::string bytes = customers(kMessages / 8), lines = linesOf(folder_.write("c.bin", bytes));
  ASSERT_EQ(oxrmq("feed " + folder_.write("c", lines) +
                  " --records lines --ccsid 819 --message-records 1 --window 1000 "
                  "--to /@lines --declare classic --type application/x-ndjson")
                ->wait(),
            0);
  QueueCounts counts(address());
  Connection(address(), {}).declareQueue(queue("back"), "classic");
  const auto comesBack = [&](unsigned more) {
    const unsigned before = counts.of(queue("back")).first;
    return comes([&] { return counts.of(queue("back")).first > before + more; });
  };
  const auto ended = consume("encode", "lines", "back", "");
  EXPECT_TRUE(comesBack(5));
  EXPECT_EQ(ended->end(SIGTERM), 0) << ended->messages();
  EXPECT_TRUE(comes([&] { return counts.of(queue("lines")).first + counts.of(queue("back")).first == kMessages; }));
  EXPECT_LT(counts.of(queue("back")).first, kMessages);
  const auto killed = consume("encode", "lines", "back", ""), last = consume("encode", "lines", "back", "");
  EXPECT_TRUE(comesBack(5));
  killed->end(SIGKILL);
  EXPECT_EQ(joined(receive("back", kMessages), "c"), bytes);
  EXPECT_EQ(last->end(SIGTERM), 0) << last->messages();
}

TEST_F(WithBroker, AFeedThatIsKilledGoesOnWhereItWas) {
  const std::string path = folder_.write("c.bin", customers(2000)), state = folder_.path("state");
  const std::string arguments = "--to /@in --message-records 2 --window 20 --resume " + state;
  int code = -SIGKILL, stopped = 0;
  for (int i = 0; code != 0; ++i) {
    ASSERT_LT(i, 200);
    const auto feeding = feed(path, arguments);
    std::this_thread::sleep_for(milliseconds(60 + 5 * i));
    code = feeding->end(i % 2 == 0 ? SIGTERM : SIGKILL);
    if (code == 1) ++stopped;
    // It may not have begun yet when the signal comes.
    EXPECT_TRUE(code == 0 || code == 1 || code == -SIGKILL || (code == -SIGTERM && feeding->messages().empty()))
        << code << feeding->messages();
  }
  EXPECT_GT(stopped, 0);
  const auto fed = receive("in", 8000);
  EXPECT_EQ(joined(fed, "c.bin"), customers(2000));
  const auto again = feed(path, arguments);
  EXPECT_EQ(again->wait(), 0);
  EXPECT_THAT(again->messages(), HasSubstr("0 messages"));
}

TEST_F(WithBroker, NothingIsLostWhenTheBrokerGoesAway) {
  const std::string path = folder_.write("c.bin", customers(3000));
  const std::string encrypted = "--tls-ca " + broker->trusted() + " --url " + broker->encryptedUrl("localhost");
  const auto decoding = decode("--consumers 2"), encoding = consume("encode", "out", "back", encrypted);
  const auto feeding = feed(path, "--to /@in --message-records 3");
  std::this_thread::sleep_for(milliseconds(300));
  broker->command("restart");
  EXPECT_EQ(feeding->wait(), 0) << feeding->messages();
  const auto back = receive("back", 8000);
  EXPECT_EQ(joined(back, "c.bin"), customers(3000));
  EXPECT_THAT(decoding->messages(), HasSubstr("trying again in 0."));
  EXPECT_EQ(decoding->end(SIGTERM), 0) << decoding->messages();
  EXPECT_EQ(encoding->end(SIGTERM), 0) << encoding->messages();
}

TEST_F(WithBroker, WhatIsTakenIsThereOnceAfterALostConnectionToo) {
  for (const char* const id : {"a", "b", "a"})
    publish("in", id, id);
  for (const char* const id : {"a", "", ""})
    publish("nameless", id, "x");
  const std::string path = folder_.path("taken");
  const auto taking = oxrmq("take --idle 2 --from @in -o " + path), failing = oxrmq("take --idle 9 --from @nameless");
  {
    QueueCounts counts(address());
    for (const char* const name : {"in", "nameless"})
      ASSERT_TRUE(comes([&] { return counts.of(queue(name)) == std::pair(0U, 1U); }));
  }
  broker->command("ctl close_all_connections test");
  EXPECT_EQ(taking->wait(), 0) << taking->messages();
  // However much of them it had taken when the connection went.
  EXPECT_THAT(taking->messages(),
              testing::ContainsRegex("2 messages taken from queue " + queue("in") + ", [1-4] doubles dropped"));
  EXPECT_EQ(rec::test::contentOf(path), "ab");
  EXPECT_EQ(failing->wait(), 2);
  EXPECT_THAT(failing->messages(), HasSubstr("would be written twice; the messages are still in queue"));
  QueueCounts counts(address());
  EXPECT_EQ(counts.of(queue("in")).first, 0U);
  EXPECT_EQ(counts.of(queue("nameless")).first, 3U);
}

TEST_F(WithBroker, WhatNeverComesIsWaitedForUntilTheEndIsAskedFor) {
  struct Case {
    const char* command;
    const char* told;
    int code;
  };
  const Case cases[] = {
      {"take --from q", "stopped before the broker was there again; the messages are still in queue q", 2},
      {"feed SAMPLES/customers.rdw.bin --records rdw --to /q", "stopped at byte 0 of the file", 1},
      {"decode --from q --to /q --errors /q --copybook SAMPLES/customers.cob --ccsid 37", "0 messages with 0", 0},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.command);
    // A signal that is ignored when the program starts stays so.
    const auto program =
        oxrmq(each.command + std::string(" --wait 999 --url amqp://127.0.0.1:1"), "env --ignore-signal=INT");
    EXPECT_TRUE(program->tells("trying again in 0."));
    program->send(SIGINT);
    EXPECT_TRUE(comes([&] {
      const std::string told = program->messages();
      return std::count(told.begin(), told.end(), '\n') > 3;
    }));
    EXPECT_EQ(program->end(SIGTERM), each.code);
    EXPECT_THAT(program->messages(), HasSubstr(each.told));
  }
  Connection(address(), {}).declareQueue(queue("empty"), "classic");
  const auto taking = oxrmq("take --idle 99 --from @empty");
  QueueCounts counts(address());
  EXPECT_TRUE(comes([&] { return counts.of(queue("empty")).second == 1; }));
  EXPECT_EQ(taking->end(SIGINT), 0);
  EXPECT_THAT(taking->messages(), HasSubstr("0 messages taken"));
}

TEST_F(WithBroker, AQueueThatIsRemovedIsMadeAgain) {
  publish("in", "f:0", customers(1));
  const auto decoding = decode();
  EXPECT_EQ(receive("out", 1).size(), 1U);
  broker->command("ctl delete_queue " + queue("in"));
  EXPECT_TRUE(decoding->tells("queue " + queue("in") + " gives no more messages; trying again in 0."));
  publish("in", "f:1", customers(1));
  EXPECT_EQ(receive("out", 1).count("f:1"), 1U);
  EXPECT_EQ(decoding->end(SIGTERM), 0) << decoding->messages();
}

TEST_F(WithBroker, AFullQueueOnlyDelays) {
  const std::string path = folder_.write("c.bin", customers(20));
  for (const char* const name : {"out", "full"})
    Connection(address(), {}).declareQueue(queue(name), "classic", 5);
  const auto feeding = feed(path, "--to /@full --message-records 1");
  const auto decoding = oxrmq(
      "decode --from @in --to /@out --errors /@in2 --copybook SAMPLES/customers.cob --ccsid 37 --records rdw --wait "
      "10");
  EXPECT_EQ(decoding->wait(), 2);  // there is no queue to take from yet
  ASSERT_EQ(feed(path, "--to /@in --message-records 1")->wait(), 0);
  ASSERT_EQ(feed(path, "--to /@in2 --message-records 8")->wait(), 0);
  // A queue that is there may be of another kind than the ones that are made.
  const auto again = oxrmq(
      "decode --from @in --to /@out --errors /@in2 --copybook SAMPLES/customers.cob --ccsid 37 --records rdw "
      "--declare quorum");
  EXPECT_TRUE(again->tells("takes no message")) << again->messages();
  std::map<std::string, Received> lines;
  while (lines.size() < 160) {
    Connection connection(address(), {});
    connection.consume(queue("out"), 2);
    while (const std::optional<Event> event = connection.next(seconds(1))) {
      const auto& delivery = std::get<Delivery>(*event);
      lines.emplace(messageIdOf(delivery.message.properties()), receivedOf(delivery.message));
      connection.acknowledge(delivery.tag, true);
      if (lines.size() == 160) break;
    }
  }
  EXPECT_EQ(joined(lines, "c.bin"), linesOf(path));
  EXPECT_EQ(again->end(SIGTERM), 0) << again->messages();
  EXPECT_TRUE(feeding->tells("takes no message for queue " + queue("full"))) << feeding->messages();
  EXPECT_EQ(joined(receive("full", 160), "c.bin"), customers(20));
  EXPECT_EQ(feeding->wait(), 0);
}

TEST_F(WithBroker, ABrokerWithoutMemoryOnlyDelays) {
  const std::string path = folder_.write("c.bin", customers(50));
  ASSERT_EQ(feed(path, "--to /@in --message-records 2")->wait(), 0);
  broker->command("ctl set_vm_memory_high_watermark 0");
  const auto decoding = decode();
  const auto feeding = feed(path, "--to /@in --message-records 2 --source later");
  EXPECT_TRUE(decoding->tells("asks for a pause")) << decoding->messages();
  EXPECT_TRUE(feeding->tells("asks for a pause")) << feeding->messages();
  broker->command("ctl set_vm_memory_high_watermark 0.6");
  EXPECT_EQ(feeding->wait(), 0) << feeding->messages();
  const auto lines = receive("out", 400);
  EXPECT_EQ(joined(lines, "c.bin"), linesOf(path));
  EXPECT_EQ(joined(lines, "later"), linesOf(path));
  EXPECT_EQ(decoding->end(SIGTERM), 0) << decoding->messages();
}

}  // namespace
}  // namespace oxr::mq::test
