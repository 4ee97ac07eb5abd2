#pragma once

#include <cstdint>
#include <optional>

#include "records/copybook/copybook.hpp"
#include "records/copybook/entries.hpp"
#include "records/layout.hpp"

namespace oxr::rec::copybook {

// What a group hands down to the entries below it.
struct Inherited {
  std::optional<UsageClause> usage;
  std::optional<SignClause> sign;
  bool isSynchronized = false;

  // The same with the clauses of an entry in front. Whether SYNCHRONIZED of a group counts is for the dialect to say.
  Inherited with(const Entry& entry, Dialect dialect) const;
};

// Fills in what the clauses of a field say: kind, picture, digits, scale, sign and size. `inherited` has those of the
// entry too. Throws CopybookError if they do not go together.
void shapeField(const Source& source, const Entry& entry, const Inherited& inherited, const CopybookOptions& options,
                Item& item);

// The boundary that SYNCHRONIZED puts a field of this shape on, in bytes: 1 if it has no effect on it.
std::uint32_t boundaryOf(const Item& item, Dialect dialect);

}  // namespace oxr::rec::copybook
