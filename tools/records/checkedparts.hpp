#pragma once

#include <memory>
#include <streambuf>

#include "bitstreamworker.hpp"
#include "records/framing/framing.hpp"

namespace oxr::rec {

// Events that no message has in that order. what() tells which rule was broken, but not where.
class CheckError : public ToolError {
 public:
  using ToolError::ToolError;
};

// Drives a worker whose parts are one message each, such as RecordWorker, with its calls and its events checked.
//
// A checker admits one message, so each part gets a checker of its own, to which it looks like a worker with a single
// message. Each of them ends with a line on standard output: a program that writes there itself holds a QuietOutput.
//
// Example:
//   worker->initializeParse(-1, nullptr, -1);
//   CheckedParts parts(*worker, handler);
//   parts.parseFirst(input.first());
//   while (worker->hasNext()) parts.parseNext();
class CheckedParts {
 public:
  // Both are the caller's. The worker has been initialised; it gets its handler here, once a part.
  CheckedParts(BitstreamWorker& worker, FIHandler& handler);
  ~CheckedParts();

  // As those of the worker. Throw CheckError, and whatever the worker and the handler throw but for an exception of the
  // PWFException family, which stands for a CheckError whoever throws it.
  void parseFirst(const BitstreamBuffer* buffer);
  void parseNext();

 private:
  class Part;
  void parse(const BitstreamBuffer* buffer, int offset);

  FIHandler& handler_;
  const std::unique_ptr<Part> part_;
};

// Keeps std::cout from writing anything for as long as the object lives. There is one at a time.
class QuietOutput {
 public:
  QuietOutput();
  QuietOutput(const QuietOutput&) = delete;
  QuietOutput& operator=(const QuietOutput&) = delete;
  ~QuietOutput();

 private:
  std::streambuf* const before_;
};

}  // namespace oxr::rec
