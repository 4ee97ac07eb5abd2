#pragma once

#include <amqp.h>

#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace oxr::mq {

// A message that came in, with the memory that it lies in.
class Message {
 public:
  Message() = default;
  // Takes over what the client library has filled.
  explicit Message(const amqp_message_t& raw) : raw_(raw), isFilled_(true) {}
  Message(Message&& other) noexcept : raw_(other.raw_), isFilled_(std::exchange(other.isFilled_, false)) {}
  Message& operator=(Message&& other) noexcept {
    std::swap(raw_, other.raw_);
    std::swap(isFilled_, other.isFilled_);
    return *this;
  }
  ~Message() {
    if (isFilled_) amqp_destroy_message(&raw_);
  }

  std::span<const unsigned char> body() const {
    return {static_cast<const unsigned char*>(raw_.body.bytes), raw_.body.len};
  }
  // Where they point to goes with the message.
  const amqp_basic_properties_t& properties() const { return raw_.properties; }

 private:
  amqp_message_t raw_{};
  bool isFilled_ = false;
};

// A message of a queue, to be acknowledged or returned by its tag on the connection that it came by.
struct Delivery {
  std::uint64_t tag = 0;
  bool isRedelivered = false;
  std::string queue;
  Message message;
};

}  // namespace oxr::mq
