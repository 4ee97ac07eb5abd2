#pragma once

#include <memory>

#include "records/recordworker.hpp"

namespace oxr::rec {

// Goes from record to record without reading more of them than it takes to find where each ends.
class RecordWalk {
 public:
  // The plan need not show anything: RecordPlan::Options::isSilent saves time. All must outlive the object. The input
  // begins with what the source gives next. Throws what RecordWorker::make throws.
  RecordWalk(const RecordPlan& plan, const RecordWorker::Settings& settings, BufferSource& source);
  // The same for records whose ends the form alone tells.
  RecordWalk(const RecordForm& form, BufferSource& source);
  ~RecordWalk();

  // Goes past the next record; false if there is none. Throws FrameError where the next record cannot be found.
  bool step();
  // The bytes, and the number, of the records that were passed.
  std::uint64_t position() const;
  std::uint64_t records() const { return records_; }
  // Whether an input of its own can begin here, see RecordReader::isAtStart.
  bool isAtStart() const { return worker_ != nullptr || reader_.isAtStart(); }

 private:
  struct Silence;

  bool stepByReader();
  bool stepByWorker();

  BufferSource& source_;
  RecordReader reader_;
  std::unique_ptr<Silence> silence_;
  RecordWorker::Owner worker_;  // where only the counts in a record tell its length
  bool isOpen_ = false;
  std::uint64_t records_ = 0;
};

}  // namespace oxr::rec
