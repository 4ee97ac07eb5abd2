// A named source goes by the level of the process. An owned one asks its owner; without one it answers what lets all
// trace through, since nobody is there to say otherwise.

#include "kellogsource.hpp"

#include <utility>

#include "kelwstringconvertor.hpp"

KelLogSource::~KelLogSource() = default;

KelNamedLogSource::KelNamedLogSource(KelWstring type, KelWstring name, KelWstring label)
    : type_(std::move(type)), name_(std::move(name)), label_(std::move(label)) {}
KelNamedLogSource::~KelNamedLogSource() = default;

int KelNamedLogSource::userTraceFilter() const {
  return KelLog::iEffectiveLogFilter;
}
int KelNamedLogSource::traceFilter() const {
  return KelLog::iEffectiveLogFilter;
}
bool KelNamedLogSource::isUserTraceActive() const {
  return KelLog::iEffectiveLogFilter > 2;
}
bool KelNamedLogSource::isUserDebugTraceActive() const {
  return KelLog::iEffectiveLogFilter > 3;
}
bool KelNamedLogSource::isTraceActive() const {
  return KelLog::iEffectiveLogFilter > 2;
}
bool KelNamedLogSource::isDebugTraceActive() const {
  return KelLog::iEffectiveLogFilter > 3;
}
// The name is in the record already.
void KelNamedLogSource::addLogInserts(KelLog::FastItem&) const {}

bool KelOwnedLogSource::isNamed() const {
  return false;
}
KelWstring KelOwnedLogSource::logType() const {
  return owner_ != nullptr ? owner_->logType() : KelWstringConvertor::toKelWstring(L"");
}
KelWstring KelOwnedLogSource::logName() const {
  return owner_ != nullptr ? owner_->logName() : KelWstringConvertor::toKelWstring(L"");
}
KelWstring KelOwnedLogSource::logLabel() const {
  return owner_ != nullptr ? owner_->logLabel() : KelWstringConvertor::toKelWstring(L"");
}
int KelOwnedLogSource::userTraceFilter() const {
  return owner_ != nullptr ? owner_->userTraceFilter() : 0;
}
int KelOwnedLogSource::traceFilter() const {
  return owner_ != nullptr ? owner_->traceFilter() : 0;
}
bool KelOwnedLogSource::isUserTraceActive() const {
  return owner_ == nullptr || owner_->isUserTraceActive();
}
bool KelOwnedLogSource::isUserDebugTraceActive() const {
  return owner_ == nullptr || owner_->isUserDebugTraceActive();
}
bool KelOwnedLogSource::isTraceActive() const {
  return owner_ == nullptr || owner_->isTraceActive();
}
bool KelOwnedLogSource::isDebugTraceActive() const {
  return owner_ == nullptr || owner_->isDebugTraceActive();
}
void KelOwnedLogSource::addLogInserts(KelLog::FastItem& item) const {
  if (owner_ != nullptr) owner_->addLogInserts(item);
}
KelOwnedLogSource::~KelOwnedLogSource() = default;

void KelOwnedLogSource::setOwner(const KelNamedLogSource* owner) {
  owner_ = owner;
}
const KelNamedLogSource* KelOwnedLogSource::owner() const {
  return owner_;
}
