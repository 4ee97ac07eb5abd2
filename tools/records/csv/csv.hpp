#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "records/csv/columnwalk.hpp"
#include "records/json/line.hpp"
#include "records/linehandler.hpp"

// The way into this folder: the events of a record worker become rows of comma-separated values.

namespace oxr::rec {

// A value as RFC 4180 has it: in quotes if a comma, a quote or the end of a line is in it.
std::string csvQuoted(std::string_view value);

// Writes each message as a row, in UTF-8, its fields in the columns of the plan.
//
//   STRING            as it is, without the blanks at its end; an empty one as ""
//   INTEGER, DECIMAL  as a number with all its digits
//   null, or no such  nothing
//   field
class CsvHandler : public LineHandler {
 public:
  // The plan is that of the worker and must outlive the handler. Throws PlanError if there are too many columns.
  explicit CsvHandler(const RecordPlan& plan);

  // The names of the columns, a row of their own.
  std::string header() const;

  void startMessage(const WorkerInfoPtr& header, const WorkerInfoPtr& content) override;
  void endMessage(const WorkerInfoPtr& info) override;
  using RecordHandler::startElement;
  void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info, int index,
                    int flags) override;
  using RecordHandler::endElement;
  void endElement(const unsigned short* name, const WorkerInfoPtr& info) override;
  void data(const PWFData& value, const WorkerInfoPtr& info, int index, int flags) override;

  void discard() override;
  void discardUnfinished() override;
  std::string_view lines() const override { return lines_; }
  void clear() override;

 private:
  struct Cell {
    std::size_t begin = 0;  // in `values_`
    std::size_t end = 0;
  };

  void number(const PWFData& value);

  const CsvColumns columns_;
  ColumnWalk walk_{columns_};
  std::vector<Cell> cells_;  // of the record in hand
  JsonLine values_;
  std::string lines_;
  std::size_t lineStart_ = 0;  // of the last record
  bool isInRecord_ = false;
};

}  // namespace oxr::rec
