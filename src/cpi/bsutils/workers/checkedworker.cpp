// The forms of the interfaces with all their arguments: each is checked as the base checks its shorter form.

#include "checkedworker.hpp"

namespace oxr {

namespace {

UnitView viewOf(const unsigned short* name) {
  return name == nullptr ? UnitView() : UnitView(name);
}

// By what a qualified name is known while it is open. A unit that no name of the other form has parts the two.
KelWstring qualified(const KelWstring& namespaceUri, const KelWstring& name) {
  return namespaceUri + static_cast<unsigned short>(0) + name;
}

}  // namespace

CheckedWorker::CheckedWorker(BitstreamWorker* worker) : BitstreamWorkerStateChecker(worker) {}
CheckedWorker::~CheckedWorker() = default;

void CheckedWorker::initializeParse(int mode, MessageInfo* info, int flags) {
  workerToParse(CALL_INITIALIZE_PARSE).initializeParse(mode, info, flags);
}

void CheckedWorker::parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset, int flags) {
  workerToParse(CALL_PARSE).parse(buffer, path, offset, flags);
}

void CheckedWorker::parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWholeMessage, int offset,
                               int flags) {
  workerToParse(CALL_PARSE_FIRST).parseFirst(buffer, path, isWholeMessage, offset, flags);
}

void CheckedWorker::initializeWrite(MessageInfo* info, int mode, int encoding, int flags) {
  workerToParse(CALL_INITIALIZE_WRITE).initializeWrite(info, mode, encoding, flags);
}

void CheckedWorker::write(WritableBitstreamBuffer* buffer, int mode, int flags) {
  workerToWrite(CALL_WRITE).write(buffer, mode, flags);
}

const unsigned short* CheckedWorker::getWorkerName() const {
  if (wrappedWorker() == nullptr) throw FIParseException();
  return wrappedWorker()->getWorkerName();
}

int CheckedWorker::startMessageContent(int& id, unsigned short type, const WorkerInfoPtr& info, int index, int parentId,
                                       int memberId, int flags) {
  return handlerForStart(CALL_START_CONTENT, id).startMessageContent(id, type, info, index, parentId, memberId, flags);
}

int CheckedWorker::startMessageContent(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info,
                                       int index) {
  return handlerForStart(CALL_START_CONTENT, viewOf(name)).startMessageContent(name, type, info, index);
}

int CheckedWorker::startQualifiedMessageContent(const KelWstring& namespaceUri, const KelWstring& name,
                                                unsigned short type, const WorkerInfoPtr& info, int index) {
  return handlerForStart(CALL_START_CONTENT, qualified(namespaceUri, name).view())
      .startQualifiedMessageContent(namespaceUri, name, type, info, index);
}

void CheckedWorker::endQualifiedMessageContent(const KelWstring& namespaceUri, const KelWstring& name,
                                               const WorkerInfoPtr& info) {
  handlerForEnd(CALL_END_CONTENT, qualified(namespaceUri, name).view())
      .endQualifiedMessageContent(namespaceUri, name, info);
}

void CheckedWorker::startElement(int id, unsigned short type, const WorkerInfoPtr& info, int index, int repeatIndex,
                                 int parentId, int memberId, int flags) {
  handlerForStart(CALL_START_ELEMENT_ID, id)
      .startElement(id, type, info, index, repeatIndex, parentId, memberId, flags);
}

void CheckedWorker::startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info, int index,
                                 int flags) {
  handlerForStart(CALL_START_ELEMENT_NAME, viewOf(name)).startElement(name, type, info, index, flags);
}

void CheckedWorker::startQualifiedElement(const KelWstring& namespaceUri, const KelWstring& name, unsigned short type,
                                          const WorkerInfoPtr& info, int index, int flags) {
  handlerForStart(CALL_START_ELEMENT_NAME, qualified(namespaceUri, name).view())
      .startQualifiedElement(namespaceUri, name, type, info, index, flags);
}

void CheckedWorker::endQualifiedElement(const KelWstring& namespaceUri, const KelWstring& name,
                                        const WorkerInfoPtr& info) {
  handlerForEnd(CALL_END_ELEMENT_NAME, qualified(namespaceUri, name).view())
      .endQualifiedElement(namespaceUri, name, info);
}

void CheckedWorker::unparsedContent(const void* bytes, int length, const WorkerInfoPtr& info) {
  handlerFor(CALL_DATA).unparsedContent(bytes, length, info);
}

void CheckedWorker::data(const PWFData& value, const WorkerInfoPtr& info, int index, int flags) {
  handlerFor(CALL_DATA).data(value, info, index, flags);
}

void CheckedWorker::checkRootName(const KelWstring& name, int index, const KelWstring& namespaceUri) {
  handlerNow().checkRootName(name, index, namespaceUri);
}

const unsigned short* CheckedWorker::getMsgNamespaceURI() const {
  return treeFor(CALL_GET_PROJECT_ID).getMsgNamespaceURI();
}

}  // namespace oxr
