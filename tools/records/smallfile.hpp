#pragma once

#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace oxr::rec {

// Why a small file cannot be read: what() is the reason alone, without the file's name.
class SmallFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// How long a pipe may take to come to its end.
inline constexpr std::chrono::milliseconds kSmallFilePatience{60'000};

// The whole of a file that is to be small, such as a copybook. What has more than `most` bytes is refused once a byte
// more was read, however much there is: a device gives bytes without an end. A pipe is read up to its end, which is to
// come within `patience`; one that nobody writes to is refused then. Throws SmallFileError.
std::string readSmallFile(const std::string& path, std::size_t most,
                          std::chrono::milliseconds patience = kSmallFilePatience);

}  // namespace oxr::rec
