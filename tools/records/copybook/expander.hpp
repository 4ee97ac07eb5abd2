#pragma once

#include <vector>

#include "records/copybook/copybook.hpp"
#include "records/copybook/lexer.hpp"

namespace oxr::rec::copybook {

// The tokens of the first text of `source`, with those of the texts that it copies in their places, and all that COPY
// and REPLACE replace replaced. The texts are added to `source`. Ends with TokenKind::end.
//
// Throws CopybookError: also for a text that copies itself, directly or by others, and for more than the limits.
std::vector<Token> expand(Source& source, const CopybookOptions& options);

}  // namespace oxr::rec::copybook
