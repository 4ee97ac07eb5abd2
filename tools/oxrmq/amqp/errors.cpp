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

}  // namespace

bool isRefusal(std::uint16_t code, std::string_view text) {
  const bool isKnown = std::find(std::begin(kRefusals), std::end(kRefusals), code) != std::end(kRefusals);
  return isKnown && text.find(" is down") == std::string_view::npos;
}

}  // namespace oxr::mq
