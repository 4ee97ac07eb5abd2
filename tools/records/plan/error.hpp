#pragma once

#include <stdexcept>

namespace oxr::rec {

// Something in a layout that cannot be decoded, or an option that does not fit it. what() is complete for people.
class PlanError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace oxr::rec
