#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "records/framing/buffersource.hpp"

namespace oxr::mq {

// What is wrong with a message, for the headers of its copy that goes to the target for errors.
struct Fault {
  std::string reason;
  std::string path{};                     // of the field; empty if there is none
  int number = 0;                         // in the catalogue of messages; 0 if there is none
  std::optional<std::uint64_t> record{};  // from 1, counted as the message's headers say: in a file
  std::optional<std::uint64_t> offset{};  // bytes from 0, counted likewise
};

// What became of a message.
struct Converted {
  std::string_view output;       // until the next conversion
  std::uint64_t records = 0;     // in the output
  std::uint64_t leftOut = 0;     // records that the options leave out: of no kind, or bad
  std::uint64_t badFields = 0;   // and lines: all that could not be converted
  std::optional<Fault> fault{};  // there is no output then
};

inline constexpr std::uint64_t kAnyLength = std::numeric_limits<std::uint64_t>::max();

// An output of more bytes than this is none that a broker takes.
inline Fault tooLong(std::uint64_t longest) {
  return {.reason = "the message would become one of more than " + std::to_string(longest) +
                    " bytes, more than the broker takes"};
}

// What a consumer does with the body of a message. Serves one thread.
class Conversion {
 public:
  virtual ~Conversion() = default;
  // `origin` is what comes before the message in its file.
  virtual Converted convert(std::span<const unsigned char> body, rec::Origin origin) = 0;
  // Whether a message of this content type may be converted.
  virtual bool takes(std::string_view contentType) const = 0;
  virtual const char* outputType() const = 0;
};

inline constexpr char kRecordsType[] = "application/octet-stream";
inline constexpr char kLinesType[] = "application/x-ndjson";

}  // namespace oxr::mq
