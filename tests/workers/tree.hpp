#pragma once

#include <map>
#include <string>
#include <vector>

#include "fuzz/workers/recorder.hpp"
#include "harness/text.hpp"

// A message tree of values, and places in it. A number that a node does not have is 0.
namespace oxr::test {

struct Node {
  std::map<std::string, int> numbers{};  // by their labels in the trace
  KelWstring name{};
  PWFData value{NOTHING}, defaultValue{NOTHING};
  std::vector<Node> children{};
  std::vector<PartialMember> path{};
  WorkerInfoPtr start{}, data{}, end{};
};

// The way from the root to a node, each step among its siblings.
class Place : public fuzz::PlainPlace {
 public:
  static inline int living = 0;
  explicit Place(const std::vector<Node>& roots) : way_{{&roots, 0}} { ++living; }
  Place(const Place& other) : PlainPlace(other), way_(other.way_) { ++living; }
  ~Place() override { --living; }
  FITreeIteratorImpl* clone() const override { return new Place(*this); }

  bool operator==(const FITreeIteratorImpl* other) const override {
    return &node() == &dynamic_cast<const Place*>(other)->node();
  }
  bool moveToParent() override { return way_.size() > 1 && (way_.pop_back(), true); }
  bool moveToFirstChild() override { return !node().children.empty() && (way_.push_back({&node().children, 0}), true); }
  bool moveToNextSibling() override {
    return way_.back().index + 1 < way_.back().among->size() && (++way_.back().index, true);
  }
  int number(const char* label) const override { return node().numbers.contains(label) ? node().numbers.at(label) : 0; }
  const unsigned short* getTagName() const override {
    return node().name.length() == 0 ? nullptr : node().name.characters();
  }
  const std::vector<PartialMember>* getPartialMemberPath() const override { return &node().path; }
  PWFData getData() const override { return node().value; }
  PWFData getDefaultData() const override { return node().defaultValue; }
  WorkerInfoPtr getStartWorkerInfo() const override { return node().start; }
  WorkerInfoPtr getDataWorkerInfo() const override { return node().data; }
  WorkerInfoPtr getEndWorkerInfo() const override { return node().end; }

 private:
  struct Step {
    const std::vector<Node>* among;
    std::size_t index;
  };
  const Node& node() const { return (*way_.back().among)[way_.back().index]; }

  std::vector<Step> way_;
};

struct Tree : fuzz::RecordingTree {
  explicit Tree(std::vector<Node> nodes) : roots(std::move(nodes)) {}
  int getNumProjDependencies() const override { return 2; }
  WorkerInfoPtr getMsgEndWorkerInfo() const override { return {}; }
  FITreeIterator getMsgContentIterator() const override { return FITreeIterator(new Place(roots), false); }

  const std::vector<Node> roots;
};

}  // namespace oxr::test
