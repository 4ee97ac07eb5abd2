#pragma once

#include <spdlog/sinks/base_sink.h>

#include <string>

namespace oxr {

// Writes each line of a log to a descriptor as it comes, with one call to the system, so that the lines of several
// processes stay apart.
//
// The log must not change what the process does: nobody is waited for, and a reader that goes away ends nothing. Lines
// that a pipe has no room for are left out. The first line that cannot be written otherwise, as on a full disk, is told
// on standard error.
class DescriptorSink : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  // Opens the file of this path to add to it, and makes it if its folder is there. Throws std::system_error.
  explicit DescriptorSink(const std::string& path);
  // Writes to a descriptor of the process.
  explicit DescriptorSink(int descriptor) : descriptor_(descriptor) {}
  DescriptorSink(const DescriptorSink&) = delete;
  DescriptorSink& operator=(const DescriptorSink&) = delete;
  ~DescriptorSink() override;

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override {}

 private:
  void tellOnce(int error);

  const int descriptor_;
  const bool isOwned_ = false;
  bool hasFailed_ = false;
};

}  // namespace oxr
