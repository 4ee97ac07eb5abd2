#pragma once

#include <cstddef>
#include <memory>

namespace oxr {

// Unwritten room for `size` elements: on the stack up to kInline of them, on the heap beyond.
template <class T, std::size_t kInline>
class Scratch {
 public:
  explicit Scratch(std::size_t size) : heap_(size > kInline ? new T[size] : nullptr), size_(size) {}

  T* data() { return heap_ != nullptr ? heap_.get() : inline_; }
  std::size_t size() const { return size_; }

 private:
  std::unique_ptr<T[]> heap_;
  std::size_t size_;
  T inline_[kInline];
};

}  // namespace oxr
