#pragma once

#include <map>

#include "kelheader.hpp"
#include "oxrexport.hpp"
#include "pwfdata.hpp"
#include "pwftypes.hpp"

// The base of objects that are counted by the pointers to them.
//
// The count is a plain integer: a counted object and all pointers to it stay with one thread.
class OXR_EXPORT CPRCObject {
 public:
  // Makes an object that nobody refers to yet.
  CPRCObject() = default;
  // A copy starts with a count of its own, of 0; assignment leaves both counts as they are.
  CPRCObject(const CPRCObject&) {}
  CPRCObject& operator=(const CPRCObject&) { return *this; }
  virtual ~CPRCObject();

  // Counts one more reference.
  void addReference() { ++referenceCount; }
  // Drops one reference; true if it was the last, and the caller is then to delete the object.
  bool dropReference() { return --referenceCount == 0; }
  // Tells how many references there are.
  PWFInt32 references() const { return referenceCount; }

 private:
  objectHeader header{"QVWC", 8, 32};
  PWFInt32 referenceCount = 0;
};

// What a property lookup gives for an absent key: nothing. There is one for the process, which stands before any other
// static of the library is built and until exit.
OXR_EXPORT extern const PWFData WorkerInfoNullData;

// The properties that a worker attaches to the start, the data or the end of an element, such as what a later write
// needs to give the element its old form.
//
// Keys are small integers and belong to the worker. This class keeps nothing: every key is absent, and setting is
// ignored. MapWorkerInfo keeps what it is given.
class OXR_EXPORT WorkerInfo : public CPRCObject {
 public:
  // The number for an absent property: the smallest PWFInt32. As a value to set it removes the property.
  static constexpr PWFInt32 kAbsent = -0x7FFFFFFF - 1;

  ~WorkerInfo() override;

  // Gives the value stored under `key`, or WorkerInfoNullData. It is valid until the property is changed.
  virtual const PWFData& getDataProperty(int key) const;
  // Gives the same as a number; 0x80000000 for an absent property.
  virtual PWFInt32 getInt32Property(int key) const;
  // Stores a property, replacing an old value. The value 0x80000000 removes it.
  virtual void setProperty(int key, int value);
  // Does the same; a value that is nothing removes the property, while a null is stored.
  virtual void setProperty(int key, const PWFData& value);

 private:
  objectHeader header{"QVWW", 28, 48};
};

// Properties in a map, in ascending order of their keys. Made with count 0: WorkerInfoPtr does the rest.
//
// Example:
//   const WorkerInfoPtr info(new MapWorkerInfo);
//   info->setProperty(3, 12);
//   info->getInt32Property(3);          // 12
//   info->getInt32Property(4);          // 0x80000000, as for a property that is no number
//   info->getDataProperty(4).isNothing();  // true
class OXR_EXPORT MapWorkerInfo : public WorkerInfo {
 public:
  MapWorkerInfo() = default;
  MapWorkerInfo(const MapWorkerInfo& source);
  // Merges: what `source` holds is stored here, one setProperty a key; what only this object holds remains. An
  // exception leaves what is stored by then.
  MapWorkerInfo& operator=(const MapWorkerInfo& source);
  ~MapWorkerInfo() override;

  const PWFData& getDataProperty(int key) const override;
  // 0x80000000 also for nothing, a null, or a value that is no INTEGER. A value beyond 32 bits raises
  // KelConversionException 0xC0001583 (OXR5507), as PWFData::getInt32Value does.
  PWFInt32 getInt32Property(int key) const override;
  void setProperty(int key, int value) override;
  void setProperty(int key, const PWFData& value) override;

 private:
  objectHeader header{"QVWM", 48, 112};
  std::map<int, PWFData> properties;
};

// A counted pointer to a WorkerInfo, or to none. The last one deletes the object.
//
// Like the objects it counts, it serves one thread. Event calls take it by reference, so that passing one on costs
// nothing; a handler that keeps properties beyond the call keeps a copy.
class OXR_EXPORT WorkerInfoPtr {
 public:
  // Points to nothing: what a call without properties passes.
  static const WorkerInfoPtr defaultWIP;

  constexpr WorkerInfoPtr() noexcept = default;
  // Shares in the object; `object` may be null. An object made with `new` belongs to its pointers from then on.
  explicit WorkerInfoPtr(WorkerInfo* object) : info(object) { hold(); }
  WorkerInfoPtr(const WorkerInfoPtr& other) : info(other.info) { hold(); }
  WorkerInfoPtr& operator=(const WorkerInfoPtr& other);
  ~WorkerInfoPtr() { drop(); }

  // Null if there are no properties.
  WorkerInfo* get() const { return info; }
  // Reach the object, which must be there.
  WorkerInfo* operator->() const { return info; }
  WorkerInfo& operator*() const { return *info; }
  // Tells whether there are properties.
  explicit operator bool() const { return info != nullptr; }

 private:
  void hold() {
    if (info != nullptr) info->addReference();
  }
  void drop() {
    if (info != nullptr && info->dropReference()) delete info;
  }

  objectHeader header{"QVWP", 0, 24};
  WorkerInfo* info = nullptr;
};
