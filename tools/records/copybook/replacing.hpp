#pragma once

#include <vector>

#include "records/copybook/lexer.hpp"

namespace oxr::rec::copybook {

// One "A BY B" of COPY ... REPLACING or of REPLACE.
struct Replacement {
  enum class Where : std::uint8_t {
    whole,     // A is a row of words and signs
    leading,   // A is what words start with
    trailing,  // A is what they end with
  };
  Where where = Where::whole;
  std::vector<Token> from;  // never empty
  std::vector<Token> by;
};

// What reading a copybook may cost, all that it copies and replaces together: a small text can ask for any amount of
// work by copying and replacing again and again. Throws CopybookError beyond 4194304 words, 64 MiB of them or 268435456
// comparisons.
class Effort {
 public:
  explicit Effort(const Source& source) : source_(source) {}

  void addWord(const Token& word);
  // Comparisons of words of usual length.
  void addComparisons(std::size_t count, Place place);

 private:
  const Source& source_;
  std::size_t words_ = 0;
  std::size_t bytes_ = 0;
  std::size_t comparisons_ = 0;
};

// Cuts words into the parts that can be replaced by themselves: parentheses and colons are a part each, so that
// ==:TAG:== is found in ":TAG:-ID" and ==N== in "X(N)".
std::vector<Token> partsOf(std::vector<Token> tokens);

// Replaces in tokens, from the first to the last; of several replacements that fit at a place the first is taken. What
// was put in is not looked at again. Throws CopybookError if that is too much effort.
std::vector<Token> replaced(Effort& effort, std::vector<Token> tokens, const std::vector<Replacement>& replacements);

}  // namespace oxr::rec::copybook
