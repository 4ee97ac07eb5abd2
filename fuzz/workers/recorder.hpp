#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "bitstreamworker.hpp"
#include "fimessagetree.hpp"

// A worker, a handler and a tree that keep what was said to them last, each argument as it came: numbers as such, and
// whatever was handed over by reference or pointer as its address, so that a copy on the way shows.
namespace oxr::fuzz {

inline std::string shown(std::integral auto value) {
  return std::to_string(value);
}
inline std::string shown(const void* pointer) {
  return '@' + std::to_string(reinterpret_cast<std::uintptr_t>(pointer));
}
template <class T>
requires std::is_class_v<T> std::string shown(const T& object) {
  return shown(static_cast<const void*>(&object));
}
// One call: "name argument argument".
template <class... Arguments>
std::string call(const char* name, const Arguments&... arguments) {
  std::string text = name;
  (..., (text += ' ' + shown(arguments)));
  return text;
}

class Recorder {
 public:
  std::string taken() const { return std::exchange(said_, {}); }

 protected:
  template <class... Arguments>
  void say(const char* name, const Arguments&... arguments) const {
    said_ += call(name, arguments...);
  }

 private:
  mutable std::string said_;
};

// The texts and numbers that are given back.
inline constexpr unsigned short kText[] = {'t', 0};
inline constexpr int kNumber = 77;

class RecordingHandler : public FIHandler, public Recorder {
 public:
  using Info = WorkerInfoPtr;
  using Name = unsigned short;
  void startMessage(const Info& a, const Info& b) override { say("startMessage", a, b); }
  void endMessage(const Info& a) override { say("endMessage", a); }
  int startMessageContent(int& id, unsigned short type, const Info& a, int b, int c, int d, int e) override {
    say("startMessageContent", id, type, a, b, c, d, e);
    return ++id, kNumber;
  }
  int startMessageContent(const Name* name, unsigned short type, const Info& a, int b) override {
    return say("startMessageContent", name, type, a, b), kNumber;
  }
  int startQualifiedMessageContent(const KelWstring& uri, const KelWstring& name, unsigned short type, const Info& a,
                                   int b) override {
    return say("startQualifiedMessageContent", uri, name, type, a, b), kNumber;
  }
  void endMessageContent(int id, const Info& a) override { say("endMessageContent", id, a); }
  void endMessageContent(const Name* name, const Info& a) override { say("endMessageContent", name, a); }
  void endQualifiedMessageContent(const KelWstring& uri, const KelWstring& name, const Info& a) override {
    say("endQualifiedMessageContent", uri, name, a);
  }
  void startElement(int id, unsigned short type, const Info& a, int b, int c, int d, int e, int f) override {
    say("startElement", id, type, a, b, c, d, e, f);
  }
  void startElement(const Name* name, unsigned short type, const Info& a, int b, int c) override {
    say("startElement", name, type, a, b, c);
  }
  void startQualifiedElement(const KelWstring& uri, const KelWstring& name, unsigned short type, const Info& a, int b,
                             int c) override {
    say("startQualifiedElement", uri, name, type, a, b, c);
  }
  void endElement(int id, const Info& a) override { say("endElement", id, a); }
  void endElement(const Name* name, const Info& a) override { say("endElement", name, a); }
  void endQualifiedElement(const KelWstring& uri, const KelWstring& name, const Info& a) override {
    say("endQualifiedElement", uri, name, a);
  }
  void startEmbeddedMessage() override { say("startEmbeddedMessage"); }
  void startEmbeddedMessage(int& id) override { say("startEmbeddedMessage", id++); }
  void endEmbeddedMessage(bool a, bool b) override { say("endEmbeddedMessage", a, b); }
  void unparsedContent(const void* bytes, int length, const Info& a) override {
    say("unparsedContent", bytes, length, a);
  }
  void data(const PWFData& value, const Info& a, int b, int c) override { say("data", value, a, b, c); }
  void simpleElement(const PWFData& value, const KelWstring& uri, const KelWstring& name, unsigned short type,
                     const Info& a, const Info& b, const Info& c, int d, int e, int f, int g, int h) override {
    say("simpleElement", value, uri, name, type, a, b, c, d, e, f, g, h);
  }
  void projectId(const Name* id) override { say("projectId", id); }
  void projectDependencies(const std::vector<KelWstring>& ids) override { say("projectDependencies", ids); }
  void checkRootName(const KelWstring& name, int index, const KelWstring& uri) override {
    say("checkRootName", name, index, uri);
  }
};

// A place in a tree of one node, whose answers nobody minds. A number is told by its label in the trace of a tree.
class PlainPlace : public FITreeIteratorImpl {
 public:
  virtual int number(const char*) const { return 0; }

