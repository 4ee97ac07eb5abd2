// Messages that cannot be converted, and a broker that refuses.

#include "oxrmq/withbroker/fixture.hpp"

namespace oxr::mq::test {
namespace {

using testing::HasSubstr;
using testing::Pair;

constexpr std::size_t kLongest = 134217728;  // that the broker takes

TEST_F(WithBroker, BadMessagesGoToTheErrorsWhole) {
  std::string bad = customers(1);
  bad[4 + 106] = static_cast<char>(0xA0);
  const std::string path = folder_.write("c.bin", customers(3) + bad + customers(3));
  ASSERT_EQ(feed(path, "--to /@in --message-records 8")->wait(), 0);
  const std::string types = std::string("application/octet-stream");
  publish("in", "empty", "", types, {{"oxr-fault", "old"}, {"oxr-fault-path", "OLD"}, {"mine", "x"}});
  publish("in", "none", "This is no record file.", types);
  publish("in", "picture", customers(1), "image/png");
  publish("in", "packed", customers(1), types, {}, "gzip");
  // What tells of a place in a file, and cannot.
  publish("in", "placeless", bad, types, {{"oxr-record", std::int64_t{0}}, {"oxr-offset", std::int64_t{-1}}});
  publish("in", "long", std::string(kLongest, '\0'), types);
  // All but 10 bytes of what goes in a frame.
  publish("in", "crowded", customers(1), types, {{"mine", std::string(131072 - 20 - 50 - 10, 'x')}});
  const auto decoding = decode("--prefetch 3");
  const auto errors = receive("bad", 8);

  EXPECT_EQ(receive("out", 6).size(), 6U);
  EXPECT_EQ(decoding->end(SIGTERM), 1) << decoding->messages();

  struct Case {
    const char* id;
    std::string body;
    const char* reason;
  };
  const Case cases[] = {
      {"c.bin:4050:", bad, "packed decimal"},
      {"empty", "", "the message is empty"},
      {"none", "This is no record file.", "record 1 at byte 0"},
      {"picture", customers(1), "image/png"},
      {"packed", customers(1), "content encoding gzip"},
      {"placeless", bad, "packed decimal"},
      {"crowded", customers(1), "the message has headers that leave no room"},
      {"long", std::string(kLongest, '\0'), "record 1 at byte 0"},
  };
  for (const Case& expected : cases) {
    SCOPED_TRACE(expected.id);
    const auto found = errors.lower_bound(expected.id);
    ASSERT_TRUE(found != errors.end() && found->first.starts_with(expected.id));
    const Received& message = found->second;
    EXPECT_TRUE(message.body == expected.body);
    EXPECT_THAT(message.headers.at("oxr-fault"), HasSubstr(expected.reason));
    EXPECT_EQ(message.headers.at("oxr-fault-queue"), queue("in"));
  }
  EXPECT_THAT(errors.at("empty").headers,
              testing::UnorderedElementsAre(Pair("oxr-fault", "the message is empty"),
                                            Pair("oxr-fault-queue", queue("in")), Pair("mine", "x")));
  EXPECT_EQ(errors.at("crowded").headers.count("mine"), 0U);
  EXPECT_THAT(errors.at("crowded").headers.at("oxr-fault-headers"), HasSubstr("left out"));
  std::map<std::string, std::string> headers = errors.lower_bound("c.bin:4050:")->second.headers;
  EXPECT_EQ(headers["oxr-fault-record"], "25");
  EXPECT_EQ(headers["oxr-fault-path"], "MOVEMENT(1).AMOUNT");
  EXPECT_EQ(headers["oxr-fault-byte"], "4159");
  EXPECT_THAT(headers["oxr-fault-number"], testing::MatchesRegex("[0-9]+"));
  headers = errors.at("placeless").headers;
  EXPECT_EQ(headers["oxr-fault-record"], "1");
  EXPECT_EQ(headers["oxr-fault-byte"], "109");
}

TEST_F(WithBroker, AResultThatTheBrokerDoesNotTakeIsNamed) {
  publish("in", "small", customers(1));
  publish("in", "large", customers(20));
  publish("nameless", "", customers(20));
  broker->command("ctl eval 'application:set_env(rabbit, max_message_size, 40000).'");
  const auto refused = decode();
  EXPECT_EQ(refused->wait(), 2);
  EXPECT_THAT(refused->messages(), HasSubstr("message large of queue " + queue("in") + ", and --max-message"));
  const auto nameless = consume("decode", "nameless", "out", "");
  EXPECT_EQ(nameless->wait(), 2);
  EXPECT_THAT(nameless->messages(), HasSubstr("message without an id of queue " + queue("nameless") + ", and"));
  const auto decoding = decode("--max-message 40000 --idle 0");
  EXPECT_EQ(decoding->wait(), 1);
  broker->command("ctl eval 'application:set_env(rabbit, max_message_size, 134217728).'");
  EXPECT_EQ(receive("out", 1).count("small") + receive("bad", 1).count("large"), 2U);
}

TEST_F(WithBroker, BadFieldsMayBeNullAndBadLinesLeftOut) {
  std::string bad = customers(1);
  bad[4 + 106] = static_cast<char>(0xA0);
  publish("in", "f:0", bad, {}, {{"oxr-fault", "mended since"}, {"oxr-fault-path", "OLD"}});
  const auto decoding = decode("--on-error null");
  const auto lines = receive("out", 1);
  EXPECT_THAT(lines.at("f:0").body, HasSubstr("null"));
  EXPECT_THAT(lines.at("f:0").headers, testing::ElementsAre(Pair("oxr-records", "8")));
  EXPECT_EQ(decoding->end(SIGTERM), 1);
  publish("lines", "f:1", "{\"x\":1}\n");  // nothing is left of it
  publish("lines", "f:0", linesOf(folder_.write("c", customers(1))) + "{\"x\":1}\n", "application/json");
  const auto skipping = consume("encode", "lines", "back", "--on-error skip");
  EXPECT_EQ(receive("back", 1).at("f:0").body, customers(1));
  EXPECT_EQ(skipping->end(SIGTERM), 1);
  EXPECT_THAT(skipping->messages(), HasSubstr("1 messages with 8 records converted, 0 sent to"));
  EXPECT_THAT(skipping->messages(), HasSubstr(", 2 records left out, among them all those of 1 messages"));
  publish("lines", "f:0", linesOf(folder_.path("c")) + "{\"x\":1}\n");
  const auto encoding = consume("encode", "lines", "back", "");
  EXPECT_THAT(receive("bad", 1).at("f:0").headers.at("oxr-fault"), HasSubstr("line 9, "));
}

TEST_F(WithBroker, AMessageThatMemoryDoesNotHoldGoesBackAndHoldsNothingUp) {
  const std::string limit = "prlimit --as=100000000";
  publish("in", "bytes", std::string(50'000'000, '\0'));
  publish("in", "lines", customers(11000));  // 15 MB, which become 33
  const std::string path = folder_.write("c.bin", customers(20));
  ASSERT_EQ(feed(path, "--to /@in --message-records 4")->wait(), 0);
  const auto decoding = decode("--prefetch 3", limit);
  EXPECT_EQ(joined(receive("out", 40), "c.bin"), linesOf(path));
  EXPECT_TRUE(decoding->tells("out of memory; a message of 50000000 bytes goes back")) << decoding->messages();
  EXPECT_TRUE(decoding->tells("out of memory; a message of 14850000 bytes goes back")) << decoding->messages();
  EXPECT_EQ(decoding->end(SIGTERM), 0) << decoding->messages();
  const auto taking = oxrmq("take --from @in", limit);
  EXPECT_EQ(taking->wait(), 2);
  EXPECT_THAT(taking->messages(),
              HasSubstr("out of memory for a message of 50000000 bytes; the messages are still in"));
  EXPECT_EQ(receive("in", 2).size(), 2U);
}

TEST_F(WithBroker, ARefusalIsToldInOneMessage) {
  const std::string plain = broker->url(), at = plain.substr(plain.find("://") + 3);
  const std::string encrypted = broker->encryptedUrl("localhost"), byNumber = broker->encryptedUrl("127.0.0.1");
  const std::string login = folder_.write("login", "nobody:secret\n"), good = folder_.write("good", "guest:guest\n");
  const std::string state = folder_.write("state", "something\n");
  Connection(address(), {}).declareQueue("refusals", "classic");
  struct Case {
    std::string arguments;  // after those for all
    int code;
    const char* message;
  };
  const Case cases[] = {
      {"feed SAMPLES/customers.rdw.bin --to /refusals --url " + plain, 0, "1 messages with 8 records sent"},
      {"feed SAMPLES/customers.rdw.bin --to /missing --url " + plain, 2, "queue missing: NOT_FOUND"},
      {"feed SAMPLES/customers.rdw.bin --to missing/key --url " + plain, 2, "exchange missing: NOT_FOUND"},
      {"feed SAMPLES/customers.rdw.bin --to amq.direct/key --url " + plain, 2, "amq.direct/key leads to no queue"},
      {"feed SAMPLES/customers.rdw.bin --to key --url " + plain, 2, "/key is the queue of that name"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --url amqp://nobody:secret@" + at, 2, "Login was refused"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --credentials " + login + " --url " + plain, 2,
       "Login was refused"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --url amqp://127.0.0.1:1", 2, "nobody answers there"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --url " + plain + "/none", 2, "vhost none not found"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --resume " + state + " --url " + plain, 2, "is no state"},
      {"feed SAMPLES/customers.cob --to /refusals --url " + plain, 2, "customers.cob: record 1 at byte 0"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --url " + encrypted, 2, "--tls-ca"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --credentials " + good + " --tls-ca " + broker->trusted() +
           " --url " + encrypted,
       0, "1 messages with 8 records sent"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --tls-ca " + broker->trusted() + " --url " + byNumber, 2,
       "hostname verification failed"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --wait 9 --url " + encrypted + " --tls-ca " +
           rec::test::replaced(broker->trusted(), "ca.pem", "stranger.pem"),
       2, "peer cert verification failed"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --wait 9 --url " + plain + '/' + std::string(300, 'v'), 2,
       ": logging in: "},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --tls-verify no --url " + byNumber, 0, "8 records sent"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --tls-ca " + broker->trusted() + ' ' +
           broker->certificate("client") + " --url " + encrypted,
       0, "8 records sent"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --tls-ca " + broker->trusted() + ' ' +
           broker->certificate("stranger") + " --url " + encrypted,
       2, "logging in"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals --tls-ca " + broker->trusted() + " --tls-key x --tls-cert " +
           broker->trusted() + " --url " + encrypted,
       2, "cannot use the certificate"},
      {"feed SAMPLES/customers.rdw.bin --to /refusals.quorum --declare quorum --url " + plain, 0, "8 records sent"},
      {"decode --from refusals.quorum --to /refusals --errors /refusals --idle 0 --copybook SAMPLES/customers.cob "
       "--ccsid "
       "37 --tls-ca " +
           broker->trusted() + " --url " + encrypted,
       0, "1 messages with 8 records converted"},
      {"decode --from missing --to /refusals --errors /refusals --copybook SAMPLES/customers.cob --ccsid 37 --url " +
           plain,
       2, "queue missing: NOT_FOUND"},
      {"decode --from refusals --to /missing --errors /refusals --copybook SAMPLES/customers.cob --ccsid 37 --url " +
           plain,
       2, "queue missing: NOT_FOUND"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.arguments);
    const auto program = oxrmq(each.arguments + " --records rdw");
    EXPECT_EQ(program->wait(), each.code);
    EXPECT_THAT(program->messages(), HasSubstr(each.message));
    EXPECT_THAT(program->messages(), testing::Not(testing::ContainsRegex("secret|trying again")));
  }
}

}  // namespace
}  // namespace oxr::mq::test
