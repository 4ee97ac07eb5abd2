#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <variant>

#include "oxrmq/amqp/connection.hpp"
#include "oxrmq/withbroker/processes.hpp"

namespace oxr::mq::test {

// The broker of all tests; main() has it.
inline Broker* broker = nullptr;

// A message as a receiver has it.
struct Received {
  std::string body;
  std::string type;
  std::map<std::string, std::string> headers;  // numbers as text
};

inline Received receivedOf(const Message& message) {
  const auto body = message.body();
  const amqp_basic_properties_t& properties = message.properties();
  Received received{{body.begin(), body.end()}, std::string(contentTypeOf(properties)), {}};
  if ((properties._flags & AMQP_BASIC_HEADERS_FLAG) == 0) return received;
  for (int i = 0; i < properties.headers.num_entries; ++i) {
    const std::string name(textOf(properties.headers.entries[i].key));
    if (const auto text = textHeader(properties, name)) received.headers[name] = *text;
    if (const auto number = integerHeader(properties, name)) received.headers[name] = std::to_string(*number);
  }
  return received;
}

// Each test has queues of its own, which begin with its name.
class WithBroker : public testing::Test {
 protected:
  std::string queue(const std::string& name) const {
    return std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + '.' + name;
  }
  // oxrmq with words in which "@NAME" stands for a queue, and SAMPLES for the folder of samples.
  std::unique_ptr<Process> oxrmq(const std::string& command, const std::string& before = {}, int input = -1) const {
    std::vector<std::string> words = wordsOf(before);
    words.push_back(OXRMQ_PROGRAM);
    for (std::string word : wordsOf(command)) {
      if (const std::size_t at = word.find('@'); at != std::string::npos && word.find("://") == std::string::npos)
        word = word.substr(0, at) + queue(word.substr(at + 1));
      words.push_back(rec::test::replaced(word, "SAMPLES", OXR_SAMPLES_DIR));
    }
    if (command.find("://") == std::string::npos) words.insert(words.end(), {"--url", broker->url()});
    return std::make_unique<Process>(words, input);
  }
  std::unique_ptr<Process> feed(const std::string& path, const std::string& more = "--to /@in") const {
    return oxrmq("feed --records rdw --declare classic " + path + ' ' + more);
  }
  std::unique_ptr<Process> decode(const std::string& more = {}, const std::string& before = {}) const {
    return consume("decode", "in", "out", more, before);
  }
  std::unique_ptr<Process> consume(const std::string& command, const std::string& from, const std::string& to,
                                   const std::string& more, const std::string& before = {}) const {
    return oxrmq(command + " --from @" + from + " --to /@" + to +
                     " --errors /@bad --declare classic --copybook SAMPLES/customers.cob --ccsid 37 --records rdw " +
                     more,
                 before);
  }

  // So many messages of different ids, by id; those that come more often count as doubles. Fewer if no more come. Only
  // those of the file, if one is named: doubles of an earlier one may still come.
  std::map<std::string, Received> receive(const std::string& name, std::size_t count, const std::string& file = {}) {
    Connection connection(address(), {});
    connection.declareQueue(queue(name), "classic");
    connection.consume(queue(name), 500);
    std::map<std::string, Received> all;
    const auto end = std::chrono::steady_clock::now() + seconds(60);
    while (all.size() < count && std::chrono::steady_clock::now() < end) {
      std::optional<Event> event = connection.next(milliseconds(100));
      if (!event) continue;
      const auto& delivery = std::get<Delivery>(*event);
      const std::string id(messageIdOf(delivery.message.properties()));
      if (id.starts_with(file) && !all.emplace(id, receivedOf(delivery.message)).second) ++doubles_;
      connection.acknowledge(delivery.tag, true);
    }
    connection.close();
    return all;
  }
  void publish(const std::string& name, const std::string& id, std::string_view body, std::string_view type = {},
               const std::map<std::string, std::variant<std::string, std::int64_t>>& headers = {},
               std::string_view encoding = {}) {
    Connection connection(address(), {});
    connection.declareQueue(queue(name), "classic");
    Properties properties;
    properties.setMessageId(id);
    if (!type.empty()) properties.setContentType(type);
    for (const auto& [header, value] : headers)
      std::visit([&name = header, &properties](const auto& given) { properties.setHeader(name.c_str(), given); },
                 value);
    amqp_basic_properties_t raw = properties.raw();
    if (!encoding.empty()) raw._flags |= AMQP_BASIC_CONTENT_ENCODING_FLAG;
    raw.content_encoding = bytesOf(encoding);
    Properties all(raw);
    connection.publish({"", queue(name)}, all, body);
    while (true)
      if (const std::optional<Event> event = connection.next(seconds(10))) break;
    connection.close();
  }
  bool hasQueue(const std::string& name) {
    try {
      Connection(address(), {}).requireQueue(queue(name));
      return true;
    } catch (const BrokerRefused&) {
      return false;
    }
  }
  static Address address() {
    Address address = parseAddress(broker->url());
    address.credentials = {"guest", "guest"};
    return address;
  }

  // The customers, so many times over.
  std::string customers(int times) const {
    const std::string once = rec::test::contentOf(OXR_SAMPLES_DIR "/customers.rdw.bin");
    std::string all;
    for (int i = 0; i < times; ++i)
      all += once;
    return all;
  }
  static std::string linesOf(const std::string& path) {
    return rec::test::runProgram("decode --copybook " OXR_SAMPLES_DIR "/customers.cob --ccsid 37 --records rdw " + path)
        .lines;
  }
  // The bodies of a file's messages, in the order of the file.
  static std::string joined(const std::map<std::string, Received>& messages, const std::string& file) {
    std::map<long, std::string_view> byOffset;
    for (const auto& [id, message] : messages)
      if (id.starts_with(file + ':')) byOffset[std::stol(id.substr(file.size() + 1))] = message.body;
    std::string all;
    for (const auto& [offset, body] : byOffset)
      all += body;
    return all;
  }

  const Folder folder_;
  std::size_t doubles_ = 0;
};

}  // namespace oxr::mq::test
