// Each operation is one line: the call is validated, what it opens or closes is put on the stack or taken from it, and
// then it goes to whom it is for. That order shows: what fails at a later step has been taken by the steps before it.

#include "bitstreamworkerstatechecker.hpp"

#include <array>
#include <cstdio>
#include <iostream>

#include "core/treemachine.hpp"
#include "core/workermachine.hpp"

namespace {

constexpr int kNotGiven = -1;

// No name is the empty name.
oxr::UnitView viewOf(const unsigned short* name) {
  return name == nullptr ? oxr::UnitView() : oxr::UnitView(name);
}

// What `pointer` leads to; raises if it is null.
template <class Misuse, class T>
T& existing(T* pointer) {
  if (pointer == nullptr) throw Misuse();
  return *pointer;
}

}  // namespace

BitstreamWorkerStateChecker::BitstreamWorkerStateChecker(BitstreamWorker* worker) : worker_(worker) {}

BitstreamWorkerStateChecker::~BitstreamWorkerStateChecker() {
  // In one piece, so that no other thread's line comes between, and without memory: nothing may leave a destructor.
  std::array<char, 80> line;
  std::snprintf(line.data(), line.size(), "ERROR: there were %zu items left on idContext stack", idContext_.size());
  std::cout << line.data() << std::endl;
}

void BitstreamWorkerStateChecker::_validateAndTransitionState(EBitstreamWorkerCall call) const {
  using Verdict = oxr::core::WorkerStep::Verdict;
  const oxr::core::WorkerStep step = oxr::core::workerStep(workerState_, call);
  switch (step.verdict) {
    case Verdict::taken:
      workerState_ = step.to;
      return;
    case Verdict::forTree:
      return _performTreeStateTransition(call);
    case Verdict::writeMisuse:
      throw FIWriteException();
    case Verdict::parseMisuse:
      throw FIParseException();
  }
}

// A refused event may change the state: StateChecker.EachPairOfStateAndCallIsJudged.
void BitstreamWorkerStateChecker::_performTreeStateTransition(EBitstreamWorkerCall call) const {
  const oxr::core::TreeStep step = oxr::core::treeStep(treeState_, call);
  treeState_ = step.to;
  if (!step.isTaken) throw FIHandlerException();
}

BitstreamWorker& BitstreamWorkerStateChecker::workerToParse(EBitstreamWorkerCall call) const {
  _validateAndTransitionState(call);
  return existing<FIParseException>(worker_);
}

BitstreamWorker& BitstreamWorkerStateChecker::workerToWrite(EBitstreamWorkerCall call) const {
  _validateAndTransitionState(call);
  return existing<FIWriteException>(worker_);
}

FIHandler& BitstreamWorkerStateChecker::handlerNow() const {
  return existing<FIHandlerException>(handler_);
}

FIHandler& BitstreamWorkerStateChecker::handlerFor(EBitstreamWorkerCall call) const {
  _validateAndTransitionState(call);
  return handlerNow();
}

const FIMessageTree& BitstreamWorkerStateChecker::treeFor(EBitstreamWorkerCall call) const {
  _validateAndTransitionState(call);
  return existing<FIMessageTreeException>(tree_);
}

FIHandler& BitstreamWorkerStateChecker::handlerForStart(EBitstreamWorkerCall call, int id) {
  open(call, std::make_unique<IDInfo>(id));
  return handlerNow();
}

FIHandler& BitstreamWorkerStateChecker::handlerForStart(EBitstreamWorkerCall call, oxr::UnitView name) {
  open(call, std::make_unique<IDInfo>(name));
  return handlerNow();
}

FIHandler& BitstreamWorkerStateChecker::handlerForEnd(EBitstreamWorkerCall call, int id) {
  _validateAndTransitionState(call);
  pop(!idContext_.empty() && idContext_.back()->isNumbered(id));
  return handlerNow();
}

FIHandler& BitstreamWorkerStateChecker::handlerForEnd(EBitstreamWorkerCall call, oxr::UnitView name) {
  _validateAndTransitionState(call);
  pop(!idContext_.empty() && idContext_.back()->isNamed(name));
  return handlerNow();
}

// The entry gets its place first: a start that finds no memory for it has not been taken, and can be told again.
void BitstreamWorkerStateChecker::open(EBitstreamWorkerCall call, std::unique_ptr<IDInfo> entry) {
  idContext_.push_back(std::move(entry));
  try {
    _validateAndTransitionState(call);
  } catch (...) {
    idContext_.pop_back();
    throw;
  }
}

