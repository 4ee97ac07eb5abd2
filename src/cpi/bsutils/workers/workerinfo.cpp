#include "workerinfo.hpp"

// Statics of other source files may ask for a property while they are built: this one comes before all of them.
[[gnu::init_priority(101)]] const PWFData WorkerInfoNullData(NOTHING);

constinit const WorkerInfoPtr WorkerInfoPtr::defaultWIP;

CPRCObject::~CPRCObject() = default;

WorkerInfo::~WorkerInfo() = default;

const PWFData& WorkerInfo::getDataProperty(int) const {
  return WorkerInfoNullData;
}

PWFInt32 WorkerInfo::getInt32Property(int) const {
  return kAbsent;
}

void WorkerInfo::setProperty(int, int) {}

void WorkerInfo::setProperty(int, const PWFData&) {}

MapWorkerInfo::MapWorkerInfo(const MapWorkerInfo& source) : WorkerInfo(source) {
  // Not virtual: while the object is being made, its own class is the one that counts.
  for (const auto& [key, value] : source.properties)
    MapWorkerInfo::setProperty(key, value);
  header = source.header;
}

// Merges by the virtual call, so that a class that looks at what is stored sees each entry, in order of the keys:
// MapWorkerInfo.AssignmentMergesInOrderOfKeys.
MapWorkerInfo& MapWorkerInfo::operator=(const MapWorkerInfo& source) {
  if (this == &source) return *this;
  for (const auto& [key, value] : source.properties)
    setProperty(key, value);
  return *this;
}

MapWorkerInfo::~MapWorkerInfo() = default;

const PWFData& MapWorkerInfo::getDataProperty(int key) const {
  const auto found = properties.find(key);
  return found == properties.end() ? WorkerInfoNullData : found->second;
}

PWFInt32 MapWorkerInfo::getInt32Property(int key) const {
  const PWFData& value = getDataProperty(key);
  if (value.getDataLogicalType() != INTEGER || value.isNull()) return kAbsent;
  return value.getInt32Value();
}

void MapWorkerInfo::setProperty(int key, int value) {
  if (value == kAbsent)
    properties.erase(key);
  else
    properties.insert_or_assign(key, PWFData(value, false));
}

void MapWorkerInfo::setProperty(int key, const PWFData& value) {
  if (value.isNothing())
    properties.erase(key);
  else
    properties.insert_or_assign(key, value);
}

WorkerInfoPtr& WorkerInfoPtr::operator=(const WorkerInfoPtr& other) {
  // The other object first: the two may be the same, or this one may own it.
  if (other.info != nullptr) other.info->addReference();
  WorkerInfo* const shared = other.info;
  drop();
  info = shared;
  return *this;
}
