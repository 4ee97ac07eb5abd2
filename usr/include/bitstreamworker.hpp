#pragma once

#include <vector>

#include "bytebffr.hpp"
#include "kelheader.hpp"
#include "kelwstring.hpp"
#include "oxrexport.hpp"
#include "pwfdata.hpp"
#include "pwfexception.hpp"
#include "workerinfo.hpp"

class DictionaryInfo;  // a wire format descriptor: only ever passed on
class FIMessageTree;
class MessageInfo;

// What a message parser and writer, a bitstream worker, and the broker expect of each other. A worker is written
// against these classes; the broker drives it.
//
//   broker                      worker                      handler
//     | initializeParse  ------>  |                            |
//     | setFIHandler     ------>  |                            |
//     | parse            ------>  | startMessage     ------->  |
//     |                           | startElement, data, endElement, ...
//     |                           | endMessage       ------->  |
//     | <------------------------ |                            |
//     | getNumBytesParsed ----->  |                            |
//     | release          ------>  |                            |
//
// The calls of one worker, and all that it makes to its handler, come on one thread at a time. Failures of the data are
// the host's exceptions; a call in the wrong order is an exception of the PWFException family.
//
// -1 for an int means in all of these interfaces: not given. Operations that are marked as unused are never called by
// this library; they keep their places for others.

// Gets what a parser finds in a message, event by event.
//
// A message is startMessage, any number of elements and contents, endMessage. An element is a start, either the
// elements in it or at most one data, and an end of the same form (by number or by name) with the same number or name.
// A content is a part of the message with an element structure of its own, such as a header or the body.
//
// All arguments are the parser's and are valid during the call only: a handler that keeps a name, a value or properties
// keeps a copy. A parser may nevertheless promise more for its names. The meaning of the ints, and of the type code, is
// agreed between a parser and its handlers; whatever stands between the two passes them on unchanged.
class OXR_EXPORT FIHandler {
 public:
  // Opens a message; no other event but checkRootName may come before. `header` and `content` are the properties of the
  // message's start.
  virtual void startMessage(const WorkerInfoPtr& header, const WorkerInfoPtr& content) = 0;
  // Closes the message that startMessage opened. All its elements are closed.
  virtual void endMessage(const WorkerInfoPtr& info) = 0;

  // Opens a content that is known by number. The handler may replace `id` with the number that it knows the content by.
  // Returns whether it takes the content: 0, unless overridden.
  virtual int startMessageContent(int& id, unsigned short type, const WorkerInfoPtr& info, int index, int parentId,
                                  int memberId, int flags);
  // The same by name: zero-terminated, null for no name.
  virtual int startMessageContent(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info,
                                  int index) = 0;
  // The same by a name within a namespace. This operation is unused.
  virtual int startQualifiedMessageContent(const KelWstring& namespaceUri, const KelWstring& name, unsigned short type,
                                           const WorkerInfoPtr& info, int index) = 0;
  // Close the content that the start of the same form opened.
  virtual void endMessageContent(int id, const WorkerInfoPtr& info) = 0;
  virtual void endMessageContent(const unsigned short* name, const WorkerInfoPtr& info) = 0;
  // Closes the qualified form. This operation is unused.
  virtual void endQualifiedMessageContent(const KelWstring& namespaceUri, const KelWstring& name,
                                          const WorkerInfoPtr& info) = 0;

  // Opens an element that is known by number, inside the message or the innermost open element. `type` is the parser's
  // type code for the element. Called once an occurrence of a repeating element.
  virtual void startElement(int id, unsigned short type, const WorkerInfoPtr& info, int index, int repeatIndex,
                            int parentId, int memberId, int flags) = 0;
  // The same by name: zero-terminated, null for no name.
  virtual void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info, int index,
                            int flags) = 0;
  // The same by a name within a namespace. This operation is unused.
  virtual void startQualifiedElement(const KelWstring& namespaceUri, const KelWstring& name, unsigned short type,
                                     const WorkerInfoPtr& info, int index, int flags) = 0;
  // Close the innermost open element, which was opened by the start of the same form with the same number or name.
  virtual void endElement(int id, const WorkerInfoPtr& info) = 0;
  virtual void endElement(const unsigned short* name, const WorkerInfoPtr& info) = 0;
  // Closes the qualified form. This operation is unused.
  virtual void endQualifiedElement(const KelWstring& namespaceUri, const KelWstring& name,
                                   const WorkerInfoPtr& info) = 0;

  // Opens a message inside the message, whose events follow. The second form as startMessageContent(int&, ...).
  virtual void startEmbeddedMessage() = 0;
  virtual void startEmbeddedMessage(int& id) = 0;
  // Closes it. `isComplete` tells that all its bytes were read, `keepsContent` that its contents stay in the message.
  virtual void endEmbeddedMessage(bool isComplete, bool keepsContent) = 0;
  // Hands on a part of the message that the parser leaves unread, as bytes. This operation is unused.
  virtual void unparsedContent(const void* bytes, int length, const WorkerInfoPtr& info) = 0;

  // The value of the innermost open element: nothing if it has none, a null if it says so. Comes once, before the
  // element's end, and not in an element that has elements.
  virtual void data(const PWFData& value, const WorkerInfoPtr& info, int index, int flags) = 0;
  // A whole element in one call: its start, its data and its end, with the properties of each.
  virtual void simpleElement(const PWFData& value, const KelWstring& namespaceUri, const KelWstring& name,
                             unsigned short type, const WorkerInfoPtr& startInfo, const WorkerInfoPtr& dataInfo,
                             const WorkerInfoPtr& endInfo, int index, int repeatIndex, int parentId, int memberId,
                             int flags) = 0;

  // The model that the message follows, before its first element, and those that the model leans on.
  virtual void projectId(const unsigned short* id) = 0;
  virtual void projectDependencies(const std::vector<KelWstring>& ids) = 0;
  // Lets the handler object to the root element before it is opened. Does nothing, unless overridden.
  virtual void checkRootName(const KelWstring& name, int index, const KelWstring& namespaceUri);

  virtual ~FIHandler();

 private:
  objectHeader header{"QVFH", 8, 24};
};

