#pragma once

#include "kelheader.hpp"
#include "oxrexport.hpp"

// Misuse of a worker, a handler or a message tree: calls in an order that their interfaces do not allow.
//
// The type is the whole message: there is no number, no text, no insert. None of these derives from the host's
// exceptions, so a catch of KelRecoverableException& does not see them. Thrown by value, caught by reference.
//
//   try {
//     worker.parseNext();
//   } catch (const FIParseException&) {
//     // called before parseFirst: a fault of this program, not of the message
//   }
class OXR_EXPORT PWFException {
 public:
  PWFException() = default;
  PWFException(const PWFException&) = default;
  PWFException& operator=(const PWFException&) = default;
  virtual ~PWFException();

 private:
  objectHeader header{"QVFE", 8, 1056};
};

// The parser side was misused.
class OXR_EXPORT FIParseException : public PWFException {
 public:
  FIParseException() = default;
  FIParseException(const FIParseException&) = default;
  FIParseException& operator=(const FIParseException&) = default;
  ~FIParseException() override;

 private:
  objectHeader header{"QVFQ", 1052, 1080};
};

// The writer side was misused. The only one without a header of its own.
class OXR_EXPORT FIWriteException : public PWFException {
 public:
  FIWriteException() = default;
  FIWriteException(const FIWriteException&) = default;
  FIWriteException& operator=(const FIWriteException&) = default;
  ~FIWriteException() override;
};

// A handler got an event that does not fit where the message stands.
class OXR_EXPORT FIHandlerException : public PWFException {
 public:
  FIHandlerException() = default;
  FIHandlerException(const FIHandlerException&) = default;
  FIHandlerException& operator=(const FIHandlerException&) = default;
  ~FIHandlerException() override;

 private:
  objectHeader header{"QVFI", 1052, 1072};
};

// There is no message tree to ask.
class OXR_EXPORT FIMessageTreeException : public PWFException {
 public:
  FIMessageTreeException() = default;
  FIMessageTreeException(const FIMessageTreeException&) = default;
  FIMessageTreeException& operator=(const FIMessageTreeException&) = default;
  ~FIMessageTreeException() override;

 private:
  objectHeader header{"QVFM", 1052, 1080};
};