// Closes the newest entry if it is the one that an end names; else leaves it open and raises.
void BitstreamWorkerStateChecker::pop(bool isMatch) {
  if (!isMatch) throw FIHandlerException();
  idContext_.pop_back();
}

// The parser's side. A null worker is looked for where the contract says so, and nowhere else.

void BitstreamWorkerStateChecker::initializeParse(int mode, MessageInfo* info) {
  _validateAndTransitionState(CALL_INITIALIZE_PARSE);
  worker_->initializeParse(mode, info, kNotGiven);
}

void BitstreamWorkerStateChecker::setFIHandler(FIHandler* handler, bool) {
  _validateAndTransitionState(CALL_SET_HANDLER);
  handler_ = handler;
  worker_->setFIHandler(this, false);
}

FIHandler* BitstreamWorkerStateChecker::getFIHandler() const {
  _validateAndTransitionState(CALL_GET_HANDLER);
  return handler_;
}

void BitstreamWorkerStateChecker::parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset) {
  workerToParse(CALL_PARSE).parse(buffer, path, offset, kNotGiven);
}

void BitstreamWorkerStateChecker::parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWholeMessage,
                                             int offset) {
  workerToParse(CALL_PARSE_FIRST).parseFirst(buffer, path, isWholeMessage, offset, kNotGiven);
}

void BitstreamWorkerStateChecker::parseNext() {
  workerToParse(CALL_PARSE_NEXT).parseNext();
}

bool BitstreamWorkerStateChecker::hasNext() const {
  return workerToParse(CALL_HAS_NEXT).hasNext();
}

PWFInt64 BitstreamWorkerStateChecker::getNumBytesParsed() const {
  return workerToParse(CALL_GET_BYTES_PARSED).getNumBytesParsed();
}

const DictionaryInfo* BitstreamWorkerStateChecker::getWireFormatDescriptor() const {
  _validateAndTransitionState(CALL_GET_DESCRIPTOR);
  return worker_->getWireFormatDescriptor();
}

void BitstreamWorkerStateChecker::setWireFormatDescriptor(const DictionaryInfo* descriptor) {
  workerToWrite(CALL_SET_DESCRIPTOR).setWireFormatDescriptor(descriptor);
}

void BitstreamWorkerStateChecker::release(bool discard) {
  existing<FIParseException>(worker_).release(discard);
  delete this;
}

// The writer's side.

void BitstreamWorkerStateChecker::initializeWrite(MessageInfo* info, bool*) {
  workerToParse(CALL_INITIALIZE_WRITE).initializeWrite(info, 0, 0, 0);
}

void BitstreamWorkerStateChecker::setFIMessageTree(const FIMessageTree* tree, bool) {
  _validateAndTransitionState(CALL_SET_TREE);
  tree_ = tree;
  existing<FIWriteException>(worker_).setFIMessageTree(this, false);
}

const FIMessageTree* BitstreamWorkerStateChecker::getFIMessageTree() const {
  _validateAndTransitionState(CALL_GET_TREE);
  return tree_;
}

void BitstreamWorkerStateChecker::write(WritableBitstreamBuffer* buffer) {
  workerToWrite(CALL_WRITE).write(buffer, 0, 0);
}

// The handler's side.

void BitstreamWorkerStateChecker::startElement(int id, unsigned short type, const WorkerInfoPtr& info, int index,
                                               int repeatIndex) {
  handlerForStart(CALL_START_ELEMENT_ID, id)
      .startElement(id, type, info, index, repeatIndex, kNotGiven, kNotGiven, kNotGiven);
}

void BitstreamWorkerStateChecker::startElement(const unsigned short* name, unsigned short type,
                                               const WorkerInfoPtr& info, int index) {
  handlerForStart(CALL_START_ELEMENT_NAME, viewOf(name)).startElement(name, type, info, index, kNotGiven);
}

void BitstreamWorkerStateChecker::endElement(int id, const WorkerInfoPtr& info) {
  handlerForEnd(CALL_END_ELEMENT_ID, id).endElement(id, info);
}

void BitstreamWorkerStateChecker::endElement(const unsigned short* name, const WorkerInfoPtr& info) {
  handlerForEnd(CALL_END_ELEMENT_NAME, viewOf(name)).endElement(name, info);
}

void BitstreamWorkerStateChecker::startMessage(const WorkerInfoPtr& headerInfo, const WorkerInfoPtr& contentInfo) {
  handlerFor(CALL_START_MESSAGE).startMessage(headerInfo, contentInfo);
}

