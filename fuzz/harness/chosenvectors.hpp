#pragma once

#include "core/vectors.hpp"
#include "fuzz/harness/choices.hpp"

namespace oxr::fuzz {

// One of the kinds of vectors that this processor has, or the plain loops, for as long as the object lives.
class ChosenVectors {
 public:
  explicit ChosenVectors(Choices& choices) { vectors_.used = choices.upTo(vectors_.count - 1); }
  ChosenVectors(const ChosenVectors&) = delete;
  ChosenVectors& operator=(const ChosenVectors&) = delete;
  ~ChosenVectors() { vectors_.used = 0; }

 private:
  core::Vectors& vectors_ = core::vectors();
};

}  // namespace oxr::fuzz
