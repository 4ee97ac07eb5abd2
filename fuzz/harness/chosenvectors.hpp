#pragma once

#include "fuzz/harness/choices.hpp"
#include "support/libraryvectors.hpp"

namespace oxr::fuzz {

// One of the kinds of vectors that this processor has, or the plain loops, for as long as the object lives: in the
// library and in what the program has of it itself.
class ChosenVectors {
 public:
  explicit ChosenVectors(Choices& choices) { use(choices.upTo(core::vectors.count - 1)); }
  ChosenVectors(const ChosenVectors&) = delete;
  ChosenVectors& operator=(const ChosenVectors&) = delete;
  ~ChosenVectors() { use(0); }

 private:
  static void use(std::size_t kind) { core::vectors.used = libraryVectors().used = kind; }
};

}  // namespace oxr::fuzz
