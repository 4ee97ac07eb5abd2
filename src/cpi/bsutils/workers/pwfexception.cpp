#include "pwfexception.hpp"

// The destructors are out of line so that each class has one table and one type record, here: a program that links the
// library catches what the library throws.
PWFException::~PWFException() = default;
FIParseException::~FIParseException() = default;
FIWriteException::~FIWriteException() = default;
FIHandlerException::~FIHandlerException() = default;
FIMessageTreeException::~FIMessageTreeException() = default;
