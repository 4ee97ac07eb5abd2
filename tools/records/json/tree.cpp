#include "records/json/tree.hpp"

// Pre-order makes the moves plain: the first child is the next node, the next sibling the node after all that lies
// below, and both are there if they come before the end of the node around them.

namespace oxr::rec {

namespace {

class JsonPlace final : public FITreeIteratorImpl {
 public:
  JsonPlace(const JsonTree& tree, std::uint32_t node) : tree_(tree), at_(node) {}

  bool operator==(const FITreeIteratorImpl* other) const override {
    const auto* const place = dynamic_cast<const JsonPlace*>(other);
    return place != nullptr && &place->tree_ == &tree_ && place->at_ == at_;
  }

  bool moveToParent() override {
    if (at_ == tree_.root()) return false;
    at_ = here().parent;
    return true;
  }
  bool moveToFirstChild() override { return moveToShown(at_ + 1, here().end); }
  bool moveToNextSibling() override {
    return at_ != tree_.root() && moveToShown(here().end, tree_.node(here().parent).end);
  }
  bool moveToPreviousSibling() override {
    if (at_ == tree_.root()) return false;
    std::uint32_t before = at_;
    for (std::uint32_t node = here().parent + 1; node < at_; node = tree_.node(node).end)
      if (!tree_.node(node).isHidden) before = node;
    if (before == at_) return false;
    at_ = before;
    return true;
  }

  const unsigned short* getTagName() const override { return here().name; }
  int getCategory() const override {
    switch (here().kind) {
      case JsonNode::Kind::object:
        return TreeCategory::kObject;
      case JsonNode::Kind::array:
        return TreeCategory::kArray;
      default:
        return TreeCategory::kField;
    }
  }
  PWFData getData() const override { return tree_.valueOf(here()); }
  PWFData getDefaultData() const override { return PWFData(NOTHING); }
  bool isValid() const override { return true; }
  bool hasTreeChanged() const override { return false; }
  bool isBitStream() const override { return false; }
  FITreeIteratorImpl* clone() const override { return new JsonPlace(*this); }

  // No model numbers what a JSON object holds.
  int getItemTypeIndex() const override { return kNotGiven; }
  int getTagId() const override { return kNotGiven; }
  KelWstring getNamespaceURI() const override { return {}; }
  int getMemberId() const override { return kNotGiven; }
  int getTagIndex() const override { return kNotGiven; }
  int getMemberIndex() const override { return kNotGiven; }
  int getTypeIndex() const override { return kNotGiven; }
  const std::vector<int>* getMemberIdPath() const override { return nullptr; }
  const std::vector<PartialMember>* getPartialMemberPath() const override {
    static const std::vector<PartialMember> none;
    return &none;
  }
  int getRepeatIndex() const override { return kNotGiven; }
  int getPathBasedInfoIndex() const override { return kNotGiven; }
  int getPathBasedInfoCount() const override { return 0; }
  int getMinOccurs() const override { return kNotGiven; }
  int getMaxOccurs() const override { return kNotGiven; }
  int getOccurrences() const override { return kNotGiven; }
  int getMinLength() const override { return kNotGiven; }
  int getMaxLength() const override { return kNotGiven; }
  int getIsNullable() const override { return 1; }
  WorkerInfoPtr getStartWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  WorkerInfoPtr getDataWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  WorkerInfoPtr getEndWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  void loadDictionaryAndDescriptor() override {}
  void releaseDictionaryAndDescriptor() override {}

 private:
  static constexpr int kNotGiven = -1;

  const JsonNode& here() const { return tree_.node(at_); }
  bool moveToShown(std::uint32_t node, std::uint32_t end) {
    while (node < end && tree_.node(node).isHidden)
      node = tree_.node(node).end;
    if (node >= end) return false;
    at_ = node;
    return true;
  }

  const JsonTree& tree_;
  std::uint32_t at_;
};

}  // namespace

PWFData JsonTree::valueOf(const JsonNode& node) const {
  switch (node.kind) {
    case JsonNode::Kind::text:
      return PWFData(units_.data() + node.text, static_cast<int>(node.length));
    case JsonNode::Kind::number:
      return PWFData(units_.data() + node.text, DECIMAL);
    case JsonNode::Kind::truth:
      return PWFData(node.length != 0);
    case JsonNode::Kind::null:
      return PWFData(STRING);
    default:
      return PWFData(NOTHING);
  }
}

FITreeIterator JsonTree::getMsgContentIterator() const {
  return nodes_.empty() ? FITreeIterator() : FITreeIterator(new JsonPlace(*this, root_), false);
}

}  // namespace oxr::rec
