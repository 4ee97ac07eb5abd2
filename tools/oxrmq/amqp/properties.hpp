#pragma once

#include <amqp.h>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace oxr::mq {

inline std::string_view textOf(const amqp_bytes_t& bytes) {
  return {static_cast<const char*>(bytes.bytes), bytes.len};
}
// Borrows the text; the client library does not write to it.
amqp_bytes_t bytesOf(std::string_view text);

// Of a message that came in: empty, or nothing, for what it does not have.
std::string_view contentTypeOf(const amqp_basic_properties_t& properties);
std::string_view contentEncodingOf(const amqp_basic_properties_t& properties);
std::string_view messageIdOf(const amqp_basic_properties_t& properties);
std::optional<std::int64_t> integerHeader(const amqp_basic_properties_t& properties, std::string_view name);
std::optional<std::string_view> textHeader(const amqp_basic_properties_t& properties, std::string_view name);

// The headers that tell which part of a record file a message is.
inline constexpr char kFileHeader[] = "oxr-file";
inline constexpr char kRecordHeader[] = "oxr-record";  // number of the first one, from 1
inline constexpr char kOffsetHeader[] = "oxr-offset";  // bytes of the file before it
inline constexpr char kCountHeader[] = "oxr-records";

// What describes a message that is to be published: persistent, and with what the message says that it is made of.
class Properties {
 public:
  Properties();
  // With all that `original` has, which must outlive the object, but for the name of its user, which the broker would
  // hold to the login, and for the headers that would send copies to other queues.
  explicit Properties(const amqp_basic_properties_t& original);
  Properties(Properties&&) = default;
  Properties& operator=(Properties&&) = delete;

  void setContentType(std::string_view type) { setText(AMQP_BASIC_CONTENT_TYPE_FLAG, raw_.content_type, type); }
  void setMessageId(std::string_view id) { setText(AMQP_BASIC_MESSAGE_ID_FLAG, raw_.message_id, id); }
  // The message stays until somebody takes it.
  void dropExpiration() { raw_._flags &= ~static_cast<amqp_flags_t>(AMQP_BASIC_EXPIRATION_FLAG); }
  // Drops the headers whose name begins so.
  void dropHeaders(std::string_view prefix);
  // Drops all others.
  void dropHeadersBut(std::string_view prefix);
  // In the place of a header of this name, or after the others. `name` is a literal.
  void setHeader(const char* name, std::int64_t value);
  void setHeader(const char* name, std::string_view value);

  // For the client library, until the object changes.
  const amqp_basic_properties_t& raw();

 private:
  void setText(amqp_flags_t flag, amqp_bytes_t& field, std::string_view text);
  amqp_bytes_t kept(std::string_view text);
  amqp_field_value_t& header(const char* name);

  amqp_basic_properties_t raw_{};
  std::deque<std::string> texts_;  // that raw_ and the headers point into
  std::vector<amqp_table_entry_t> headers_;
};

}  // namespace oxr::mq
