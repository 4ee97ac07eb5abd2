#include "oxrmq/consume/session.hpp"

#include <algorithm>
#include <new>
#include <utility>

namespace oxr::mq {

namespace {

constexpr std::chrono::milliseconds kLook{200};  // so soon it is seen that an end is asked for
constexpr char kBrokersOwn[] = "x-";             // what headers begin with that brokers write
constexpr char kFaultHeader[] = "oxr-fault";     // and what those begin with that tell more of a fault

std::uint64_t headerOr(const amqp_basic_properties_t& properties, const char* name, std::uint64_t otherwise) {
  const std::optional<std::int64_t> value = integerHeader(properties, name);
  return value && *value >= 0 ? static_cast<std::uint64_t>(*value) : otherwise;
}

// What comes before the message in its file.
rec::Origin originOf(const amqp_basic_properties_t& properties) {
  const std::uint64_t first = headerOr(properties, kRecordHeader, 1);
  return {headerOr(properties, kOffsetHeader, 0), first == 0 ? 0 : first - 1};
}

std::optional<Fault> faultOf(const Message& message, const Conversion& conversion) {
  const std::string type(contentTypeOf(message.properties()));
  const std::string encoding(contentEncodingOf(message.properties()));
  if (!conversion.takes(type)) return Fault{"messages of the content type " + type + " are not converted"};
  if (!encoding.empty()) return Fault{"messages of the content encoding " + encoding + " are not converted"};
  if (message.body().empty()) return Fault{"the message is empty"};
  return std::nullopt;
}

}  // namespace

ConsumerSession::ConsumerSession(const Surroundings& around, const Route& route, Conversion& conversion,
                                 Connection& connection, Backoff& pauses)
    : around_(around),
      route_(route),
      conversion_(conversion),
      connection_(connection),
      pauses_(pauses),
      notTakenPauses_(pauses),
      apartPauses_(pauses) {}

void ConsumerSession::run() {
  try {
    work();
  } catch (const BrokerRefused& refused) {
    if (!isTooLarge(refused.what())) throw;
    throw BrokerRefused(refused.what() + largest());
  }
}

void ConsumerSession::work() {
  prepare();
  while (!isDone()) {
    const bool isReady = mayConvert();
    drain(isReady ? std::chrono::milliseconds(0) : kLook);
    acknowledge();
    returnApart();
    if (!mayConvert()) continue;
    Delivery delivery = std::move(waiting_.front());
    waiting_.pop_front();
    workOn(std::move(delivery));
  }
}

void ConsumerSession::prepare() {
  for (const std::string& queue : route_.queues)
    prepareQueue(around_.options, connection_, queue);
  prepareTarget(around_.options, connection_, route_.output);
  prepareTarget(around_.options, connection_, route_.errors);
  for (const std::string& queue : route_.queues)
    connection_.consume(queue, route_.prefetch);
  last_ = Clock::now();
}

bool ConsumerSession::isDone() {
  if (!around_.stop.isAsked())
    return route_.idle && acknowledgements_.isEmpty() && Clock::now() - last_ >= pauseOf(*route_.idle);
  return published_.size() == 0 || around_.stop.isOver();
}

bool ConsumerSession::mayConvert() const {
  return !waiting_.empty() && !isBlocked_ && !around_.stop.isAsked() && Clock::now() >= notBefore_;
}

// Takes all that the broker has sent, and waits for the first of it.
void ConsumerSession::drain(std::chrono::milliseconds wait) {
  const Stopwatch watch(around_.counters.waitingNanoseconds);
  while (std::optional<Event> event = connection_.next(wait)) {
    std::visit([this](auto& given) { take(std::move(given)); }, *event);
    wait = std::chrono::milliseconds(0);
  }
}

void ConsumerSession::take(Delivery delivery) {
  ++around_.counters.messagesIn;
  around_.counters.bytesIn += delivery.message.body().size();
  if (delivery.isRedelivered) ++around_.counters.redeliveries;
  acknowledgements_.taken(delivery.tag);
  last_ = Clock::now();
  if (delivery.message.missing() != 0)
    setApart(delivery.tag, delivery.message.missing());
  else
    waiting_.push_back(std::move(delivery));
}

void ConsumerSession::take(const Answer& answer) {
  for (InHand& inHand : published_.settle(answer.number, answer.isForAllBefore)) {
    if (!answer.isTaken) {
      ++around_.counters.notTaken;
      waiting_.push_back(std::move(inHand.delivery));
      continue;
    }
    acknowledgements_.done(inHand.delivery.tag);
    ++(inHand.isFault ? around_.counters.messagesFailed : around_.counters.messagesOut);
    around_.counters.records += inHand.records;
    around_.counters.recordsLeftOut += inHand.leftOut;
    around_.counters.badFields += inHand.badFields;
    around_.counters.bytesOut += inHand.bytes;
  }
  if (answer.isTaken) {
    pauses_.reset();
    notTakenPauses_.reset();
  } else if (Clock::now() >= notBefore_) {
    const Backoff::Pause pause = notTakenPauses_.next();
    notBefore_ = Clock::now() + pause;
    if (pause > Backoff::kFirst)
      around_.log.tell("the broker takes no message for " + shown(route_.output) + " or " + shown(route_.errors) +
                       " at present; trying again");
  }
}

void ConsumerSession::take(const Returned& returned) {
  throw BrokerRefused(shown(route_.output) + " or " + shown(route_.errors) + " leads to no queue: " + returned.text +
                      "; the message went back to its queue");
}

void ConsumerSession::take(const Blocked& blocked) {
  isBlocked_ = blocked.reason.has_value();
  if (isBlocked_) ++around_.counters.blocked;
  around_.log.tell(isBlocked_ ? "the broker asks for a pause: " + *blocked.reason : "the broker goes on");
}

void ConsumerSession::acknowledge() {
  while (const std::optional<Acknowledgements::Next> next = acknowledgements_.next()) {
    connection_.acknowledge(next->tag, next->isForAllBefore);
    last_ = Clock::now();
  }
}

void ConsumerSession::setApart(std::uint64_t tag, std::uint64_t bytes) {
  around_.log.tell("out of memory; a message of " + std::to_string(bytes) + " bytes goes back to its queue");
  ++around_.counters.givenBack;
  acknowledgements_.setApart(tag);
  apart_.push_back({Clock::now() + apartPauses_.next(), tag});
}

void ConsumerSession::returnApart() {
  for (; !apart_.empty() && Clock::now() >= apart_.front().until; apart_.pop_front()) {
    connection_.giveBack(apart_.front().tag);
    acknowledgements_.returned(apart_.front().tag);
  }
}

void ConsumerSession::workOn(Delivery delivery) {
  const std::uint64_t tag = delivery.tag, bytes = delivery.message.body().size();
  try {
    const Converted made = converted(delivery);
    if (made.fault)
      publishFault(std::move(delivery), *made.fault, made.badFields);
    else if (!made.output.empty())
      publishOutput(std::move(delivery), made);
    else
      leaveOut(tag, made);
  } catch (const std::bad_alloc&) {
    setApart(tag, bytes);
  }
}

Converted ConsumerSession::converted(const Delivery& delivery) {
  const Stopwatch watch(around_.counters.convertingNanoseconds);
  if (std::optional<Fault> fault = faultOf(delivery.message, conversion_))
    return {.output = {}, .badFields = 0, .fault = std::move(fault)};
  return conversion_.convert(delivery.message.body(), originOf(delivery.message.properties()));
}

void ConsumerSession::publishOutput(Delivery delivery, const Converted& made) {
  Properties properties(delivery.message.properties());
  properties.dropHeaders(kBrokersOwn);
  properties.dropHeaders(kFaultHeader);
  properties.dropHeaders(kOffsetHeader);  // it counts bytes of the other form
  properties.setHeader(kCountHeader, static_cast<std::int64_t>(made.records));
  properties.setContentType(conversion_.outputType());
  if (!connection_.hasRoomFor(properties)) {
    publishFault(std::move(delivery), {.reason = "the message has headers that leave no room for others"},
                 made.badFields);
    return;
  }
  publish({std::move(delivery), made.records, made.leftOut, made.badFields, made.output.size(), false}, route_.output,
          properties, made.output);
}

// Nothing is left of the message.
void ConsumerSession::leaveOut(std::uint64_t tag, const Converted& made) {
  ++around_.counters.messagesLeftOut;
  around_.counters.recordsLeftOut += made.leftOut;
  around_.counters.badFields += made.badFields;
  acknowledgements_.done(tag);
}

void ConsumerSession::publishFault(Delivery delivery, const Fault& fault, std::uint64_t badFields) {
  Properties properties(delivery.message.properties());
  properties.dropExpiration();
  properties.dropHeaders(kFaultHeader);  // of an earlier fault, which had other parts
  properties.setHeader(kFaultHeader, fault.reason);
  properties.setHeader("oxr-fault-queue", delivery.queue);
  if (fault.number != 0) properties.setHeader("oxr-fault-number", fault.number);
  if (!fault.path.empty()) properties.setHeader("oxr-fault-path", fault.path);
  if (fault.record) properties.setHeader("oxr-fault-record", static_cast<std::int64_t>(*fault.record));
  if (fault.offset) properties.setHeader("oxr-fault-byte", static_cast<std::int64_t>(*fault.offset));
  if (!connection_.hasRoomFor(properties)) {
    properties.dropHeadersBut(kFaultHeader);
    properties.setHeader("oxr-fault-headers", "the message's own are left out: there is no room for them");
  }
  const auto body = delivery.message.body();
  publish({std::move(delivery), 0, 0, badFields, body.size(), true}, route_.errors, properties,
          {reinterpret_cast<const char*>(body.data()), body.size()});
}

// Of what is on its way, for a message after which the session is of no more use.
std::string ConsumerSession::largest() {
  const std::vector<InHand> all = published_.takeAll();
  const auto found =
      std::max_element(all.begin(), all.end(), [](const InHand& a, const InHand& b) { return a.bytes < b.bytes; });
  if (found == all.end()) return {};
  const std::string id(messageIdOf(found->delivery.message.properties()));
  return "; that was to be made of message " + (id.empty() ? "without an id" : id) + " of queue " +
         found->delivery.queue + ", and --max-message has to be the broker's limit";
}

void ConsumerSession::publish(InHand&& inHand, const Target& target, Properties& properties, std::string_view body) {
  const Stopwatch watch(around_.counters.publishingNanoseconds);
  published_.add(connection_.nextNumber(), std::move(inHand));
  connection_.publish(target, properties, body);
}

}  // namespace oxr::mq
