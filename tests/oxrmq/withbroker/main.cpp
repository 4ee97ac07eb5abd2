#include <cstring>

#include "oxrmq/withbroker/fixture.hpp"
#include "oxrmq/withbroker/kills.hpp"

// usage: oxrmq_broker_tests [--kills N] [options of GoogleTest]
int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  std::signal(SIGPIPE, SIG_IGN);
  for (int i = 1; i + 1 < count; ++i)
    if (std::strcmp(arguments[i], "--kills") == 0) oxr::mq::test::kills = std::stoi(arguments[i + 1]);
  oxr::mq::test::Broker started;
  oxr::mq::test::broker = &started;
  return RUN_ALL_TESTS();
}
