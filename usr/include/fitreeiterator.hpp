#pragma once

#include <memory>
#include <vector>

#include "kelheader.hpp"
#include "kelwstring.hpp"
#include "oxrexport.hpp"
#include "pwfdata.hpp"
#include "workerinfo.hpp"

// One step of the way from a structure to a node in it, as whoever owns the tree counts them.
struct PartialMember {
  PWFInt32 index;        // traced second
  PWFInt32 id;           // traced first
  PWFInt32 reserved[4];  // not looked at
};
static_assert(sizeof(PartialMember) == 24);

// A place in a message tree, as the owner of the tree implements it. Workers see it through FITreeIterator.
//
// The moves tell whether there was such a node; where there was none, the place stays. The numbers are the tree's own
// and are passed on unchanged. The unused operation keeps its place for others.
class OXR_EXPORT FITreeIteratorImpl {
 public:
  virtual ~FITreeIteratorImpl();
  // Tells whether `other` stands on the same node.
  virtual bool operator==(const FITreeIteratorImpl* other) const = 0;

  // Go to the node above, the first one below, and the neighbours on the same level. False, and the place stays, where
  // there is none.
  virtual bool moveToParent() = 0;
  virtual bool moveToFirstChild() = 0;
  virtual bool moveToPreviousSibling() = 0;
  virtual bool moveToNextSibling() = 0;

  // Give the numbers by which the tree's model knows the type of the node and its tag.
  virtual int getItemTypeIndex() const = 0;
  virtual int getTagId() const = 0;
  // Gives the name, zero-terminated and the tree's own; null for a node without a name.
  virtual const unsigned short* getTagName() const = 0;
  // Gives the namespace of the name; empty for none.
  virtual KelWstring getNamespaceURI() const = 0;
  // Give the numbers by which the tree's model knows the node as a member of what is above it, its tag and its type.
  virtual int getMemberId() const = 0;
  virtual int getTagIndex() const = 0;
  virtual int getMemberIndex() const = 0;
  virtual int getTypeIndex() const = 0;
  // Both belong to the tree; the second one is never null.
  virtual const std::vector<int>* getMemberIdPath() const = 0;
  virtual const std::vector<PartialMember>* getPartialMemberPath() const = 0;
  // What kind of node this is: 0 a field that describes itself, 1 a field of the model, 2 and 3 such structures, 4
  // bytes that were not parsed, 5 and 6 such messages, 9 to 11 field, structure and message of a type, 12 a list.
  virtual int getCategory() const = 0;
  // Give which of the repetitions of an element the node is, and its number among what the model tells by path.
  virtual int getRepeatIndex() const = 0;
  virtual int getPathBasedInfoIndex() const = 0;
  virtual int getPathBasedInfoCount() const = 0;  // unused
  // Give how often the model wants the element at least and at most, and how often it is there.
  virtual int getMinOccurs() const = 0;
  virtual int getMaxOccurs() const = 0;
  virtual int getOccurrences() const = 0;
  // Give how long the model wants the value at least and at most, in its own unit, and whether it may be null, not 0
  // for one that may.
  virtual int getMinLength() const = 0;
  virtual int getMaxLength() const = 0;
  virtual int getIsNullable() const = 0;

  // Gives the node's value: nothing for a node that has none, a null if it says so.
  virtual PWFData getData() const = 0;
  // Gives the value that the model has for an element without one; nothing where it has none.
  virtual PWFData getDefaultData() const = 0;
  // Give what the parser said at the node's start, with its data, and at its end.
  virtual WorkerInfoPtr getStartWorkerInfo() const = 0;
  virtual WorkerInfoPtr getDataWorkerInfo() const = 0;
  virtual WorkerInfoPtr getEndWorkerInfo() const = 0;

  // Tells whether the tree was changed since it was parsed.
  virtual bool hasTreeChanged() const = 0;
  // Tells whether the node is bytes that were not parsed.
  virtual bool isBitStream() const = 0;
  // Tells whether the place is one: the node may have gone.
  virtual bool isValid() const = 0;
  // Ask that what describes the model be at hand, and give that up again.
  virtual void loadDictionaryAndDescriptor() = 0;
  virtual void releaseDictionaryAndDescriptor() = 0;
  // Makes a new one on the same node, which is the caller's.
  virtual FITreeIteratorImpl* clone() const = 0;
};

