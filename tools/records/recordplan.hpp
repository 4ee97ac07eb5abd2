#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "records/fields/editedpicture.hpp"
#include "records/fields/physicalform.hpp"
#include "records/fields/settings.hpp"
#include "records/layout.hpp"
#include "records/plan/choice.hpp"
#include "records/plan/error.hpp"
#include "records/plan/step.hpp"

namespace oxr::rec {

class Copybook;

// A kind of record that a file holds: a level 01 entry, compiled into a run of steps.
struct RecordKind {
  std::string name;  // of the entry; empty if it has none
  const Layout* layout = nullptr;
  std::uint32_t begin = 0;  // of its steps
  std::uint32_t end = 0;
  std::uint32_t firstChoice = 0;  // of those of its areas
  std::uint32_t endChoice = 0;
  std::uint32_t maxSize = 0;  // bytes
  bool isVariable = false;    // its records differ in length
};

// Layouts compiled into a flat list of steps, so that reading a record is one loop over an array.
//
// Names are what the JSON shows: FILLER items have no step, unless a count lies below; the fields of a FILLER group go
// to the object around it, and one that repeats is called FILLER. Two names that would meet in one object are told
// apart: "TOTAL", "TOTAL(2)". Not changed once built.
class RecordPlan {
 public:
  struct Options {
    // A group that does not repeat gives its fields to the object around it.
    bool flat = false;
    // Arrays are stored at full size whatever the count says.
    bool arraysAtFullSize = false;
    // FILLER fields are shown too, under the name FILLER.
    bool showsFillers = false;
    // Nothing is shown: a walk only finds the length of a record.
    bool isSilent = false;
    // How fields are stored.
    PhysicalForm form;
    // "FIELD=VALUE:NAME": if the field holds the value, the record is the level 01 entry NAME, or of the items that
    // share their bytes with NAME only that one is walked. VALUE may be a list "C,D", a range "10-19", in quotes, or
    // "*" for all others. The first condition that holds decides.
    std::vector<std::string> conditions{};
    // "PATH:key=value", see FieldSetting: what holds for some fields only.
    std::vector<FieldSettingText> fieldSettings{};
  };

  // A plan of the level 01 entries that conditions name, else of the entry `record`, else of the first one. Throws
  // PlanError, and CopybookError where an entry cannot be laid out.
  RecordPlan(const Copybook& copybook, std::string_view record, const Options& options);
  // A plan of one entry; the layout must outlive it. Conditions may name areas only.
  RecordPlan(const Layout& layout, const Options& options);
  RecordPlan(const RecordPlan&) = delete;
  RecordPlan& operator=(const RecordPlan&) = delete;

  // At least one; the first if there is nothing to choose by.
  const std::vector<RecordKind>& kinds() const { return kinds_; }
  // The level 01 entries of the copybook that stand aside because nobody said which one is meant.
  const std::vector<std::string>& recordsNotTaken() const { return recordsNotTaken_; }
  // What tells the kind of a record; null if all are of the first kind.
  const Choice* recordChoice() const { return recordChoice_.get(); }
  // Those of the areas that steps choose in.
  const std::vector<Choice>& choices() const { return choices_; }

  // Of the first kind.
  const Layout& layout() const { return *kinds_.front().layout; }
  const std::vector<Step>& steps() const { return steps_; }
  // How fields are stored: forms()[step.form]. The first one holds for whatever has no settings of its own.
  const std::vector<PhysicalForm>& forms() const { return forms_; }
  std::size_t counters() const { return counters_; }
  // Whether the length of a record shows only when it is walked. Without counts all have that of the longest.
  bool isVariable() const { return isVariable_; }
  // Whether nothing is shown, see Options.
  bool isSilent() const { return isSilent_; }
  // Bytes of the longest record.
  std::uint32_t maxSize() const { return maxSize_; }

  // Null for a step without a name, else its name in UTF-16, zero-terminated. The pointer is the same in each record,
  // and the same for the same name.
  const unsigned short* name(const Step& step) const {
    return step.name == Step::kNoName ? nullptr : names_.data() + step.name;
  }
  // All names in a row, each with its terminator.
  const std::vector<unsigned short>& names() const { return names_; }

 private:
  friend class PlanCompiler;

  std::deque<Layout> layouts_;  // those that the plan laid out itself
  std::vector<RecordKind> kinds_;
  std::vector<std::string> recordsNotTaken_;
  std::unique_ptr<const Choice> recordChoice_;
  std::vector<Choice> choices_;
  std::vector<Step> steps_;
  std::vector<PhysicalForm> forms_;
  std::deque<EditedPicture> pictures_;
  std::vector<unsigned short> names_;
  std::size_t counters_ = 0;
  std::uint32_t maxSize_ = 0;
  bool isVariable_ = false;
  const bool isSilent_;
};

}  // namespace oxr::rec
