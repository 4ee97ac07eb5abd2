#include "oxrmq/amqp/properties.hpp"

#include <algorithm>

namespace oxr::mq {

namespace {

constexpr std::uint8_t kPersistent = 2;

std::string_view textIf(const amqp_basic_properties_t& properties, amqp_flags_t flag, const amqp_bytes_t& bytes) {
  return (properties._flags & flag) != 0 ? textOf(bytes) : std::string_view();
}

const amqp_field_value_t* headerIn(const amqp_basic_properties_t& properties, std::string_view name) {
  if ((properties._flags & AMQP_BASIC_HEADERS_FLAG) == 0) return nullptr;
  const amqp_table_entry_t* const begin = properties.headers.entries;
  const amqp_table_entry_t* const end = begin + properties.headers.num_entries;
  const auto* const found = std::find_if(begin, end, [&](const auto& entry) { return textOf(entry.key) == name; });
  return found == end ? nullptr : &found->value;
}

}  // namespace

amqp_bytes_t bytesOf(std::string_view text) {
  amqp_bytes_t bytes;
  bytes.len = text.size();
  bytes.bytes = const_cast<char*>(text.data());
  return bytes;
}

std::string_view contentTypeOf(const amqp_basic_properties_t& properties) {
  return textIf(properties, AMQP_BASIC_CONTENT_TYPE_FLAG, properties.content_type);
}

std::string_view contentEncodingOf(const amqp_basic_properties_t& properties) {
  return textIf(properties, AMQP_BASIC_CONTENT_ENCODING_FLAG, properties.content_encoding);
}

std::string_view messageIdOf(const amqp_basic_properties_t& properties) {
  return textIf(properties, AMQP_BASIC_MESSAGE_ID_FLAG, properties.message_id);
}

std::optional<std::int64_t> integerHeader(const amqp_basic_properties_t& properties, std::string_view name) {
  const amqp_field_value_t* const value = headerIn(properties, name);
  if (value == nullptr) return std::nullopt;
  switch (value->kind) {
    case AMQP_FIELD_KIND_I8:
      return value->value.i8;
    case AMQP_FIELD_KIND_U8:
      return value->value.u8;
    case AMQP_FIELD_KIND_I16:
      return value->value.i16;
    case AMQP_FIELD_KIND_U16:
      return value->value.u16;
    case AMQP_FIELD_KIND_I32:
      return value->value.i32;
    case AMQP_FIELD_KIND_U32:
      return value->value.u32;
    case AMQP_FIELD_KIND_I64:
      return value->value.i64;
    default:
      return std::nullopt;
  }
}

std::optional<std::string_view> textHeader(const amqp_basic_properties_t& properties, std::string_view name) {
  const amqp_field_value_t* const value = headerIn(properties, name);
  if (value == nullptr || value->kind != AMQP_FIELD_KIND_UTF8) return std::nullopt;
  return textOf(value->value.bytes);
}

Properties::Properties() {
  raw_._flags = AMQP_BASIC_DELIVERY_MODE_FLAG;
  raw_.delivery_mode = kPersistent;
}

Properties::Properties(const amqp_basic_properties_t& original) : raw_(original) {
  if ((raw_._flags & AMQP_BASIC_HEADERS_FLAG) != 0)
    headers_.assign(raw_.headers.entries, raw_.headers.entries + raw_.headers.num_entries);
  std::erase_if(headers_, [](const amqp_table_entry_t& entry) {
    return textOf(entry.key) == "CC" || textOf(entry.key) == "BCC";
  });
  raw_._flags &= ~static_cast<amqp_flags_t>(AMQP_BASIC_USER_ID_FLAG);
  raw_._flags |= AMQP_BASIC_DELIVERY_MODE_FLAG;
  raw_.delivery_mode = kPersistent;
}

void Properties::setText(amqp_flags_t flag, amqp_bytes_t& field, std::string_view text) {
  field = kept(text);
  raw_._flags |= flag;
}

amqp_bytes_t Properties::kept(std::string_view text) {
  return bytesOf(texts_.emplace_back(text));
}

void Properties::dropHeaders(std::string_view prefix) {
  std::erase_if(headers_, [&](const amqp_table_entry_t& entry) { return textOf(entry.key).starts_with(prefix); });
}

void Properties::dropHeadersBut(std::string_view prefix) {
  std::erase_if(headers_, [&](const amqp_table_entry_t& entry) { return !textOf(entry.key).starts_with(prefix); });
}

amqp_field_value_t& Properties::header(const char* name) {
  for (amqp_table_entry_t& entry : headers_)
    if (textOf(entry.key) == name) return entry.value;
  return headers_.emplace_back(amqp_table_entry_t{bytesOf(name), {}}).value;
}

void Properties::setHeader(const char* name, std::int64_t number) {
  amqp_field_value_t& value = header(name);
  value.kind = AMQP_FIELD_KIND_I64;
  value.value.i64 = number;
}

void Properties::setHeader(const char* name, std::string_view text) {
  amqp_field_value_t& value = header(name);
  value.kind = AMQP_FIELD_KIND_UTF8;
  value.value.bytes = kept(text);
}

const amqp_basic_properties_t& Properties::raw() {
  raw_.headers = {static_cast<int>(headers_.size()), headers_.data()};
  if (!headers_.empty()) raw_._flags |= AMQP_BASIC_HEADERS_FLAG;
  return raw_;
}

}  // namespace oxr::mq
