#pragma once

#include <cstdint>
#include <vector>

#include "records/records.hpp"
#include "tape.hpp"

namespace oxr::python {

// Writes the value of a field. A date is ISO text that is to become one of Python's.
void putValue(Tape& tape, std::uint32_t name, const PWFData& value, bool isDate);

// Writes the events of a record worker on a tape. It needs no interpreter. Dates are told from other texts by the steps
// that their fields have, which a worker shows to its observer.
class TapeHandler : public rec::RecordHandler, public rec::FieldObserver {
 public:
  // Both must outlive the handler.
  TapeHandler(const rec::RecordPlan& plan, const rec::RecordWorker& worker)
      : plan_(plan), worker_(worker), names_(plan.names().data()) {}

  // Whether the worker has to show its fields: only then are there dates.
  bool isObserver() const;
  Tape& tape() { return tape_; }
  // Where the last record begins in the input.
  std::uint64_t offset() const { return offset_; }
  // Takes the last record away, finished or not.
  void discard() { tape_.resize(begin_); }

  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override;
  void endMessage(const WorkerInfoPtr&) override;
  using RecordHandler::startElement;
  void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr&, int, int) override;
  using RecordHandler::endElement;
  void endElement(const unsigned short*, const WorkerInfoPtr&) override;
  void data(const PWFData& value, const WorkerInfoPtr&, int, int) override;
  void seen(const rec::FieldSeen& field) override;

 private:
  struct Open {
    std::size_t at;       // of its head
    std::uint64_t count;  // of what lies in it
    Token end;
  };
  std::uint32_t placeOf(const unsigned short* name) const;
  void open(std::uint32_t name, Token begin, Token end);
  void close();

  const rec::RecordPlan& plan_;
  const rec::RecordWorker& worker_;
  const unsigned short* const names_;
  Tape tape_;
  std::size_t begin_ = 0;  // of the last record
  std::uint64_t offset_ = 0;
  std::vector<Open> open_;
  std::uint32_t name_ = 0;  // of the open field
  bool isInField_ = false;
  bool hasData_ = false;
  bool isDate_ = false;  // and is one
};

}  // namespace oxr::python
