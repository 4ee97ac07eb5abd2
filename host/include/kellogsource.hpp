#pragma once

#include "kelexport.hpp"
#include "kelheader.hpp"
#include "kellog.hpp"
#include "kelwstring.hpp"

// What a traced object tells of itself: its names and whether its trace is wanted.
class KELHOST_EXPORT KelLogSource {
 public:
  virtual bool isNamed() const = 0;
  virtual KelWstring logType() const = 0;
  virtual KelWstring logName() const = 0;
  virtual KelWstring logLabel() const = 0;
  virtual int userTraceFilter() const = 0;
  virtual int traceFilter() const = 0;
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

  virtual void setOwner(const KelNamedLogSource* owner);
  virtual const KelNamedLogSource* owner() const;

 private:
  objectHeader header_{"HSOL", 8, 32};
  const KelNamedLogSource* owner_ = nullptr;
};