  bool operator==(const FITreeIteratorImpl* other) const override { return other == this; }
  bool moveToParent() override { return false; }
  bool moveToFirstChild() override { return false; }
  bool moveToPreviousSibling() override { return false; }
  bool moveToNextSibling() override { return false; }
  int getItemTypeIndex() const override { return number("ItemTypeIndex"); }
  int getTagId() const override { return number("TagId"); }
  const unsigned short* getTagName() const override { return nullptr; }
  KelWstring getNamespaceURI() const override { return {}; }
  int getMemberId() const override { return number("MemberId"); }
  int getTagIndex() const override { return number("TagIndex"); }
  int getMemberIndex() const override { return number("MemberIndex"); }
  int getTypeIndex() const override { return number("TypeIndex"); }
  const std::vector<int>* getMemberIdPath() const override { return nullptr; }
  const std::vector<PartialMember>* getPartialMemberPath() const override { return &kNoMembers; }
  int getCategory() const override { return number("Category"); }
  int getRepeatIndex() const override { return number("RepeatIndex"); }
  int getPathBasedInfoIndex() const override { return number("PathBasedInfoIndex"); }
  int getPathBasedInfoCount() const override { return number("PathBasedInfoCount"); }
  int getMinOccurs() const override { return number("MinOccurs"); }
  int getMaxOccurs() const override { return number("MaxOccurs"); }
  int getOccurrences() const override { return number("Occurrences"); }
  int getMinLength() const override { return number("MinLength"); }
  int getMaxLength() const override { return number("MaxLength"); }
  int getIsNullable() const override { return number("IsNullable"); }
  PWFData getData() const override { return PWFData(NOTHING); }
  PWFData getDefaultData() const override { return PWFData(NOTHING); }
  WorkerInfoPtr getStartWorkerInfo() const override { return {}; }
  WorkerInfoPtr getDataWorkerInfo() const override { return {}; }
  WorkerInfoPtr getEndWorkerInfo() const override { return {}; }
  bool hasTreeChanged() const override { return number("HasTreeChanged") != 0; }
  bool isBitStream() const override { return false; }
  bool isValid() const override { return true; }
  void loadDictionaryAndDescriptor() override {}
  void releaseDictionaryAndDescriptor() override {}
  FITreeIteratorImpl* clone() const override { return new PlainPlace(*this); }

 private:
  static inline const std::vector<PartialMember> kNoMembers;
};

class RecordingTree : public FIMessageTree, public Recorder {
 public:
  const unsigned short* getProjectId() const override { return say("getProjectId"), kText; }
  int getNumProjDependencies() const override { return say("getNumProjDependencies"), kNumber; }
  const unsigned short* getProjDependency(int i) const override { return say("getProjDependency", i), kText; }
  WorkerInfoPtr getMsgStartWorkerInfo() const override { return say("getMsgStartWorkerInfo"), start; }
  WorkerInfoPtr getMsgEndWorkerInfo() const override { return say("getMsgEndWorkerInfo"), end; }
  FITreeIterator getMsgHeaderIterator() const override { return say("getMsgHeaderIterator"), FITreeIterator(); }
  FITreeIterator getMsgContentIterator() const override { return say("getMsgContentIterator"), FITreeIterator(); }
  FITreeIterator getMsgFooterIterator() const override { return say("getMsgFooterIterator"), FITreeIterator(); }
  const unsigned short* getMsgNamespaceURI() const override { return say("getMsgNamespaceURI"), kText; }

  const WorkerInfoPtr start{new MapWorkerInfo}, end{new MapWorkerInfo};
};

class RecordingWorker : public BitstreamWorker, public Recorder {
 public:
  void initializeParse(int mode, MessageInfo* info, int flags) override { say("initializeParse", mode, info, flags); }
  void setFIHandler(FIHandler* handler, bool adopt) override { say("setFIHandler", handler, adopt); }
  FIHandler* getFIHandler() const override { return say("getFIHandler"), nullptr; }
  void parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset, int flags) override {
    say("parse", buffer, path, offset, flags);
  }
  void parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWhole, int offset, int flags) override {
    say("parseFirst", buffer, path, isWhole, offset, flags);
  }
  void parseNext() override { say("parseNext"), --partsLeft; }
  bool hasNext() const override { return say("hasNext"), partsLeft > 0; }
  PWFInt64 getNumBytesParsed() const override { return say("getNumBytesParsed"), kNumber; }
  void initializeWrite(MessageInfo* info, int mode, int encoding, int flags) override {
    say("initializeWrite", info, mode, encoding, flags);
  }
  void setFIMessageTree(const FIMessageTree* tree, bool adopt) override { say("setFIMessageTree", tree, adopt); }
  const FIMessageTree* getFIMessageTree() const override { return say("getFIMessageTree"), nullptr; }
  void write(WritableBitstreamBuffer* buffer, int mode, int flags) override { say("write", buffer, mode, flags); }
  const DictionaryInfo* getWireFormatDescriptor() const override { return say("getWireFormatDescriptor"), descriptor; }
  void setWireFormatDescriptor(const DictionaryInfo* given) override {
    say("setWireFormatDescriptor", given);
    descriptor = given;
  }
  void release(bool discard) override { say("release", discard); }
  const unsigned short* getWorkerName() const override { return say("getWorkerName"), kText; }

  int partsLeft = 0;
  const DictionaryInfo* descriptor = nullptr;
};

}  // namespace oxr::fuzz
