#include "oxrmq/amqp/errors.hpp"

#include <algorithm>

namespace oxr::mq {

namespace {

constexpr std::uint16_t kRefusals[] = {
    403,  // access refused
    404,  // not found
    405,  // locked by somebody else
    406,  // precondition failed
    530,  // not allowed
};

constexpr std::string_view kTooLate = "delivery acknowledgement on channel";

// What a broker tells, with the code of a refusal, of what passes.
constexpr std::string_view kPassing[] = {
    " is down",        // a queue or a virtual host, while the broker starts
    kTooLate,          // a message was in hand for too long; it is back in its queue
    "due to timeout",  // the broker is too busy, or its nodes are
};

}  // namespace

bool isRefusal(std::uint16_t code, std::string_view text) {
  const bool isKnown = std::find(std::begin(kRefusals), std::end(kRefusals), code) != std::end(kRefusals);
  return isKnown && std::none_of(std::begin(kPassing), std::end(kPassing),
                                 [&](std::string_view part) { return text.find(part) != std::string_view::npos; });
}

bool isTooLate(std::string_view text) {
  return text.find(kTooLate) != std::string_view::npos;
}

bool isTooLarge(std::string_view text) {
  return text.find(" is larger than ") != std::string_view::npos;
}

}  // namespace oxr::mq
