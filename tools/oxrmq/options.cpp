#include "oxrmq/options.hpp"

#include <CLI/CLI.hpp>
#include <cstdlib>

#include "records/framing/fileoutput.hpp"
#include "records/options/choice.hpp"

namespace oxr::mq {

namespace {

constexpr char kTopic[] = "Broker";

void addTlsOptions(CLI::App& command, ConnectionSettings& connection) {
  command.add_option("--tls-ca", connection.trusted, "amqps: the certificates to trust, as PEM")
      ->type_name("FILE")
      ->group(kTopic);
  CLI::Option* const certificate =
      command.add_option("--tls-cert", connection.certificate, "amqps: the certificate of this side, as PEM")
          ->type_name("FILE")
          ->group(kTopic);
  CLI::Option* const key =
      command.add_option("--tls-key", connection.key, "amqps: its key, as PEM")->type_name("FILE")->group(kTopic);
  certificate->needs(key);
  key->needs(certificate);
  rec::addChoice<bool>(command, "--tls-verify", connection.isVerified, {{"yes", true}, {"no", false}},
                       "amqps: whether the broker's certificate, and the name in it, are held to --tls-ca [yes]")
      ->group(kTopic);
}

}  // namespace

void addBrokerOptions(CLI::App& command, BrokerOptions& options) {
  command
      .add_option("--url", options.url,
                  "amqp://HOST:PORT/VHOST, or amqps://; may have USER:PASSWORD@ before the host, which other users of "
                  "the machine can then see [OXRMQ_URL in the environment, else amqp://localhost]")
      ->envname("OXRMQ_URL")
      ->type_name("URL")
      ->group(kTopic);
  command
      .add_option("--credentials", options.credentials,
                  "a file whose first line is USER:PASSWORD [OXRMQ_USER and OXRMQ_PASSWORD in the environment]")
      ->type_name("FILE")
      ->group(kTopic);
  addTlsOptions(command, options.connection);
  command
      .add_option_function<unsigned>(
          "--heartbeat", [&options](unsigned seconds) { options.connection.heartbeat = std::chrono::seconds(seconds); },
          "seconds between signs of life; a broker that is silent for twice that long is gone; 0 for never [30]")
      ->check(rec::wholeNumber(0, 3600))
      ->type_name("SECONDS")
      ->group(kTopic);
  command.add_option("--wait", options.wait, "try the first connection for so long [0]")
      ->check(rec::wholeNumber(0, kMostSeconds))
      ->type_name("SECONDS")
      ->group(kTopic);
  command.add_option("--grace", options.grace, "when asked to end, leave after so long, whatever is under way [30]")
      ->check(rec::wholeNumber(0, kMostSeconds))
      ->type_name("SECONDS")
      ->group(kTopic);
  command
      .add_option("--declare", options.declare, "make queues of this type that are missing [queues have to be there]")
      ->check(CLI::IsMember({"classic", "quorum"}))
      ->type_name("classic|quorum")
      ->group(kTopic);
}

void addMetricsOption(CLI::App& command, BrokerOptions& options) {
  command.add_option("--metrics", options.metrics, "a file to keep up to date with counts, as Prometheus text")
      ->type_name("FILE")
      ->group("Output");
}

std::vector<std::string> filesOf(const BrokerOptions& options) {
  const ConnectionSettings& connection = options.connection;
  return {options.credentials, connection.trusted, connection.certificate, connection.key};
}

void refuseInputs(const std::string& output, const std::vector<std::string>& inputs) {
  for (const std::string& input : inputs)
    if (!output.empty() && !input.empty() && rec::FileOutput::isSame(output, input))
      throw rec::OutputError("cannot write " + output + ": it is an input, too");
}

void checkNames(CLI::Option& option) {
  option.check([](const std::string& name) {
    return name.size() <= kLongestName ? std::string() : "is longer than " + std::to_string(kLongestName) + " bytes";
  });
}

void addTargetOption(CLI::App& command, const std::string& name, Target& target, const std::string& help) {
  command
      .add_option_function<std::string>(
          name,
          [&target, name](const std::string& text) {
            try {
              target = parseTarget(text);
            } catch (const rec::ToolError& error) {
              throw CLI::ValidationError(name, error.what());
            }
          },
          help)
      ->required()
      ->type_name("EXCHANGE/KEY")
      ->group("Output");
}

Address addressOf(const BrokerOptions& options) {
  Address address = parseAddress(options.url);
  const char* const user = std::getenv("OXRMQ_USER");
  const char* const password = std::getenv("OXRMQ_PASSWORD");
  if (!options.credentials.empty())
    address.credentials = readCredentials(options.credentials);
  else if ((user != nullptr) != (password != nullptr))
    throw rec::ToolError("OXRMQ_USER and OXRMQ_PASSWORD belong together: the environment has one of them only");
  else if (user != nullptr)
    address.credentials = {user, password};
  else if (!address.credentials)
    address.credentials = {"guest", "guest"};
  return address;
}

}  // namespace oxr::mq
