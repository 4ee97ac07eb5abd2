#pragma once

#include "kelexport.hpp"
#include "kelheader.hpp"
#include "kellog.hpp"
#include "kelwstring.hpp"

// What a traced object tells of itself: its names and whether its trace is wanted.
class KELHOST_EXPORT KelLogSource {
 public:
  // Tells whether the names are its own, and not those of an owner.
  virtual bool isNamed() const = 0;
  // Give the texts that records show it by: its kind, its name, and a label for people. Empty ones for what it has not.
  virtual KelWstring logType() const = 0;
  virtual KelWstring logName() const = 0;
  virtual KelWstring logLabel() const = 0;
  // Give the level of trace that is wanted from it, as KelLog::iEffectiveLogFilter counts: of trace for users, and of
  // trace for those who look after the system.
  virtual int userTraceFilter() const = 0;
  virtual int traceFilter() const = 0;
  // Tell the same as whether records of trace, and of debug trace, are wanted: of trace for users, and of the other.
  virtual bool isUserTraceActive() const = 0;
  virtual bool isUserDebugTraceActive() const = 0;
  virtual bool isTraceActive() const = 0;
  virtual bool isDebugTraceActive() const = 0;
  // Adds the source's own facts to a record that it is the source of.
  virtual void addLogInserts(KelLog::FastItem& item) const = 0;
  virtual ~KelLogSource();
};

// A log source with a name of its own. Its trace is active whenever the level asks for it.
class KELHOST_EXPORT KelNamedLogSource : public KelLogSource {
 public:
  // Takes the texts that logType(), logName() and logLabel() give.
  KelNamedLogSource(KelWstring type, KelWstring name, KelWstring label);
  ~KelNamedLogSource() override;

  bool isNamed() const override { return true; }
  KelWstring logType() const override { return type_; }
  KelWstring logName() const override { return name_; }
  KelWstring logLabel() const override { return label_; }
  int userTraceFilter() const override;
  int traceFilter() const override;
  bool isUserTraceActive() const override;
  bool isUserDebugTraceActive() const override;
  bool isTraceActive() const override;
  bool isDebugTraceActive() const override;
  void addLogInserts(KelLog::FastItem& item) const override;

 private:
  KelWstring type_, name_, label_;
};

// A log source that speaks through its owner, which it does not own and which must outlive it. Without one its names
// are empty, its filters 0 and all its trace is active.
class KELHOST_EXPORT KelOwnedLogSource : public KelLogSource {
 public:
  KelOwnedLogSource() = default;
  KelOwnedLogSource(const KelOwnedLogSource&) = delete;
  KelOwnedLogSource& operator=(const KelOwnedLogSource&) = delete;

  bool isNamed() const override;  // false: the name is its owner's
  KelWstring logType() const override;
  KelWstring logName() const override;
  KelWstring logLabel() const override;
  int userTraceFilter() const override;
  int traceFilter() const override;
  bool isUserTraceActive() const override;
  bool isUserDebugTraceActive() const override;
  bool isTraceActive() const override;
  bool isDebugTraceActive() const override;
  void addLogInserts(KelLog::FastItem& item) const override;
  ~KelOwnedLogSource() override;

  // Replaces the owner, which stays the caller's; null leaves it without one.
  virtual void setOwner(const KelNamedLogSource* owner);
  // Gives the owner, null where there is none.
  virtual const KelNamedLogSource* owner() const;

 private:
  objectHeader header_{"HSOL", 8, 32};
  const KelNamedLogSource* owner_ = nullptr;
};
