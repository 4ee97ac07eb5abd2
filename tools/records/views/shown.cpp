#include "records/views/shown.hpp"

#include "kelwstringconvertor.hpp"
#include "records/views/views.hpp"

namespace oxr::rec {

namespace {

// Alternatives lie between the step that chooses and its target: what they give to the object in hand is optional.
struct OpenChoice {
  std::uint32_t end;
  std::size_t depth;  // of the object
};

}  // namespace

Shown shownRecord(const RecordPlan& plan, const RecordKind& kind) {
  Shown record{kind.name, nullptr, {}, false};
  std::vector<Shown*> open{&record};  // a child's own children are added while no brother of it is
  std::vector<OpenChoice> choices;
  for (std::uint32_t i = kind.begin; i < kind.end; ++i) {
    const Step& step = plan.steps()[i];
    while (!choices.empty() && choices.back().end <= i)
      choices.pop_back();
    if (step.op == Op::choose) choices.push_back({step.target, open.size()});
    if (step.name == Step::kNoName) continue;
    switch (step.op) {
      case Op::field:
      case Op::beginGroup:
      case Op::beginArray: {
        const bool isOptional = !choices.empty() && choices.back().depth == open.size();
        open.back()->children.push_back({toUtf8(UnitView(plan.name(step))), &step, {}, isOptional});
        if (step.op != Op::field) open.push_back(&open.back()->children.back());
        break;
      }
      case Op::endGroup:
      case Op::endArray:
        open.pop_back();
        break;
      case Op::choose:
      case Op::jump:
      case Op::keepPlace:
      case Op::restorePlace:
        break;
    }
  }
  return record;
}

const Item& itemOf(const RecordPlan& plan, const Step& step) {
  const auto index = static_cast<std::uint32_t>(&step - plan.steps().data());
  for (const RecordKind& kind : plan.kinds())
    if (index >= kind.begin && index < kind.end) return kind.layout->items[step.item];
  return plan.layout().items[step.item];
}

}  // namespace oxr::rec
