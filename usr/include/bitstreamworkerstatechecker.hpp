#pragma once

#include <deque>
#include <memory>

#include "bitstreamworker.hpp"
#include "bitstreamworkercall.hpp"
#include "fimessagetree.hpp"

// An element or content that is open, as its start named it.
class OXR_EXPORT IDInfo {
 public:
  // Makes one of a start that gave a number, or a name, which is copied.
  explicit IDInfo(int number) : isId(1), id(number) {}
  explicit IDInfo(oxr::UnitView text) : isId(0), name(text), id(0) {}

  // Tell whether the start gave this number, or this name.
  bool isNumbered(int number) const { return isId == 1 && id == number; }
  bool isNamed(oxr::UnitView text) const { return isId == 0 && name.view() == text; }

 private:
  objectHeader header{"QVBI", 0, 80};
  int isId;  // 1 when identified by number, 0 when by name
  KelBufferedWstring<16u> name;
  int id;
};

// Stands between the broker and a worker and holds both to the order of their calls: a worker to the broker, a handler
// to the worker while it parses, a message tree to the worker while it writes.
//
//   broker  --- initializeParse, setFIHandler, parse --->  checker  --- the same --->  worker
//   handler <--- startMessage, startElement, data ------   checker  <--- the same ---  worker
//   tree    <--- getMsgContentIterator, ... ------------   checker  <--- the same ---  worker
//
// Each call is validated and then forwarded. A call out of order raises and is not forwarded:
//
// - FIParseException: a call of the parser's side that does not fit, or an event while nothing is parsed. No worker.
// - FIWriteException: a call between initializeWrite and the end of write that does not fit. No worker to write with.
// - FIHandlerException: an event that does not fit the message's shape, an end that does not match its start. No
//   handler.
// - FIMessageTreeException: no tree.
//
// The order is looked at first, then the open elements, then whether there is anybody to forward to. A refusal of the
// first kind leaves the order where it was. One of the other two comes too late for that: an end that does not match
// its start, or an event that finds no handler, has been counted as an event all the same. After a refusal a checker is
// of no more use than to be released.
//
// A checker serves one worker, for one parse or one write of one message. What it admits of a parse is startMessage, an
// element by name, in it and after it elements with their data, endMessage. docs/workers.md has pictures of both
// orders.
//
// The operations here have the arguments that matter to most; what the interfaces have beyond them is passed on as -1,
// or as 0 to a writer. The interfaces' own forms stay callable and are not checked: a subclass fills them, also the
// startMessageContent that has a default. oxr::CheckedWorker is one that is ready to use.
//
// A content is remembered by the number that its start was given, whatever a handler makes of that. traceTree() of a
// checker asks its own getters, which are in order only while it writes.
//
// A checker borrows its worker, its handler and its tree. It is used by one thread at a time.
class OXR_EXPORT BitstreamWorkerStateChecker : public BitstreamWorker, public FIHandler, public FIMessageTree {
 public:
  // A null worker is refused when it is needed, but for initializeParse, setFIHandler and getWireFormatDescriptor,
  // which do not look: there it must not be null.
  explicit BitstreamWorkerStateChecker(BitstreamWorker* worker);
  // Writes "ERROR: there were N items left on idContext stack" to standard output, N being the elements and contents
  // that are still open, 0 too. Leaves worker, handler and tree alone.
  ~BitstreamWorkerStateChecker() override;

