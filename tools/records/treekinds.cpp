#include "records/treekinds.hpp"

#include "kelunits.hpp"

// A question names a place in the record. In the tree each kind has a name of its own for it: so each kind is tried,
// and is right if the value that the tree has under that name leads to it.

namespace oxr::rec {

namespace {

bool moveToMember(FITreeIterator& place, const unsigned short* name) {
  for (bool more = place.moveToFirstChild(); more; more = place.moveToNextSibling())
    if (place.getTagName() == name || UnitView(place.getTagName()) == UnitView(name)) return true;
  return false;
}

}  // namespace

TreeKinds::TreeKinds(const RecordPlan& plan, std::deque<FieldWriter>& writers, std::deque<FieldConverter>& converters)
    : plan_(plan), writers_(writers), converters_(converters) {
  if (plan.recordChoice() != nullptr) chooser_.emplace(*plan.recordChoice());
}

const RecordKind* TreeKinds::kindOf(const FIMessageTree& tree) {
  if (!chooser_) return plan_.kinds().data();
  const Choice& choice = *plan_.recordChoice();
  const auto value = [this](const Step& step, std::span<const unsigned char> bytes) { return valueOf(step, bytes); };
  for (const Question& asked : choice.questions) {
    for (const RecordKind& kind : plan_.kinds()) {
      const std::span<const unsigned char> bytes = bytesIn(tree, kind, asked.field);
      if (bytes.empty()) continue;
      const std::int32_t answer = chooser_->choose(
          [&](const Question& question) { return &question == &asked ? bytes : std::span<const unsigned char>(); },
          value);
      if (answer == Chooser::kNone) continue;
      const RecordKind& found = plan_.kinds()[choice.alternatives[static_cast<std::size_t>(answer)].target];
      if (&found == &kind) return &kind;
    }
  }
  if (!choice.otherwise) return nullptr;
  return &plan_.kinds()[choice.alternatives[*choice.otherwise].target];
}

// The names of the groups around the kind's field in the same place, and its own; nothing if it has none there.
std::optional<TreeKinds::Path> TreeKinds::pathTo(const RecordKind& kind, const Step& field) const {
  Path path;
  int arrays = 0;
  for (std::uint32_t i = kind.begin; i < kind.end; ++i) {
    const Step& step = plan_.steps()[i];
    const unsigned short* const name = plan_.name(step);
    if (step.op == Op::beginArray) ++arrays;
    if (step.op == Op::endArray) --arrays;
    if (step.op == Op::beginGroup) path.push_back(name);
    if (step.op == Op::endGroup) path.pop_back();
    if (step.op != Op::field || arrays != 0 || name == nullptr) continue;
    if (step.offset != field.offset || step.size != field.size || step.kind != field.kind) continue;
    path.push_back(name);
    return path;
  }
  return std::nullopt;
}

std::span<const unsigned char> TreeKinds::bytesIn(const FIMessageTree& tree, const RecordKind& kind,
                                                  const Step& field) {
  const std::optional<Path> path = pathTo(kind, field);
  if (!path) return {};
  FITreeIterator place = tree.getMsgContentIterator();
  for (const unsigned short* const name : *path)
    if (!moveToMember(place, name)) return {};
  const PWFData value = place.getData();
  if (value.isNull() || value.isNothing()) return {};
  if (bytes_.size() < field.size) bytes_.resize(field.size);
  try {
    writers_[field.form].write(field, value, bytes_.data());
  } catch (const KelRecoverableException&) {
    return {};
  } catch (const FieldRefused&) {
    return {};
  }
  return {bytes_.data(), field.size};
}

PWFData TreeKinds::valueOf(const Step& step, std::span<const unsigned char> bytes) {
  try {
    return converters_[step.form].convert(step, bytes.data());
  } catch (const KelRecoverableException&) {
    return FieldConverter::null(step);
  } catch (const FieldRefused&) {
    return FieldConverter::null(step);
  }
}

}  // namespace oxr::rec
