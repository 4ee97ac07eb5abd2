#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "columntypes.hpp"
#include "tape.hpp"

namespace oxr::python {

// A row that has no value, where numbers cannot tell.
inline constexpr std::int64_t kNoInstant = std::numeric_limits<std::int64_t>::min();

// What a column holds of a chunk of rows. Memory of numbers is the owner's, and as long as the chunk.
struct Column {
  ColumnShape shape{};
  std::int64_t* numbers = nullptr;     // integer, scaled, days, instants
  double* reals = nullptr;             // real, decimal
  unsigned char* isMissing = nullptr;  // integer, scaled: by row
  // Objects, and numbers that have no place in 64 bits: names are numbers of begun rows, see rowOf.
  Tape objects;
};

// Writes the events of a record worker into columns, as the program's tables have them. Needs no interpreter.
class ColumnHandler : public rec::RecordHandler {
 public:
  ColumnHandler(const rec::RecordPlan& plan, DecimalForm form);

  const rec::CsvColumns& names() const { return table_; }
  std::vector<Column>& columns() { return columns_; }
  // Forgets all rows; what they hold of numbers stays where it is.
  void clear();
  // Forgets the objects of the rows so far, and how these were begun.
  void clearObjects();
  // Makes rows empty, from the first up to before the last: what a row does not bring stays so.
  void prepare(std::uint32_t from, std::uint32_t to);
  // Forgets the last row, which is finished.
  void discard();
  std::uint32_t rows() const { return rows_; }
  // The rows that were begun, those among them that were discarded: memory goes by their number.
  std::size_t begun() const { return rowOf_.size(); }
  // The row that a begun one has become, by its number; kNoRow if it was discarded.
  static constexpr std::uint32_t kNoRow = 0xFFFFFFFFU;
  const std::vector<std::uint32_t>& rowOf() const { return rowOf_; }

  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override;
  void endMessage(const WorkerInfoPtr&) override { ++rows_; }
  using RecordHandler::startElement;
  void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr&, int index, int) override {
    walk_.enter(name, type, index);
  }
  using RecordHandler::endElement;
  void endElement(const unsigned short*, const WorkerInfoPtr&) override { walk_.leave(); }
  void data(const PWFData& value, const WorkerInfoPtr&, int, int) override;

 private:
  void put(Column& column, const PWFData& value);
  void putInteger(Column& column, std::int64_t value);
  void putDecimal(Column& column, const PWFData& value);
  bool putMoment(Column& column, UnitView text);

  const rec::CsvColumns table_;
  rec::ColumnWalk walk_{table_};
  std::vector<Column> columns_;
  std::vector<std::uint32_t> rowOf_;
  std::uint32_t rows_ = 0;
};

}  // namespace oxr::python
