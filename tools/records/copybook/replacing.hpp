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

// Cuts words into the parts that can be replaced by themselves: parentheses and colons are a part each, so that
// ==:TAG:== is found in ":TAG:-ID" and ==N== in "X(N)".
std::vector<Token> partsOf(std::vector<Token> tokens);

// Replaces in tokens, from the first to the last; of several replacements that fit at a place the first is taken. What
// was put in is not looked at again. Throws CopybookError if the text grows beyond 64 MiB or 4194304 parts.
std::vector<Token> replaced(const Source& source, std::vector<Token> tokens,
                            const std::vector<Replacement>& replacements);

}  // namespace oxr::rec::copybook