  // The parser's side: calls in order are forwarded, the others raise. The virtual forms here are those that the worker
  // has, without the arguments that are reserved there.
  using BitstreamWorker::initializeParse;
  virtual void initializeParse(int mode, MessageInfo* info);
  using BitstreamWorker::parse;
  virtual void parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset);
  using BitstreamWorker::parseFirst;
  virtual void parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWholeMessage, int offset);
  // Keeps `handler`, which stays the caller's whatever `adopt` says: the worker reports to the checker.
  void setFIHandler(FIHandler* handler, bool adopt) override;
  FIHandler* getFIHandler() const override;
  void parseNext() override;
  bool hasNext() const override;
  PWFInt64 getNumBytesParsed() const override;
  const DictionaryInfo* getWireFormatDescriptor() const override;
  // FIWriteException if there is no worker.
  void setWireFormatDescriptor(const DictionaryInfo* descriptor) override;
  // Releases the worker and deletes the checker, which stays if the worker's release throws. May come at any time;
  // FIParseException if there is no worker.
  void release(bool discard) override;

  // The writer's side.
  using BitstreamWorker::initializeWrite;
  // The flag is not looked at. FIParseException if there is no worker.
  virtual void initializeWrite(MessageInfo* info, bool* flag);
  // Keeps `tree`, which stays the caller's whatever `adopt` says: the worker reads the checker.
  void setFIMessageTree(const FIMessageTree* tree, bool adopt) override;
  const FIMessageTree* getFIMessageTree() const override;
  using BitstreamWorker::write;
  // Forwards the call with the arguments that the worker's form has.
  virtual void write(WritableBitstreamBuffer* buffer);

  // The handler's side. A start is kept until its end, which must have the same form and the same number or name.
  using FIHandler::startElement;
  virtual void startElement(int id, unsigned short type, const WorkerInfoPtr& info, int index, int repeatIndex);
  virtual void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info, int index);
  void endElement(int id, const WorkerInfoPtr& info) override;
  void endElement(const unsigned short* name, const WorkerInfoPtr& info) override;
  void startMessage(const WorkerInfoPtr& headerInfo, const WorkerInfoPtr& contentInfo) override;
  // Reports no event: it is forwarded whatever the order.
  void endMessage(const WorkerInfoPtr& info) override;
  using FIHandler::startMessageContent;
  // Both return 1.
  virtual int startMessageContent(int& id, unsigned short type, const WorkerInfoPtr& info);
  void endMessageContent(int id, const WorkerInfoPtr& info) override;
  virtual int startMessageContent(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info);
  void endMessageContent(const unsigned short* name, const WorkerInfoPtr& info) override;
  using FIHandler::data;
  // Forwards a value of the element that is open.
  virtual void data(const PWFData& value, const WorkerInfoPtr& info);
  void simpleElement(const PWFData& value, const KelWstring& namespaceUri, const KelWstring& name, unsigned short type,
                     const WorkerInfoPtr& startInfo, const WorkerInfoPtr& dataInfo, const WorkerInfoPtr& endInfo,
                     int index, int repeatIndex, int parentId, int memberId, int flags) override;
  void projectId(const unsigned short* id) override;
  // Reports the event of the getters, which is refused while a message is parsed.
  void projectDependencies(const std::vector<KelWstring>& ids) override;
  void startEmbeddedMessage() override;
  void startEmbeddedMessage(int& id) override;
  void endEmbeddedMessage(bool isComplete, bool keepsContent) override;

  // The tree's side: while the worker writes.
  const unsigned short* getProjectId() const override;
  int getNumProjDependencies() const override;
  const unsigned short* getProjDependency(int index) const override;
  WorkerInfoPtr getMsgStartWorkerInfo() const override;
  WorkerInfoPtr getMsgEndWorkerInfo() const override;
  FITreeIterator getMsgHeaderIterator() const override;
  FITreeIterator getMsgContentIterator() const override;
  FITreeIterator getMsgFooterIterator() const override;

 protected:
  // Takes the call or raises; see core/workermachine.hpp and core/treemachine.hpp of the sources.
  void _validateAndTransitionState(EBitstreamWorkerCall call) const;
  void _performTreeStateTransition(EBitstreamWorkerCall call) const;

  // What an operation does before it forwards: it validates the call and gives who is next, or raises if there is
  // nobody.
  BitstreamWorker& workerToParse(EBitstreamWorkerCall call) const;
  BitstreamWorker& workerToWrite(EBitstreamWorkerCall call) const;
  FIHandler& handlerFor(EBitstreamWorkerCall call) const;
  const FIMessageTree& treeFor(EBitstreamWorkerCall call) const;
  // The same for an event that opens or closes something, known by number or by name.
  FIHandler& handlerForStart(EBitstreamWorkerCall call, int id);
  FIHandler& handlerForStart(EBitstreamWorkerCall call, oxr::UnitView name);
  FIHandler& handlerForEnd(EBitstreamWorkerCall call, int id);
  FIHandler& handlerForEnd(EBitstreamWorkerCall call, oxr::UnitView name);
  // Gives who is next for what reports no event.
  FIHandler& handlerNow() const;

  // Gives the worker, which may be null.
  BitstreamWorker* wrappedWorker() const { return worker_; }
  // Counts the elements and contents that are open.
  std::size_t openEntries() const { return idContext_.size(); }

 private:
  void open(EBitstreamWorkerCall call, std::unique_ptr<IDInfo> entry);
  void pop(bool isMatch);

  objectHeader header{"QVBS", 144, 272};
  BitstreamWorker* worker_;
  FIHandler* handler_ = nullptr;
  const FIMessageTree* tree_ = nullptr;
  mutable int workerState_ = 0;
  mutable int treeState_ = 0;
  std::deque<std::unique_ptr<IDInfo>> idContext_;  // the newest at the back
};
