#pragma once

#include "kelexport.hpp"
#include "kellog.hpp"

// Failures of data. Construct one on the stack, add its inserts with `<<`, call throwThis().
//
// A catcher asks messageNumber(), inserts() and where it was raised; toString() gives a text for people. A catch of
// KelRecoverableException& catches all three of the classes that the library raises.
class KELHOST_EXPORT KelException : public KelLog::ComplexItem {
 public:
  // Takes where it is raised (source file, line from 1, function), the name that records show as its source, its
  // message number, 32 bits with the severity in the top ones, and the handle of the function's trace entry. Texts are
  // copied.
  KelException(const char* file, int line, const char* function, const KelWstring& sourceName, int number, long handle)
      : KelException(nullptr, file, line, function, sourceName, number, handle) {}
  // Does the same. `source`, null for none, is asked for its names at once and not kept.
  KelException(const KelLogSource* source, const char* file, int line, const char* function,
               const KelWstring& sourceName, int number, long handle)
      : ComplexItem(source, file, line, function, sourceName, number, handle) {}
  KelException(const KelException&) = default;
  ~KelException() override;

  // Throws a copy of this object, of its own class.
  [[noreturn]] virtual void throwThis() const;
};

// The broker goes on with the next message after any of these.
class KELHOST_EXPORT KelRecoverableException : public KelException {
 public:
  using KelException::KelException;
  ~KelRecoverableException() override;
  [[noreturn]] void throwThis() const override;
};

// A value or a field cannot be converted.
class KELHOST_EXPORT KelConversionException : public KelRecoverableException {
 public:
  using KelRecoverableException::KelRecoverableException;
  ~KelConversionException() override;
  [[noreturn]] void throwThis() const override;
};

// A message cannot be parsed or written as its model asks.
class KELHOST_EXPORT KelParserException : public KelRecoverableException {
 public:
  using KelRecoverableException::KelRecoverableException;
  ~KelParserException() override;
  [[noreturn]] void throwThis() const override;
};
