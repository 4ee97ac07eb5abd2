#pragma once

#include <bitstreamworker.hpp>
#include <fimessagetree.hpp>
#include <memory>
#include <vector>

// A broker's part in the example: a message as a tree in memory, the handler that builds it from a parser's events, and
// the iterator by which a writer walks it. Elements have names; numbers, contents and properties are left out.
struct Node {
  KelWstring name;
  PWFData value{NOTHING};
  Node* parent = nullptr;
  std::vector<std::unique_ptr<Node>> children;
  std::size_t index = 0;  // among its parent's children
};

// A place in the tree: a node. The tree outlives it.
class Place final : public FITreeIteratorImpl {
 public:
  explicit Place(const Node* node) : node_(node) {}

  bool operator==(const FITreeIteratorImpl* other) const override {
    const auto* const place = dynamic_cast<const Place*>(other);
    return place != nullptr && place->node_ == node_;
  }
  bool moveToParent() override { return moveTo(node_->parent); }
  bool moveToFirstChild() override { return moveTo(node_->children.empty() ? nullptr : node_->children[0].get()); }
  bool moveToPreviousSibling() override { return moveTo(sibling(node_->index - 1)); }
  bool moveToNextSibling() override { return moveTo(sibling(node_->index + 1)); }

  const unsigned short* getTagName() const override { return node_->name.characters(); }
  // A field or a structure that no model defines.
  int getCategory() const override { return node_->children.empty() ? 0 : 2; }
  PWFData getData() const override { return node_->value; }
  PWFData getDefaultData() const override { return PWFData(NOTHING); }
  bool isValid() const override { return true; }
  bool hasTreeChanged() const override { return false; }
  bool isBitStream() const override { return false; }
  FITreeIteratorImpl* clone() const override { return new Place(*this); }

  int getItemTypeIndex() const override { return -1; }
  int getTagId() const override { return -1; }
  KelWstring getNamespaceURI() const override { return {}; }
  int getMemberId() const override { return -1; }
  int getTagIndex() const override { return -1; }
  int getMemberIndex() const override { return -1; }
  int getTypeIndex() const override { return -1; }
  const std::vector<int>* getMemberIdPath() const override { return nullptr; }
  const std::vector<PartialMember>* getPartialMemberPath() const override {
    static const std::vector<PartialMember> none;
    return &none;
  }
  int getRepeatIndex() const override { return -1; }
  int getPathBasedInfoIndex() const override { return -1; }
  int getPathBasedInfoCount() const override { return 0; }
  int getMinOccurs() const override { return 1; }
  int getMaxOccurs() const override { return 1; }
  int getOccurrences() const override { return 1; }
  int getMinLength() const override { return -1; }
  int getMaxLength() const override { return -1; }
  int getIsNullable() const override { return 1; }
  WorkerInfoPtr getStartWorkerInfo() const override { return {}; }
  WorkerInfoPtr getDataWorkerInfo() const override { return {}; }
  WorkerInfoPtr getEndWorkerInfo() const override { return {}; }
  void loadDictionaryAndDescriptor() override {}
  void releaseDictionaryAndDescriptor() override {}

 private:
  const Node* sibling(std::size_t index) const {
    const Node* const parent = node_->parent;
    return parent != nullptr && index < parent->children.size() ? parent->children[index].get() : nullptr;
  }
  bool moveTo(const Node* node) {
    if (node != nullptr) node_ = node;
    return node != nullptr;
  }

  const Node* node_;
};

// A message with a content, whose root is the first element that was parsed.
class MemoryTree final : public FIMessageTree {
 public:
  Node& top() { return top_; }

  FITreeIterator getMsgContentIterator() const override {
    return top_.children.empty() ? FITreeIterator() : FITreeIterator(new Place(top_.children[0].get()), false);
  }
  const unsigned short* getProjectId() const override { return nullptr; }
  int getNumProjDependencies() const override { return 0; }
  const unsigned short* getProjDependency(int) const override { return nullptr; }
  WorkerInfoPtr getMsgStartWorkerInfo() const override { return {}; }
  WorkerInfoPtr getMsgEndWorkerInfo() const override { return {}; }
  FITreeIterator getMsgHeaderIterator() const override { return {}; }
  FITreeIterator getMsgFooterIterator() const override { return {}; }
  const unsigned short* getMsgNamespaceURI() const override { return nullptr; }

 private:
  Node top_;  // above the root
};

// Builds the tree of a message from its events. What no worker of this example reports is refused.
class TreeBuilder final : public FIHandler {
 public:
  explicit TreeBuilder(MemoryTree& tree) : open_(&tree.top()) {}

  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override {}
  void endMessage(const WorkerInfoPtr&) override {}
  void startElement(const unsigned short* name, unsigned short, const WorkerInfoPtr&, int, int) override {
    auto node = std::make_unique<Node>();
    node->name = KelWstring(oxr::UnitView(name));
    node->parent = open_;
    node->index = open_->children.size();
    open_ = open_->children.emplace_back(std::move(node)).get();
  }
  void data(const PWFData& value, const WorkerInfoPtr&, int, int) override { open_->value = value; }
  void endElement(const unsigned short*, const WorkerInfoPtr&) override { open_ = open_->parent; }

  using FIHandler::startMessageContent;
  int startMessageContent(const unsigned short*, unsigned short, const WorkerInfoPtr&, int) override { refuse(); }
  int startQualifiedMessageContent(const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&,
                                   int) override {
    refuse();
  }
  void endMessageContent(int, const WorkerInfoPtr&) override { refuse(); }
  void endMessageContent(const unsigned short*, const WorkerInfoPtr&) override { refuse(); }
  void endQualifiedMessageContent(const KelWstring&, const KelWstring&, const WorkerInfoPtr&) override { refuse(); }
  void startElement(int, unsigned short, const WorkerInfoPtr&, int, int, int, int, int) override { refuse(); }
  void startQualifiedElement(const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&, int,
                             int) override {
    refuse();
  }
  void endElement(int, const WorkerInfoPtr&) override { refuse(); }
  void endQualifiedElement(const KelWstring&, const KelWstring&, const WorkerInfoPtr&) override { refuse(); }
  void startEmbeddedMessage() override { refuse(); }
  void startEmbeddedMessage(int&) override { refuse(); }
  void endEmbeddedMessage(bool, bool) override { refuse(); }
  void unparsedContent(const void*, int, const WorkerInfoPtr&) override { refuse(); }
  void simpleElement(const PWFData&, const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&,
                     const WorkerInfoPtr&, const WorkerInfoPtr&, int, int, int, int, int) override {
    refuse();
  }
  void projectId(const unsigned short*) override { refuse(); }
  void projectDependencies(const std::vector<KelWstring>&) override { refuse(); }

 private:
  [[noreturn]] static void refuse() { throw FIHandlerException(); }

  Node* open_;
};
