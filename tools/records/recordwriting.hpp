#pragma once

#include <deque>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "records/fields/fields.hpp"
#include "records/onunknown.hpp"
#include "records/recordplan.hpp"
#include "records/recordtemplate.hpp"
#include "records/treecursor.hpp"
#include "records/treekinds.hpp"

namespace oxr::rec {

// A tree that does not fit the plan. what() names the place in it: "MOVEMENT(2).AMOUNT: 1234567 has 7 digits, ...".
class WriteError : public std::runtime_error {
 public:
  // The path is that of the field, empty for a record as a whole; the number that in the catalogue of messages, 0 if
  // there is none.
  explicit WriteError(const std::string& why, const std::string& path = {}, int number = 0)
      : std::runtime_error(path.empty() ? why : path + ": " + why), why_(why), path_(path), number_(number) {}
  const std::string& path() const { return path_; }
  int number() const { return number_; }

  // what() of a record that stands in another one, at the path `outer`: "LINE(2).AMOUNT: ...".
  std::string within(const std::string& outer) const {
    return outer + (path_.empty() ? "" : '.' + path_) + ": " + why_;
  }

 private:
  std::string why_;
  std::string path_;
  int number_;
};

// A record of no kind, where such are to be left out.
class UnknownRecord : public WriteError {
 public:
  using WriteError::WriteError;
};

// Writes the records of message trees, which have the elements that RecordWorker reports: the way back of its walk.
//
// Members of an object may come in any order, but all must be there, and no others. Counts stand in the tree as other
// fields do, and must agree with their arrays. Where items redefine each other, those may be missing whose bytes others
// give, or be null; those that are given are written one over the other, and must all read as given in the end.
//
// Where there are conditions, a record of no kind may be its bytes in hexadecimal, as RecordWorker shows it with
// OnUnknown::isRaw, and so may an area that holds none of its alternatives: one that the end of the record cut off may
// have fewer bytes. Not so where a layout has a name RAW.
//
// Serves one thread.
class RecordWriter {
 public:
  struct Settings {
    std::optional<unsigned char> filler;  // every byte that nobody gives; see RecordTemplate if nothing
    // Something around a record tells its length: one whose last bytes are an area that a condition chooses in ends
    // with what was chosen, however long the others are.
    bool isFramed = false;
    OnUnknown onUnknown = OnUnknown::isRaw;
  };

  // The plan must outlive the writer. Throws KelRecoverableException for an unknown code page.
  RecordWriter(const RecordPlan& plan, const Settings& settings);

  // The bytes of the record, until the next call. Throws WriteError.
  std::span<const unsigned char> write(const FIMessageTree& tree);
  // The same of a tree that was read from `original`, which has the bytes that nobody gives: those of nulls, of areas
  // that hold none of their alternatives, and of whatever stands behind a count that cannot be used. A record that
  // ended before its layout does so again.
  std::span<const unsigned char> write(const FIMessageTree& tree, std::span<const unsigned char> original);

 private:
  // What the tree lacks.
  enum class Lack : std::uint8_t { name, value };
  struct OpenLoop {
    std::uint32_t count;
    std::int64_t shiftBefore;  // at the array's start
    std::uint64_t at;          // of the occurrence in hand in the record
    bool isShown;              // it has elements in the tree
  };
  struct Counter {
    std::int64_t value = 0;
    ItemIndex item = kNoItem;
    bool isKnown = false;
  };
  // Something in an area where items redefine each other.
  struct AreaField {
    const Step* step;
    std::uint64_t at;
    PWFData value;
    std::vector<OpenArray> arrays;
    Lack lack;  // if it is not given
  };

  struct Place {
    std::int64_t shift;
    std::int64_t shrink;
  };

  std::span<const unsigned char> writeTree(const FIMessageTree& tree);
  void walk();
  const Step* choose(const Step& step);
  std::span<const unsigned char> writeRaw();
  bool putRaw(const Step& step, const Choice& choice);
  std::uint64_t sizeOfRecord() const;
  std::span<const unsigned char> bytesFor(const Question& question);
  const Step* walkOne(const Step& step);
  const Step* field(const Step& step);
  const Step* beginGroup(const Step& step);
  const Step* beginArray(const Step& step);
  const Step* endArray(const Step& step);
  const Step* absent(const Step& step, Lack lack);
  const Step* keepArray(const Step& step);
  [[noreturn]] void refuseUnknown() const;
  void checkNames(const Step* group);
  void put(const Step& step, std::uint64_t at, const PWFData& value);
  void putInArea(const Step& step, std::uint64_t at, const PWFData& value);
  void keepEnd(const Step& step, std::uint64_t at);
  void noValue(const Step& step, std::uint64_t at, Lack lack);
  void keepCount(const Step& step, std::uint64_t at);
  void checkCount(const Step& array, std::uint32_t count);
  std::optional<std::uint32_t> silentCount(const Step& array) const;
  void checkAreas();
  void checkAbsent(AreaField& absent);
  bool readsAs(const Step& step, const unsigned char* bytes, const unsigned char* written);
  void fillTo(std::uint64_t end);
  static const char* textOf(Lack lack);
  bool isInArea(const Step& step) const { return hasAreas_ && inArea_[stepIndex(step)]; }
  std::size_t stepIndex(const Step& step) const { return static_cast<std::size_t>(&step - plan_.steps().data()); }
  std::uint64_t placeOf(const Step& step) const { return static_cast<std::uint64_t>(step.offset + shift_); }
  const Layout& layout() const { return *kind_->layout; }
  [[noreturn]] void fail(const Step& step, std::string_view why, int number = 0) const;
  [[noreturn]] void fail(const Step& step, const KelRecoverableException& failure) const;

  const RecordPlan& plan_;
  const Settings settings_;
  std::deque<FieldWriter> writers_;  // by Step::form
  std::deque<FieldConverter> converters_;
  std::deque<RecordTemplate> templates_;  // by kind
  TreeKinds treeKinds_;
  std::vector<Chooser> choosers_;  // by Step::choice
  std::vector<bool> inArea_;       // by step
  bool hasAreas_ = false;
  bool canBeRaw_ = false;

  // These describe the record in hand; see RecordWorker for shift_.
  const RecordKind* kind_;
  const FIMessageTree* tree_ = nullptr;
  std::optional<std::span<const unsigned char>> original_;
  TreeCursor cursor_;
  std::vector<unsigned char> record_;
  std::uint64_t filled_ = 0;    // bytes of it that are there
  std::uint64_t givenEnd_ = 0;  // where the last value in it ends, if there is an original
  bool isLost_ = false;         // all from here on is as in the original: nobody can tell where anything is
  std::int64_t shift_ = 0;
  std::int64_t shrink_ = 0;  // bytes that the arrays closed so far lack
  std::vector<Counter> counters_;
  std::vector<OpenArray> arrays_;
  std::vector<OpenLoop> loops_;
  std::optional<std::uint64_t> end_;    // of the record, if it ends with what was chosen
  std::int64_t endShift_ = 0;           // that end_ is reckoned with
  std::optional<std::uint64_t> cutAt_;  // or with an area that is cut off there
  std::vector<Place> kept_;             // of open alternatives that may be shorter than their area

  // And these its areas.
  std::vector<std::uint32_t> owners_;  // by byte: the step that gave it, from 1; 0 for nobody
  std::vector<AreaField> given_;
  std::vector<AreaField> absent_;
  std::vector<unsigned char> field_;  // as it is to be
  std::vector<unsigned char> raw_;    // bytes that the tree has in hexadecimal
  bool hasOverwritten_ = false;
};

}  // namespace oxr::rec
