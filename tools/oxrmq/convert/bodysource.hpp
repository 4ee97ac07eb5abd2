#pragma once

#include <optional>
#include <span>

#include "records/framing/buffersource.hpp"

namespace oxr::mq {

// The body of a message as an input. The bytes stay the caller's.
class BodySource : public rec::BufferSource {
 public:
  BodySource(std::span<const unsigned char> body, rec::Origin origin) : left_(body), origin_(origin) {}

  const BitstreamBuffer* slide(int consumed, int) override {
    left_ = left_.subspan(static_cast<std::size_t>(consumed));
    view_.emplace().create(reinterpret_cast<const char*>(left_.data()), static_cast<int>(left_.size()));
    return &*view_;
  }
  rec::Origin origin() const override { return origin_; }

 private:
  std::span<const unsigned char> left_;
  const rec::Origin origin_;
  std::optional<ReadOnlyByteBuffer> view_;
};

}  // namespace oxr::mq
