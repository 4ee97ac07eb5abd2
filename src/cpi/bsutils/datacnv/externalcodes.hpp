#pragma once

#include "datacnv/parts.hpp"
#include "dataconv.hpp"

// The bytes that external decimals are made of in the code page of a converter: signs, digits, pads. The fast ways of
// reading and writing rest on them. Each converter looks them up when they are first asked for and keeps them.
namespace oxr {

using ExternalCodes = DataCnvParts::ExternalCodes;

// Look up the signs and digits, and a pad as well: not while the converter holds bytes back, which would come out
// first.
void lookUpDigitCodes(DataCnv& cnv);
void lookUpPadCode(DataCnv& cnv, unsigned short padChar);

// The codes of the signs and digits.
inline const ExternalCodes& externalCodes(DataCnv& cnv) {
  if (!DataCnvParts::externalCodes(cnv).areKnown) [[unlikely]]
    lookUpDigitCodes(cnv);
  return DataCnvParts::externalCodes(cnv);
}
// Those and the code of a pad. One pad is kept: a message hardly uses two for its numbers.
inline const ExternalCodes& externalCodes(DataCnv& cnv, unsigned short padChar) {
  if (DataCnvParts::externalCodes(cnv).padChar != padChar) [[unlikely]]
    lookUpPadCode(cnv, padChar);
  return DataCnvParts::externalCodes(cnv);
}

}  // namespace oxr
