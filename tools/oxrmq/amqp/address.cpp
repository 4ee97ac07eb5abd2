#include "oxrmq/amqp/address.hpp"

#include <charconv>
#include <string_view>

#include "records/framing/errors.hpp"
#include "records/smallfile.hpp"

namespace oxr::mq {

namespace {

constexpr std::uint16_t kPlainPort = 5672;
constexpr std::uint16_t kEncryptedPort = 5671;
[[noreturn]] void refuse(const std::string& what) {
  throw rec::ToolError("the broker's address " + what + "; it looks like amqp://user@host:5672/vhost");
}

// "%2F" becomes a slash.
std::string decoded(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    unsigned value = 0;
    const char* const digits = text.data() + at + 1;
    if (text[at] != '%') {
      plain += text[at];
      continue;
    }
    if (text.size() - at < 3 || std::from_chars(digits, digits + 2, value, 16).ptr != digits + 2)
      refuse("has a % without two hexadecimal digits");
    plain += static_cast<char>(value);
    at += 2;
  }
  return plain;
}

std::uint16_t portIn(std::string_view text) {
  std::uint16_t port = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), port);
  if (read.ec != std::errc() || read.ptr != text.data() + text.size() || port == 0) refuse("has no port after the :");
  return port;
}

// "host", "host:port", "[::1]:port".
void readHost(std::string_view text, Address& address) {
  const std::size_t bracket = text.starts_with('[') ? text.find(']') : 0;
  if (bracket == std::string_view::npos) refuse("has a [ without a ]");
  const std::size_t colon = text.find(':', bracket);
  if (colon != std::string_view::npos) address.port = portIn(text.substr(colon + 1));
  const std::string_view name = text.substr(0, colon);
  address.host = decoded(bracket != 0 ? name.substr(1, bracket - 1) : name);
  if (address.host.empty()) refuse("names no host");
}

void readCredentialsIn(std::string_view text, Address& address) {
  const std::size_t colon = text.find(':');
  address.credentials = {decoded(text.substr(0, colon)),
                         colon == std::string_view::npos ? std::string() : decoded(text.substr(colon + 1))};
}

}  // namespace

Address parseAddress(const std::string& url) {
  Address address;
  std::string_view rest = url;
  if (rest.starts_with("amqps://"))
    address.isEncrypted = true;
  else if (!rest.starts_with("amqp://"))
    refuse("begins with neither amqp:// nor amqps://");
  address.port = address.isEncrypted ? kEncryptedPort : kPlainPort;
  rest.remove_prefix(address.isEncrypted ? 8 : 7);
  if (rest.find('?') != std::string_view::npos) refuse("has settings after a ?, which are options of this program");
  const std::size_t slash = rest.find('/');
  const std::string_view authority = rest.substr(0, slash);
  // Else a part of a password that has a slash would be taken for the virtual host, and shown.
  if (slash != std::string_view::npos && rest.find('@', slash) != std::string_view::npos)
    refuse("has an @ after a /: write %2F for a / in a name or a password, and %40 for an @ in a virtual host");
  if (slash != std::string_view::npos && slash + 1 < rest.size()) address.virtualHost = decoded(rest.substr(slash + 1));
  const std::size_t at = authority.rfind('@');
  if (at != std::string_view::npos) readCredentialsIn(authority.substr(0, at), address);
  readHost(at == std::string_view::npos ? authority : authority.substr(at + 1), address);
  return address;
}

std::string shown(const Address& address) {
  const bool isNumeric = address.host.find(':') != std::string::npos;
  return std::string(address.isEncrypted ? "amqps://" : "amqp://") +
         (address.credentials ? address.credentials->user + '@' : "") +
         (isNumeric ? '[' + address.host + ']' : address.host) + ':' + std::to_string(address.port) +
         (address.virtualHost.starts_with('/') ? "" : "/") + address.virtualHost;
}

Credentials parseCredentials(const std::string& text, const std::string& file) {
  const std::string line = text.substr(0, text.find_first_of("\r\n"));
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos || colon == 0) throw rec::ToolError(file + " has no first line USER:PASSWORD");
  return {line.substr(0, colon), line.substr(colon + 1)};
}

Credentials readCredentials(const std::string& path) {
  constexpr std::size_t kMost = std::size_t{64} << 10;
  // The words that belong in the file may stand in the place of its name.
  const bool mayBeSecret = path.find(':') != std::string::npos;
  try {
    return parseCredentials(rec::readSmallFile(path, kMost), path);
  } catch (const rec::SmallFileError& fault) {
    throw rec::ToolError(mayBeSecret ? "cannot read the file of --credentials; its first line is to be USER:PASSWORD"
                                     : "cannot read the credentials in " + path + ": " + fault.what());
  }
}

Target parseTarget(const std::string& text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos)
    throw rec::ToolError(text + " is no EXCHANGE/KEY; /" + text + " is the queue of that name");
  Target target{text.substr(0, slash), text.substr(slash + 1)};
  if (target.exchange.empty() && target.key.empty()) throw rec::ToolError("/ names neither an exchange nor a queue");
  checkName(target.exchange);
  checkName(target.key);
  return target;
}

void checkName(const std::string& name) {
  if (name.size() > kLongestName) throw rec::ToolError("a name of more than 255 bytes: " + name);
}

std::string shown(const Target& target) {
  return target.exchange.empty() ? "queue " + target.key : target.exchange + '/' + target.key;
}

}  // namespace oxr::mq
