#pragma once

#include "oxrmq/stop.hpp"
#include "records/program/console.hpp"

namespace oxr::mq {

// An end was asked for while the next bytes of the input were not there.
class InputLeft : public rec::ToolError {
 public:
  using rec::ToolError::ToolError;
};

// The file of this path, or standard input. What is no file, but a pipe, is waited for only until `stop` is asked:
// operations of the result then throw InputLeft. Throws ToolError.
rec::FileInput openWaiting(const std::string& path, const rec::InputWindow& window, const rec::Console& console,
                           const Stop& stop);

}  // namespace oxr::mq
