#pragma once

#include <amqp.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace oxr::mq {

// A message that came in, with the memory that it lies in.
class Message {
 public:
  Message() = default;
  // `properties` as they lie in the frame that a message begins with; they are copied. The body has room for `size`
  // bytes, or for none if memory does not hold so many. Throws std::bad_alloc if it does not hold the properties, and
  // std::invalid_argument for some that cannot be read.
  Message(const amqp_bytes_t& properties, std::uint64_t size);

  // The next bytes of the body. Without room for them they are dropped. REQUIRES: no more than its size in all.
  void append(const amqp_bytes_t& bytes);

  std::span<const unsigned char> body() const { return {body_.get(), size_}; }
  // Bytes of a body that memory does not hold; there is none then.
  std::uint64_t missing() const { return missing_; }
  // Where they point to goes with the message.
  const amqp_basic_properties_t& properties() const { return *properties_; }

 private:
  struct Release {
    void operator()(amqp_pool_t* pool) const {
      empty_amqp_pool(pool);
      delete pool;
    }
  };

  std::unique_ptr<amqp_pool_t, Release> pool_;
  const amqp_basic_properties_t* properties_ = nullptr;  // in the pool
  std::unique_ptr<unsigned char[]> body_;
  std::size_t size_ = 0;  // so far
  std::uint64_t missing_ = 0;
};

// A message of a queue, to be acknowledged or returned by its tag on the connection that it came by.
struct Delivery {
  std::uint64_t tag = 0;
  bool isRedelivered = false;
  std::string queue;
  Message message;
};

}  // namespace oxr::mq