// Reads a byte stream and reports what it finds to a handler.
//
// Order: initializeParse, setFIHandler, then either parse, which reads a message whole, or parseFirst and, while
// hasNext says so, parseNext, which read it part by part. The inquiries may come at any time after that. Both ways may
// be begun again, with another buffer too.
class OXR_EXPORT FIParser {
 public:
  virtual ~FIParser();

  // Prepares for a message. `info`, the message's properties (code page, encoding, ...), may be null and must stay
  // until the message is parsed. `mode` and `flags` are agreed between broker and worker.
  virtual void initializeParse(int mode, MessageInfo* info, int flags) = 0;
  // Sets who gets the events, before the first parse. The handler outlives the parser's work, unless `adopt` hands it
  // over: then the parser deletes it with itself, or when it gets another.
  virtual void setFIHandler(FIHandler* handler, bool adopt) = 0;
  // Gives the handler set last, null before.
  virtual FIHandler* getFIHandler() const = 0;

  // Reads the message at byte `offset` of `buffer` to its end and reports all of it. The buffer stays the caller's and
  // must live until the last event. `path`, which may be null, names the part that is wanted, as member numbers from
  // the root on; `offset` and `flags` may be -1.
  virtual void parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset, int flags) = 0;
  // Does the same for the first part alone. What a part is, the worker decides; it is at least one step that ends. The
  // buffer must live until the last part was parsed. `isWholeMessage` tells that the buffer ends where the message
  // does.
  virtual void parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWholeMessage, int offset,
                          int flags) = 0;
  // Reads the next part. Only after parseFirst, and while hasNext() is true.
  virtual void parseNext() = 0;
  // Tells whether a part is left that parseNext would read.
  virtual bool hasNext() const = 0;
  // How many bytes, counted from where parse or parseFirst began, the parts that were read take. 64 bits: a worker may
  // be handed more than a buffer can show at once.
  virtual PWFInt64 getNumBytesParsed() const = 0;
  // Where the message ends, counted in the same way. Parses what is left of it to find out, unless overridden.
  virtual PWFInt64 getEndOfMessageOffset();

 private:
  objectHeader header{"QVFP", 8, 24};
};

// Walks a message tree and writes its bytes.
//
// Order: initializeWrite, setFIMessageTree, write.
class OXR_EXPORT FIWriter {
 public:
  virtual ~FIWriter();

  // Prepares for a message, as initializeParse does. The ints are agreed between broker and worker, 0 as a rule.
  virtual void initializeWrite(MessageInfo* info, int mode, int encoding, int flags) = 0;
  // Sets the tree to write, which stays unchanged while it is written. It is the caller's, unless `adopt` hands it
  // over.
  virtual void setFIMessageTree(const FIMessageTree* tree, bool adopt) = 0;
  // Gives the tree set last, null before.
  virtual const FIMessageTree* getFIMessageTree() const = 0;
  // Appends the message to `buffer`, which stays the caller's. The ints as in initializeWrite.
  virtual void write(WritableBitstreamBuffer* buffer, int mode, int flags) = 0;

 private:
  objectHeader header{"QVFW", 8, 24};
};

// A worker: parser and writer of one message format. A worker that does only one of the two throws FIParseException or
// FIWriteException on the other side.
//
// Example: how a broker has a message parsed. `MyWorker` derives from this class, `handler` from FIHandler.
//   BitstreamWorker* const worker = new MyWorker;
//   worker->initializeParse(-1, &info, -1);
//   worker->setFIHandler(&handler, false);
//   worker->parse(&buffer, nullptr, -1, -1);
//   const PWFInt64 bytes = worker->getNumBytesParsed();
//   worker->release(true);
class OXR_EXPORT BitstreamWorker : public FIParser, public FIWriter {
 public:
  ~BitstreamWorker() override;

  // The wire format descriptor that the worker is to follow, null for none. Set between initialisation and the first
  // parse or write; it stays the caller's.
  virtual const DictionaryInfo* getWireFormatDescriptor() const = 0;
  virtual void setWireFormatDescriptor(const DictionaryInfo* descriptor) = 0;
  // Ends the use of the worker, which may delete itself: the caller does not touch it again. `discard` asks that it be
  // deleted, not kept for another message.
  virtual void release(bool discard) = 0;
  // Gives a name of the worker for messages, zero-terminated and static. This operation is unused.
  virtual const unsigned short* getWorkerName() const = 0;

 private:
  objectHeader header{"QVFB", 48, 72};
};
