#include "oxrmq/amqp/message.hpp"

#include <amqp_framing.h>

#include <cstring>
#include <new>
#include <stdexcept>

namespace oxr::mq {

namespace {

constexpr std::size_t kPage = 4096;

}  // namespace

Message::Message(const amqp_bytes_t& properties, std::uint64_t size) : pool_(new amqp_pool_t) {
  init_amqp_pool(pool_.get(), kPage);
  // What is decoded points into the bytes, which go with the frame.
  amqp_bytes_t copy;
  amqp_pool_alloc_bytes(pool_.get(), properties.len, &copy);
  if (copy.bytes == nullptr && properties.len != 0) throw std::bad_alloc();  // unreached: but without memory
  if (properties.len != 0) std::memcpy(copy.bytes, properties.bytes, properties.len);
  void* decoded = nullptr;
  const int status = amqp_decode_properties(AMQP_BASIC_CLASS, pool_.get(), copy, &decoded);
  if (status == AMQP_STATUS_NO_MEMORY) throw std::bad_alloc();  // unreached: but without memory
  if (status < 0) throw std::invalid_argument(amqp_error_string2(status));
  properties_ = static_cast<const amqp_basic_properties_t*>(decoded);
  body_.reset(new (std::nothrow) unsigned char[size]);
  if (body_ == nullptr) missing_ = size;
}

void Message::append(const amqp_bytes_t& bytes) {
  if (missing_ != 0) return;
  std::memcpy(body_.get() + size_, bytes.bytes, bytes.len);
  size_ += bytes.len;
}

}  // namespace oxr::mq
