#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "records/framing/errors.hpp"

namespace oxr::mq {

// The broker went away, or cannot be reached: trying again later may help. what() tells why, for people.
class BrokerGone : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The broker says no, and will say so again: a login, a queue or an exchange that does not exist, a right that the user
// lacks. what() is complete for people.
class BrokerRefused : public rec::ToolError {
 public:
  using rec::ToolError::ToolError;
};

// Whether a broker that closes a channel or a connection with this code and text will do so again. What passes,
// such as a queue that is down while its broker starts, shares its code with what does not.
bool isRefusal(std::uint16_t code, std::string_view text);
// Whether the broker says no because a message has more bytes than it takes.
bool isTooLarge(std::string_view text);
// Whether the broker has waited too long for an acknowledgement.
bool isTooLate(std::string_view text);

}  // namespace oxr::mq
