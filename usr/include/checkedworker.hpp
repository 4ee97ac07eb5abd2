#pragma once

#include "bitstreamworkerstatechecker.hpp"

namespace oxr {

// A BitstreamWorkerStateChecker that is ready to use: it fills the forms of the interfaces that its base leaves open,
// so that a broker and a worker that know nothing of it are checked. These forms pass all their arguments on.
//
// Operations that the order of calls says nothing about:
//
//   startQualifiedElement, ...       count as the forms by name; the namespace belongs to the name
//   unparsedContent                  counts as data
//   getMsgNamespaceURI               counts as getProjectId
//   checkRootName, getWorkerName     are forwarded whatever the order
//
// Example: a broker that has one message parsed, with the order of calls checked.
//   auto* const checker = new oxr::CheckedWorker(worker);
//   checker->initializeParse(-1, &info);
//   checker->setFIHandler(&handler, false);
//   checker->parse(&buffer, nullptr, 0);
//   checker->release(true);  // the worker too
class OXR_EXPORT CheckedWorker : public BitstreamWorkerStateChecker {
 public:
  // The worker stays the caller's until release().
  explicit CheckedWorker(BitstreamWorker* worker);
  ~CheckedWorker() override;

  // Counts the elements and contents that are open. After a whole message there should be none, which no call tells.
  std::size_t openElements() const { return openEntries(); }

  using BitstreamWorkerStateChecker::initializeParse;
  void initializeParse(int mode, MessageInfo* info, int flags) override;
  using BitstreamWorkerStateChecker::parse;
  void parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset, int flags) override;
  using BitstreamWorkerStateChecker::parseFirst;
  void parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWholeMessage, int offset,
                  int flags) override;
  using BitstreamWorkerStateChecker::initializeWrite;
  void initializeWrite(MessageInfo* info, int mode, int encoding, int flags) override;
  using BitstreamWorkerStateChecker::write;
  void write(WritableBitstreamBuffer* buffer, int mode, int flags) override;
  // FIParseException if there is no worker.
  const unsigned short* getWorkerName() const override;

  using BitstreamWorkerStateChecker::startMessageContent;
  // These three return what the handler returns.
  int startMessageContent(int& id, unsigned short type, const WorkerInfoPtr& info, int index, int parentId,
                          int memberId, int flags) override;
  int startMessageContent(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info,
                          int index) override;
  int startQualifiedMessageContent(const KelWstring& namespaceUri, const KelWstring& name, unsigned short type,
                                   const WorkerInfoPtr& info, int index) override;
  void endQualifiedMessageContent(const KelWstring& namespaceUri, const KelWstring& name,
                                  const WorkerInfoPtr& info) override;
  using BitstreamWorkerStateChecker::startElement;
  void startElement(int id, unsigned short type, const WorkerInfoPtr& info, int index, int repeatIndex, int parentId,
                    int memberId, int flags) override;
  void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info, int index,
                    int flags) override;
  void startQualifiedElement(const KelWstring& namespaceUri, const KelWstring& name, unsigned short type,
                             const WorkerInfoPtr& info, int index, int flags) override;
  void endQualifiedElement(const KelWstring& namespaceUri, const KelWstring& name, const WorkerInfoPtr& info) override;
  void unparsedContent(const void* bytes, int length, const WorkerInfoPtr& info) override;
  using BitstreamWorkerStateChecker::data;
  void data(const PWFData& value, const WorkerInfoPtr& info, int index, int flags) override;
  void checkRootName(const KelWstring& name, int index, const KelWstring& namespaceUri) override;

  const unsigned short* getMsgNamespaceURI() const override;
};

}  // namespace oxr
