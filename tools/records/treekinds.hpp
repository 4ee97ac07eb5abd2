#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "fimessagetree.hpp"
#include "records/fields/fields.hpp"
#include "records/plan/chooser.hpp"
#include "records/recordplan.hpp"

namespace oxr::rec {

// Finds out from a message tree what its record is: fields that conditions ask for, and that no bytes have yet, are
// looked up by their names. Serves one thread.
class TreeKinds {
 public:
  // All must outlive the object; writers and converters are by Step::form.
  TreeKinds(const RecordPlan& plan, std::deque<FieldWriter>& writers, std::deque<FieldConverter>& converters);

  // The kind of the record: the level 01 entry that a field of it in the tree speaks for. Null if there is none.
  const RecordKind* kindOf(const FIMessageTree& tree);
  // The bytes of a field at a fixed place of the record, as the tree has it; none if it has not.
  std::span<const unsigned char> bytesIn(const FIMessageTree& tree, const RecordKind& kind, const Step& field);
  // A field's value; a null if it has none.
  PWFData valueOf(const Step& step, std::span<const unsigned char> bytes);

 private:
  using Path = std::vector<const unsigned short*>;
  std::optional<Path> pathTo(const RecordKind& kind, const Step& field) const;

  const RecordPlan& plan_;
  std::deque<FieldWriter>& writers_;
  std::deque<FieldConverter>& converters_;
  std::optional<Chooser> chooser_;
  std::vector<unsigned char> bytes_;
};

}  // namespace oxr::rec
