#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "fimessagetree.hpp"
#include "kelunits.hpp"
#include "records/treecategory.hpp"

namespace oxr::rec {

// The nodes of a JSON object in pre-order: an element is followed by what lies below it, then by its next sibling.
// JsonReader fills it, line after line, in the same memory.
struct JsonNode {
  enum class Kind : std::uint8_t { object, array, text, number, truth, null };

  const unsigned short* name = nullptr;  // zero-terminated; of an array's element the array's name
  Kind kind = Kind::null;
  bool isHidden = false;     // passed over by whoever walks the tree
  std::uint32_t parent = 0;  // node number
  std::uint32_t end = 0;     // the first node after all that lies below this one
  std::uint32_t text = 0;    // text, number: where its units begin among those of the tree
  std::uint32_t length = 0;  // and how many they are; a zero follows
  std::uint32_t byteAt = 0;  // of its value in the line, from 0
};

// A JSON object as a message. What lies below an array are its elements, which have its name: the elements that a
// RecordWorker reports for the same record.
//
//   object  TreeCategory::kObject, nothing as its value
//   array   TreeCategory::kArray, nothing as its value
//   text    TreeCategory::kField, STRING
//   number  TreeCategory::kField, DECIMAL with the characters that the line has, an exponent among them
//   truth   TreeCategory::kField, BOOLEAN
//   null    TreeCategory::kField, a null
//
// An iterator is good as long as the tree is not filled anew.
class JsonTree final : public FIMessageTree {
 public:
  // The object that is the message: the whole line's, number 0, unless another was set.
  void setRoot(std::uint32_t node) { root_ = node; }
  std::uint32_t root() const { return root_; }
  const JsonNode& node(std::uint32_t number) const { return nodes_[number]; }
  // The name of a node; empty for the whole line.
  UnitView nameOf(std::uint32_t number) const {
    const unsigned short* const name = nodes_[number].name;
    return name == nullptr ? UnitView() : UnitView(name);
  }
  // Takes a node, and all that lies below it, out of the walk.
  void hide(std::uint32_t number) { nodes_[number].isHidden = true; }
  PWFData valueOf(const JsonNode& node) const;

  const unsigned short* getProjectId() const override { return nullptr; }
  int getNumProjDependencies() const override { return 0; }
  const unsigned short* getProjDependency(int) const override { return nullptr; }
  WorkerInfoPtr getMsgStartWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  WorkerInfoPtr getMsgEndWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  FITreeIterator getMsgHeaderIterator() const override { return {}; }
  FITreeIterator getMsgContentIterator() const override;
  FITreeIterator getMsgFooterIterator() const override { return {}; }
  const unsigned short* getMsgNamespaceURI() const override { return nullptr; }

 private:
  friend class JsonReader;
  friend class JsonTreeBuilder;

  std::vector<JsonNode> nodes_;
  std::vector<unsigned short> units_;  // of all texts and numbers
  std::uint32_t root_ = 0;
};

}  // namespace oxr::rec
