#include <amqp_ssl_socket.h>
#include <amqp_tcp_socket.h>

#include <filesystem>
#include <new>

#include "oxrmq/amqp/connection.hpp"

// The way from an address to a connection that is logged in.

namespace oxr::mq {

namespace {

constexpr int kMostChannels = 1;
constexpr int kFrameBytes = 1 << 20;  // the broker may want less

// A file of certificates or a key, which is read at each connection: no pipe, and no device that has no end.
void requireFile(const std::string& path) {
  constexpr std::uintmax_t kMost = std::uintmax_t{4} << 20;
  std::error_code error;
  if (path.empty() || !std::filesystem::exists(path, error)) return;  // told when it is used
  if (!std::filesystem::is_regular_file(path, error)) throw rec::ToolError("cannot use " + path + ": it is no file");
  if (std::filesystem::file_size(path, error) > kMost)
    throw rec::ToolError("cannot use " + path + ": it has more than 4 MiB");
}

// A socket for amqps, with the certificates that are to be used.
amqp_socket_t* encryptedSocket(amqp_connection_state_t state, const ConnectionSettings& settings) {
  amqp_socket_t* const socket = amqp_ssl_socket_new(state);
  if (socket == nullptr) return nullptr;  // unreached: but without memory
  const amqp_boolean_t isVerified = settings.isVerified ? 1 : 0;
  amqp_ssl_socket_set_verify_peer(socket, isVerified);
  amqp_ssl_socket_set_verify_hostname(socket, isVerified);
  amqp_ssl_socket_set_ssl_versions(socket, AMQP_TLSv1_2, AMQP_TLSvLATEST);
  if (settings.isVerified && settings.trusted.empty())
    throw rec::ToolError("amqps needs the certificates to trust: --tls-ca FILE");
  for (const std::string& file : {settings.trusted, settings.certificate, settings.key})
    requireFile(file);
  if (!settings.trusted.empty() && amqp_ssl_socket_set_cacert(socket, settings.trusted.c_str()) != AMQP_STATUS_OK)
    throw rec::ToolError("cannot use the certificates in " + settings.trusted);
  if (!settings.certificate.empty() &&
      amqp_ssl_socket_set_key(socket, settings.certificate.c_str(), settings.key.c_str()) != AMQP_STATUS_OK)
    throw rec::ToolError("cannot use the certificate " + settings.certificate + " with the key " + settings.key);
  return socket;
}

amqp_table_entry_t textEntry(const char* name, std::string_view text) {
  amqp_table_entry_t entry{bytesOf(name), {}};
  entry.value.kind = AMQP_FIELD_KIND_UTF8;
  entry.value.value.bytes = bytesOf(text);
  return entry;
}

// What this side is able to do, which the broker wants to know.
amqp_table_entry_t ability(const char* name) {
  amqp_table_entry_t entry{bytesOf(name), {}};
  entry.value.kind = AMQP_FIELD_KIND_BOOLEAN;
  entry.value.value.boolean = 1;
  return entry;
}

}  // namespace

void Connection::open(const Address& address, const ConnectionSettings& settings) {
  amqp_socket_t* const socket =
      address.isEncrypted ? encryptedSocket(state_.get(), settings) : amqp_tcp_socket_new(state_.get());
  if (socket == nullptr) throw std::bad_alloc();  // unreached: but without memory
  timeval timeout{};
  timeout.tv_sec = settings.timeout.count();
  check(amqp_set_handshake_timeout(state_.get(), &timeout), "setting a time limit");
  const int status = amqp_socket_open_noblock(socket, address.host.c_str(), address.port, &timeout);
  if (status == AMQP_STATUS_SOCKET_ERROR) throw BrokerGone(shown_ + ": nobody answers there");
  check(status, "connecting");
}

void Connection::login(const Address& address, const ConnectionSettings& settings) {
  amqp_table_entry_t abilities[] = {ability("connection.blocked"), ability("consumer_cancel_notify"),
                                    ability("basic.nack"), ability("publisher_confirms"),
                                    ability("authentication_failure_close")};
  amqp_table_entry_t capabilities{bytesOf("capabilities"), {}};
  capabilities.value.kind = AMQP_FIELD_KIND_TABLE;
  capabilities.value.value.table = {static_cast<int>(std::size(abilities)), abilities};
  amqp_table_entry_t entries[] = {textEntry("connection_name", settings.name), capabilities};
  const amqp_table_t properties{static_cast<int>(std::size(entries)), entries};
  const Credentials login = address.credentials.value_or(Credentials{});
  const amqp_rpc_reply_t reply =
      amqp_login_with_properties(state_.get(), address.virtualHost.c_str(), kMostChannels, kFrameBytes,
                                 static_cast<int>(settings.heartbeat.count()), &properties, AMQP_SASL_METHOD_PLAIN,
                                 login.user.c_str(), login.password.c_str());
  check(reply, "logging in");
}

}  // namespace oxr::mq
