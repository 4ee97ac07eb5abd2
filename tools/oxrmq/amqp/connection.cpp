#include "oxrmq/amqp/connection.hpp"

#include <new>
#include <utility>

namespace oxr::mq {

namespace {

constexpr amqp_channel_t kChannel = 1;
constexpr std::chrono::seconds kLeaveTimeout{2};

timeval timevalOf(std::chrono::milliseconds time) {
  timeval value;
  value.tv_sec = time.count() / 1000;
  value.tv_usec = time.count() % 1000 * 1000;
  return value;
}

}  // namespace

Connection::Connection(const Address& address, const ConnectionSettings& settings)
    : shown_(shown(address)), state_(amqp_new_connection()) {
  if (!state_) throw std::bad_alloc();  // unreached: but without memory
  open(address, settings);
  guard_.emplace(amqp_get_sockfd(state_.get()), settings.isOver);
  const StallGuard::Operation operation(*guard_);
  login(address, settings);
  guard_->setLongestSilence(2 * std::chrono::seconds(amqp_get_heartbeat(state_.get())));
  const timeval timeout = timevalOf(settings.timeout);
  check(amqp_set_rpc_timeout(state_.get(), &timeout), "setting a time limit");
  openChannel();
}

Connection::~Connection() = default;

void Connection::openChannel() {
  amqp_channel_open(state_.get(), kChannel);
  check(amqp_get_rpc_reply(state_.get()), "opening a channel");
  amqp_confirm_select(state_.get(), kChannel);
  check(amqp_get_rpc_reply(state_.get()), "asking for confirmations");
}

void Connection::failed(int status, const std::string& doing) const {
  if (status == AMQP_STATUS_NO_MEMORY) throw std::bad_alloc();  // unreached: but without memory
  const char* const given = guard_ ? guard_->why() : nullptr;
  const std::string text = shown_ + ": " + doing + ": " + (given != nullptr ? given : amqp_error_string2(status));
  if (status == AMQP_STATUS_SSL_HOSTNAME_VERIFY_FAILED || status == AMQP_STATUS_SSL_PEER_VERIFY_FAILED)
    throw BrokerRefused(text);
  // What was asked cannot be told to a broker: a name is too long, or there are too many headers.
  if (status == AMQP_STATUS_BAD_AMQP_DATA || status == AMQP_STATUS_TABLE_TOO_BIG) throw BrokerRefused(text);
  throw BrokerGone(text);
}

void Connection::check(int status, const char* doing) const {
  if (status != AMQP_STATUS_OK) failed(status, doing);
}

// The broker closes the channel or the connection. Both methods begin with a code and a text.
void Connection::closed(const amqp_method_t& method, const std::string& doing) const {
  std::uint16_t code = 0;
  std::string_view why = "closed without a reason";
  if (method.id == AMQP_CHANNEL_CLOSE_METHOD) {
    const auto& close = *static_cast<const amqp_channel_close_t*>(method.decoded);
    code = close.reply_code;
    why = textOf(close.reply_text);
  } else if (method.id == AMQP_CONNECTION_CLOSE_METHOD) {
    const auto& close = *static_cast<const amqp_connection_close_t*>(method.decoded);
    code = close.reply_code;
    why = textOf(close.reply_text);
  }
  const std::string text = shown_ + ": " + doing + ": " + std::string(why);
  if (isRefusal(code, why)) throw BrokerRefused(text);
  throw BrokerGone(text);
}

void Connection::check(const amqp_rpc_reply_t& reply, const std::string& doing) const {
  if (reply.reply_type == AMQP_RESPONSE_NORMAL) return;
  if (reply.reply_type == AMQP_RESPONSE_SERVER_EXCEPTION) closed(reply.reply, doing);
  failed(reply.reply_type == AMQP_RESPONSE_LIBRARY_EXCEPTION ? reply.library_error : AMQP_STATUS_CONNECTION_CLOSED,
         doing);
}

void Connection::requireQueue(const std::string& name) {
  amqp_queue_declare(state_.get(), kChannel, bytesOf(name), 1, 0, 0, 0, amqp_empty_table);
  check(amqp_get_rpc_reply(state_.get()), "queue " + name);
}

// The broker closes the channel if there is none.
bool Connection::hasQueue(const std::string& name) {
  constexpr std::uint16_t kNotFound = 404;
  amqp_queue_declare(state_.get(), kChannel, bytesOf(name), 1, 0, 0, 0, amqp_empty_table);
  const amqp_rpc_reply_t reply = amqp_get_rpc_reply(state_.get());
  bool isMissing = false;
  if (reply.reply_type == AMQP_RESPONSE_SERVER_EXCEPTION && reply.reply.id == AMQP_CHANNEL_CLOSE_METHOD) {
    const auto& close = *static_cast<const amqp_channel_close_t*>(reply.reply.decoded);
    isMissing = close.reply_code == kNotFound && isRefusal(close.reply_code, textOf(close.reply_text));
  }
  if (!isMissing) {
    check(reply, "queue " + name);
    return true;
  }
  amqp_channel_close_ok_t understood{};
  check(amqp_send_method(state_.get(), kChannel, AMQP_CHANNEL_CLOSE_OK_METHOD, &understood), "closing a channel");
  openChannel();
  return false;
}

void Connection::requireExchange(const std::string& name) {
  amqp_exchange_declare(state_.get(), kChannel, bytesOf(name), bytesOf("direct"), 1, 0, 0, 0, amqp_empty_table);
  check(amqp_get_rpc_reply(state_.get()), "exchange " + name);
}

void Connection::declareQueue(const std::string& name, const std::string& type, std::int64_t mostMessages) {
  if (hasQueue(name)) return;
  Properties arguments;
  arguments.setHeader("x-queue-type", type);
  if (mostMessages != 0) {
    arguments.setHeader("x-max-length", mostMessages);
    arguments.setHeader("x-overflow", std::string_view("reject-publish"));
  }
  amqp_queue_declare(state_.get(), kChannel, bytesOf(name), 0, 1, 0, 0, arguments.raw().headers);
  check(amqp_get_rpc_reply(state_.get()), "declaring queue " + name);
}

void Connection::consume(const std::string& queue, std::uint16_t prefetch) {
  amqp_basic_qos(state_.get(), kChannel, 0, prefetch, 0);
  check(amqp_get_rpc_reply(state_.get()), "setting the prefetch");
  // The name of the queue is what its deliveries are marked with.
  amqp_basic_consume(state_.get(), kChannel, bytesOf(queue), bytesOf(queue), 0, 0, 0, amqp_empty_table);
  check(amqp_get_rpc_reply(state_.get()), "queue " + queue);
}

std::optional<Event> Connection::next(std::chrono::milliseconds wait) {
  if (!early_.empty()) {
    std::optional<Event> event(std::move(early_.front()));
    early_.pop_front();
    return event;
  }
  // Signs of life are sent meanwhile.
  const StallGuard::Operation operation(*guard_);
  amqp_maybe_release_buffers(state_.get());
  const timeval timeout = timevalOf(wait);
  amqp_frame_t frame;
  const int status = amqp_simple_wait_frame_noblock(state_.get(), &frame, &timeout);
  if (status == AMQP_STATUS_TIMEOUT) return std::nullopt;
  check(status, "waiting for the broker");
  return frame.frame_type == AMQP_FRAME_METHOD ? eventOf(frame) : std::nullopt;
}

std::optional<Event> Connection::eventOf(const amqp_frame_t& frame) {
  const void* const decoded = frame.payload.method.decoded;
  switch (frame.payload.method.id) {
    case AMQP_BASIC_DELIVER_METHOD: {
      const auto& method = *static_cast<const amqp_basic_deliver_t*>(decoded);
      Delivery delivery{method.delivery_tag, method.redelivered != 0, std::string(textOf(method.consumer_tag)), {}};
      delivery.message = readMessage();
      return Event(std::move(delivery));
    }
    case AMQP_BASIC_ACK_METHOD: {
      const auto& method = *static_cast<const amqp_basic_ack_t*>(decoded);
      return Answer{method.delivery_tag, method.multiple != 0, true};
    }
    case AMQP_BASIC_NACK_METHOD: {
      const auto& method = *static_cast<const amqp_basic_nack_t*>(decoded);
      return Answer{method.delivery_tag, method.multiple != 0, false};
    }
    case AMQP_BASIC_RETURN_METHOD: {
      const auto& method = *static_cast<const amqp_basic_return_t*>(decoded);
      Returned returned{std::string(textOf(method.reply_text))};
      readMessage();
      return returned;
    }
    case AMQP_CONNECTION_BLOCKED_METHOD:
      return Blocked{std::string(textOf(static_cast<const amqp_connection_blocked_t*>(decoded)->reason))};
    case AMQP_CONNECTION_UNBLOCKED_METHOD:
      return Blocked{};
    case AMQP_BASIC_CANCEL_METHOD: {
      const auto& method = *static_cast<const amqp_basic_cancel_t*>(decoded);
      throw BrokerGone(shown_ + ": queue " + std::string(textOf(method.consumer_tag)) + " gives no more messages");
    }
    case AMQP_CHANNEL_CLOSE_METHOD:
    case AMQP_CONNECTION_CLOSE_METHOD:
      closed(frame.payload.method, "the broker ends the connection");
    default:
      return std::nullopt;
  }
}

// A frame of the message that is being read.
amqp_frame_t Connection::nextOf(std::uint8_t type) {
  amqp_frame_t frame;
  while (true) {
    check(amqp_simple_wait_frame(state_.get(), &frame), "reading a message");
    if (frame.frame_type == type) return frame;
    if (frame.frame_type != AMQP_FRAME_METHOD) throw BrokerGone(shown_ + ": a message is not as it should be");
    // The broker tells what is about the whole connection whenever it wants to.
    if (std::optional<Event> event = eventOf(frame)) early_.push_back(*std::move(event));
  }
}

// The client library would keep the frames until the message is there, and could not go on after one that memory does
// not hold.
Message Connection::readMessage() {
  const StallGuard::Operation operation(*guard_);
  amqp_frame_t frame = nextOf(AMQP_FRAME_HEADER);
  std::uint64_t left = frame.payload.properties.body_size;
  Message message(frame.payload.properties.raw, left);
  while (left != 0) {
    amqp_maybe_release_buffers_on_channel(state_.get(), kChannel);
    frame = nextOf(AMQP_FRAME_BODY);
    const amqp_bytes_t& bytes = frame.payload.body_fragment;
    if (bytes.len > left) throw BrokerGone(shown_ + ": a message is longer than it should be");
    message.append(bytes);
    left -= bytes.len;
  }
  return message;
}

void Connection::acknowledge(std::uint64_t tag, bool isForAllBefore) {
  const StallGuard::Operation operation(*guard_);
  check(amqp_basic_ack(state_.get(), kChannel, tag, isForAllBefore ? 1 : 0), "acknowledging a message");
}

void Connection::giveBack(std::uint64_t tag) {
  const StallGuard::Operation operation(*guard_);
  check(amqp_basic_nack(state_.get(), kChannel, tag, 0, 1), "giving a message back");
}

// The client library tells how long properties are by writing them.
bool Connection::hasRoomFor(Properties& properties) {
  constexpr int kAround = 20;  // bytes of the frame around them
  if (frame_.empty()) frame_.resize(static_cast<std::size_t>(amqp_get_frame_max(state_.get()) - kAround));
  const amqp_bytes_t room{frame_.size(), frame_.data()};
  return amqp_encode_properties(AMQP_BASIC_CLASS, const_cast<amqp_basic_properties_t*>(&properties.raw()), room) >= 0;
}

void Connection::publish(const Target& target, Properties& properties, std::string_view body) {
  constexpr amqp_boolean_t kMustReachQueue = 1, kIsImmediate = 0;
  const StallGuard::Operation operation(*guard_);
  const int status = amqp_basic_publish(state_.get(), kChannel, bytesOf(target.exchange), bytesOf(target.key),
                                        kMustReachQueue, kIsImmediate, &properties.raw(), bytesOf(body));
  // The broker may have a part of the message: nothing else can follow on this connection.
  if (status == AMQP_STATUS_NO_MEMORY) throw BrokerGone(shown_ + ": publishing a message: out of memory");
  check(status, "publishing a message");
  ++published_;
}

bool Connection::close() noexcept {
  if (std::exchange(isClosed_, true)) return true;
  const StallGuard::Operation operation(*guard_);
  const timeval timeout = timevalOf(kLeaveTimeout);
  amqp_set_rpc_timeout(state_.get(), &timeout);
  return amqp_connection_close(state_.get(), AMQP_REPLY_SUCCESS).reply_type == AMQP_RESPONSE_NORMAL;
}

}  // namespace oxr::mq