void BitstreamWorkerStateChecker::endMessage(const WorkerInfoPtr& info) {
  handlerNow().endMessage(info);
}

int BitstreamWorkerStateChecker::startMessageContent(int& id, unsigned short type, const WorkerInfoPtr& info) {
  handlerForStart(CALL_START_CONTENT, id)
      .startMessageContent(id, type, info, kNotGiven, kNotGiven, kNotGiven, kNotGiven);
  return 1;
}

int BitstreamWorkerStateChecker::startMessageContent(const unsigned short* name, unsigned short type,
                                                     const WorkerInfoPtr& info) {
  handlerForStart(CALL_START_CONTENT, viewOf(name)).startMessageContent(name, type, info, kNotGiven);
  return 1;
}

void BitstreamWorkerStateChecker::endMessageContent(int id, const WorkerInfoPtr& info) {
  handlerForEnd(CALL_END_CONTENT, id).endMessageContent(id, info);
}

void BitstreamWorkerStateChecker::endMessageContent(const unsigned short* name, const WorkerInfoPtr& info) {
  handlerForEnd(CALL_END_CONTENT, viewOf(name)).endMessageContent(name, info);
}

void BitstreamWorkerStateChecker::data(const PWFData& value, const WorkerInfoPtr& info) {
  handlerFor(CALL_DATA).data(value, info, kNotGiven, kNotGiven);
}

void BitstreamWorkerStateChecker::simpleElement(const PWFData& value, const KelWstring& namespaceUri,
                                                const KelWstring& name, unsigned short type,
                                                const WorkerInfoPtr& startInfo, const WorkerInfoPtr& dataInfo,
                                                const WorkerInfoPtr& endInfo, int index, int repeatIndex, int parentId,
                                                int memberId, int flags) {
  handlerFor(CALL_DATA).simpleElement(value, namespaceUri, name, type, startInfo, dataInfo, endInfo, index, repeatIndex,
                                      parentId, memberId, flags);
}

void BitstreamWorkerStateChecker::projectId(const unsigned short* id) {
  handlerFor(CALL_PROJECT_ID).projectId(id);
}

void BitstreamWorkerStateChecker::projectDependencies(const std::vector<KelWstring>& ids) {
  handlerFor(CALL_GET_PROJECT_DEPENDENCY).projectDependencies(ids);
}

void BitstreamWorkerStateChecker::startEmbeddedMessage() {
  handlerFor(CALL_START_EMBEDDED).startEmbeddedMessage();
}

void BitstreamWorkerStateChecker::startEmbeddedMessage(int& id) {
  handlerFor(CALL_START_EMBEDDED).startEmbeddedMessage(id);
}

void BitstreamWorkerStateChecker::endEmbeddedMessage(bool isComplete, bool keepsContent) {
  handlerFor(CALL_END_EMBEDDED).endEmbeddedMessage(isComplete, keepsContent);
}

// The tree's side.

const unsigned short* BitstreamWorkerStateChecker::getProjectId() const {
  return treeFor(CALL_GET_PROJECT_ID).getProjectId();
}

int BitstreamWorkerStateChecker::getNumProjDependencies() const {
  return treeFor(CALL_GET_PROJECT_DEPENDENCY).getNumProjDependencies();
}

const unsigned short* BitstreamWorkerStateChecker::getProjDependency(int index) const {
  return treeFor(CALL_GET_PROJECT_DEPENDENCY).getProjDependency(index);
}

WorkerInfoPtr BitstreamWorkerStateChecker::getMsgStartWorkerInfo() const {
  return treeFor(CALL_GET_MSG_START_INFO).getMsgStartWorkerInfo();
}

WorkerInfoPtr BitstreamWorkerStateChecker::getMsgEndWorkerInfo() const {
  return treeFor(CALL_GET_MSG_END_INFO).getMsgEndWorkerInfo();
}

FITreeIterator BitstreamWorkerStateChecker::getMsgHeaderIterator() const {
  return treeFor(CALL_GET_MSG_HEADER).getMsgHeaderIterator();
}

FITreeIterator BitstreamWorkerStateChecker::getMsgContentIterator() const {
  return treeFor(CALL_GET_MSG_CONTENT).getMsgContentIterator();
}

FITreeIterator BitstreamWorkerStateChecker::getMsgFooterIterator() const {
  return treeFor(CALL_GET_MSG_FOOTER).getMsgFooterIterator();
}