// Walks a message tree: a value that holds a place of its own, so that a copy walks alone. An iterator is used by one
// thread.
//
// Only isNull, copying, assigning and destroying are for a null iterator; all else needs a place and does what
// FITreeIteratorImpl says.
//
// Example:
//   for (bool more = it.moveToFirstChild(); more; more = it.moveToNextSibling())
//     write(it.getTagName(), it.getData());
class OXR_EXPORT FITreeIterator {
 public:
  // Makes a null iterator.
  FITreeIterator();
  // Holds a clone of `impl` where `clone` says so, else takes it over.
  FITreeIterator(FITreeIteratorImpl* impl, bool clone);
  // Holds a clone of `impl`.
  explicit FITreeIterator(const FITreeIteratorImpl* impl);
  // Holds a clone of the place of `other`, or none.
  FITreeIterator(const FITreeIterator& other);
  FITreeIterator& operator=(const FITreeIterator& other);
  ~FITreeIterator();

  // Tell whether both stand on the same node, as the place says; neither may be null.
  bool operator==(const FITreeIterator& other) const { return *impl_ == other.impl_.get(); }
  bool operator!=(const FITreeIterator& other) const { return !(*this == other); }
  bool isNull() const { return impl_ == nullptr; }  // whether it holds no place

  // Move the place as FITreeIteratorImpl says; false where there is no such node.
  bool moveToParent() { return impl_->moveToParent(); }
  bool moveToFirstChild() { return impl_->moveToFirstChild(); }
  bool moveToPreviousSibling() { return impl_->moveToPreviousSibling(); }
  bool moveToNextSibling() { return impl_->moveToNextSibling(); }

  // Each gives what the member of FITreeIteratorImpl with its name says of the node. What is given by pointer belongs
  // to the tree.
  int getItemTypeIndex() const { return impl_->getItemTypeIndex(); }
  int getTagId() const { return impl_->getTagId(); }
  const unsigned short* getTagName() const { return impl_->getTagName(); }
  KelWstring getNamespaceURI() const { return impl_->getNamespaceURI(); }
  int getMemberId() const { return impl_->getMemberId(); }
  int getTagIndex() const { return impl_->getTagIndex(); }
  int getMemberIndex() const { return impl_->getMemberIndex(); }
  int getTypeIndex() const { return impl_->getTypeIndex(); }
  const std::vector<int>* getMemberIdPath() const { return impl_->getMemberIdPath(); }
  const std::vector<PartialMember>* getPartialMemberPath() const { return impl_->getPartialMemberPath(); }
  int getCategory() const { return impl_->getCategory(); }
  int getRepeatIndex() const { return impl_->getRepeatIndex(); }
  int getPathBasedInfoIndex() const { return impl_->getPathBasedInfoIndex(); }
  int getMinOccurs() const { return impl_->getMinOccurs(); }
  int getMaxOccurs() const { return impl_->getMaxOccurs(); }
  int getOccurrences() const { return impl_->getOccurrences(); }
  int getMinLength() const { return impl_->getMinLength(); }
  int getMaxLength() const { return impl_->getMaxLength(); }
  int getIsNullable() const { return impl_->getIsNullable(); }
  PWFData getData() const { return impl_->getData(); }
  PWFData getDefaultData() const { return impl_->getDefaultData(); }
  WorkerInfoPtr getStartWorkerInfo() const { return impl_->getStartWorkerInfo(); }
  WorkerInfoPtr getDataWorkerInfo() const { return impl_->getDataWorkerInfo(); }
  WorkerInfoPtr getEndWorkerInfo() const { return impl_->getEndWorkerInfo(); }
  bool hasTreeChanged() const { return impl_->hasTreeChanged(); }
  bool isBitStream() const { return impl_->isBitStream(); }
  bool isValid() const { return impl_->isValid(); }
  // Each does what the member of FITreeIteratorImpl with its name does.
  void loadDictionaryAndDescriptor() { impl_->loadDictionaryAndDescriptor(); }
  void releaseDictionaryAndDescriptor() { impl_->releaseDictionaryAndDescriptor(); }

 private:
  objectHeader header{"QVTI", 0, 24};
  std::unique_ptr<FITreeIteratorImpl> impl_;
};
