// An iterator owns its place in the tree: whatever copies one has the place cloned, and a null one stays null.

#include "fitreeiterator.hpp"

namespace {

std::unique_ptr<FITreeIteratorImpl> cloneOf(const FITreeIteratorImpl* impl) {
  return std::unique_ptr<FITreeIteratorImpl>(impl != nullptr ? impl->clone() : nullptr);
}

}  // namespace

FITreeIteratorImpl::~FITreeIteratorImpl() = default;

FITreeIterator::FITreeIterator() = default;
FITreeIterator::FITreeIterator(FITreeIteratorImpl* impl, bool clone)
    : impl_(clone ? cloneOf(impl) : std::unique_ptr<FITreeIteratorImpl>(impl)) {}
FITreeIterator::FITreeIterator(const FITreeIteratorImpl* impl) : impl_(cloneOf(impl)) {}
FITreeIterator::FITreeIterator(const FITreeIterator& other) : header(other.header), impl_(cloneOf(other.impl_.get())) {}

FITreeIterator& FITreeIterator::operator=(const FITreeIterator& other) {
  if (this != &other) impl_ = cloneOf(other.impl_.get());
  return *this;
}

FITreeIterator::~FITreeIterator() = default;
