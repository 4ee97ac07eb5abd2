#pragma once

#include <map>
#include <string>
#include <vector>

#include "fimessagetree.hpp"
#include "harness/text.hpp"

// A message tree of values, and places in it. A number that a node does not have is 0.
namespace oxr::test {

struct Node {
  KelWstring name;
  int category = 0;
  PWFData value{NOTHING}, defaultValue{NOTHING};
  std::vector<Node> children{};
  std::map<std::string, int> numbers{};  // by their labels in the trace
  std::vector<PartialMember> path{};
  WorkerInfoPtr start{}, data{}, end{};
  bool hasChanged = false;
};

// The way from the root to a node, each step among its siblings.
class Place : public FITreeIteratorImpl {
 public:
  static inline int living = 0;
  explicit Place(const std::vector<Node>& roots) : way_{{&roots, 0}} { ++living; }
  Place(const Place& other) : FITreeIteratorImpl(other), way_(other.way_) { ++living; }
  ~Place() override { --living; }

  bool operator==(const FITreeIteratorImpl* other) const override {
    return &node() == &dynamic_cast<const Place*>(other)->node();
  }
  bool moveToParent() override { return way_.size() > 1 && (way_.pop_back(), true); }
  bool moveToFirstChild() override { return !node().children.empty() && (way_.push_back({&node().children, 0}), true); }
  bool moveToPreviousSibling() override { return way_.back().index > 0 && (--way_.back().index, true); }
  bool moveToNextSibling() override {
    return way_.back().index + 1 < way_.back().among->size() && (++way_.back().index, true);
  }
  FITreeIteratorImpl* clone() const override { return new Place(*this); }

  int getTagId() const override { return number("TagId"); }
  const unsigned short* getTagName() const override {
    return node().name.length() == 0 ? nullptr : node().name.characters();
  }
  int getMemberId() const override { return number("MemberId"); }
  int getTypeIndex() const override { return number("TypeIndex"); }
  const std::vector<PartialMember>* getPartialMemberPath() const override { return &node().path; }
  int getCategory() const override { return node().category; }
  int getRepeatIndex() const override { return number("RepeatIndex"); }
  int getPathBasedInfoIndex() const override { return number("PathBasedInfoIndex"); }
  int getMinOccurs() const override { return number("MinOccurs"); }
  int getMaxOccurs() const override { return number("MaxOccurs"); }
  int getOccurrences() const override { return number("Occurrences"); }
  int getMinLength() const override { return number("MinLength"); }
  int getMaxLength() const override { return number("MaxLength"); }
  int getIsNullable() const override { return number("IsNullable"); }
  PWFData getData() const override { return node().value; }
  PWFData getDefaultData() const override { return node().defaultValue; }
  WorkerInfoPtr getStartWorkerInfo() const override { return node().start; }
  WorkerInfoPtr getDataWorkerInfo() const override { return node().data; }
  WorkerInfoPtr getEndWorkerInfo() const override { return node().end; }
  bool hasTreeChanged() const override { return node().hasChanged; }

  int getItemTypeIndex() const override { return 0; }
  KelWstring getNamespaceURI() const override { return {}; }
  int getTagIndex() const override { return 0; }
  int getMemberIndex() const override { return 0; }
  const std::vector<int>* getMemberIdPath() const override { return nullptr; }
  int getPathBasedInfoCount() const override { return 0; }
  bool isBitStream() const override { return false; }
  bool isValid() const override { return true; }
  void loadDictionaryAndDescriptor() override {}
  void releaseDictionaryAndDescriptor() override {}

 private:
  struct Step {
    const std::vector<Node>* among;
    std::size_t index;
  };
  const Node& node() const { return (*way_.back().among)[way_.back().index]; }
  int number(const char* label) const {
    const auto found = node().numbers.find(label);
    return found == node().numbers.end() ? 0 : found->second;
  }

  std::vector<Step> way_;
};

struct Tree : FIMessageTree {
  explicit Tree(std::vector<Node> nodes) : roots(std::move(nodes)) {}
  const unsigned short* getProjectId() const override { return project.characters(); }
  int getNumProjDependencies() const override { return static_cast<int>(dependencies.size()); }
  const unsigned short* getProjDependency(int i) const override {
    return dependencies.at(static_cast<std::size_t>(i)).characters();
  }
  WorkerInfoPtr getMsgStartWorkerInfo() const override { return start; }
  WorkerInfoPtr getMsgEndWorkerInfo() const override { return {}; }
  FITreeIterator getMsgHeaderIterator() const override { return getMsgContentIterator(); }
  FITreeIterator getMsgContentIterator() const override { return FITreeIterator(new Place(roots), false); }
  FITreeIterator getMsgFooterIterator() const override { return getMsgContentIterator(); }
  const unsigned short* getMsgNamespaceURI() const override { return nullptr; }

  std::vector<Node> roots;
  KelWstring project = u"p"_k;
  std::vector<KelWstring> dependencies;
  WorkerInfoPtr start;
};

}  // namespace oxr::test
