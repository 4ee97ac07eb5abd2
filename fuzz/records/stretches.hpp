#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

#include "fuzz/harness/choices.hpp"
#include "records/framing/buffersource.hpp"

namespace oxr::fuzz {

// Hands out the input in stretches of a few bytes more than what is asked for, each in a block of its own: a reader
// that looks outside of one is caught.
class Stretches : public rec::BufferSource {
 public:
  Stretches(std::string_view input, std::size_t more) : left_(input), more_(more) {}
  const BitstreamBuffer* slide(int consumed, int wanted) override {
    require(consumed >= 0 && static_cast<std::size_t>(consumed) <= size_ && wanted > 0, "an impossible wish for bytes");
    left_.remove_prefix(static_cast<std::size_t>(consumed));
    const std::size_t enough = std::max(size_ - static_cast<std::size_t>(consumed), static_cast<std::size_t>(wanted));
    size_ = std::min(left_.size(), enough + std::min(more_, left_.size()));
    block_.reset(new char[size_]);
    left_.copy(block_.get(), size_);
    view_ = std::make_unique<ReadOnlyByteBuffer>();
    view_->create(block_.get(), static_cast<int>(size_));
    return view_.get();
  }

 private:
  std::string_view left_;
  const std::size_t more_;
  std::size_t size_ = 0;
  std::unique_ptr<char[]> block_;
  std::unique_ptr<ReadOnlyByteBuffer> view_;
};

}  // namespace oxr::fuzz
