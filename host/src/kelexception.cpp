#include "kelexception.hpp"

// Each class throws a copy of itself: in a base, `throw *this` would cut the object down to that base.

KelException::~KelException() = default;
void KelException::throwThis() const {
  throw *this;
}

KelRecoverableException::~KelRecoverableException() = default;
void KelRecoverableException::throwThis() const {
  throw *this;
}

KelConversionException::~KelConversionException() = default;
void KelConversionException::throwThis() const {
  throw *this;
}

KelParserException::~KelParserException() = default;
void KelParserException::throwThis() const {
  throw *this;
}
