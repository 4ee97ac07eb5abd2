#include "oxrrec/nesting.hpp"

#include <algorithm>

#include "oxrrec/namesinobject.hpp"
#include "records/framing/errors.hpp"
#include "records/plan/itempath.hpp"

namespace oxr::rec {

std::vector<std::string> namedKinds(const RecordPlan& plan) {
  std::vector<std::string> names;
  const auto add = [&names](const Choice& choice) {
    for (const Choice::Alternative& alternative : choice.alternatives)
      names.push_back(alternative.name);
  };
  if (plan.recordChoice() != nullptr) add(*plan.recordChoice());
  for (const Choice& choice : plan.choices())
    if (choice.isOfRecord) add(choice);
  return names;
}

Nesting::Nesting(const std::vector<std::string>& pairs, const RecordPlan& plan) {
  const std::vector<std::string> kinds = namedKinds(plan);
  for (const std::string& pair : pairs) {
    const std::size_t colon = pair.find(':');
    if (colon == std::string::npos) throw ToolError("--nest " + pair + ": it is to be CHILD:PARENT");
    const std::size_t child = named(pair.substr(0, colon), kinds);
    const std::size_t parent = named(pair.substr(colon + 1), kinds);
    if (kinds_[child].parent) throw ToolError("--nest " + pair + ": the child has a parent already");
    for (std::optional<std::size_t> above = parent; above; above = kinds_[*above].parent)
      if (*above == child) throw ToolError("--nest " + pair + ": a record cannot be below itself");
    kinds_[child].parent = parent;
    kinds_[parent].children.push_back(child);
    pairs_.emplace_back(child, parent);
    for (const std::string& name : namesInObject(plan, kinds_[parent].name))
      if (isSameName(name, kinds_[child].name))
        throw ToolError("--nest " + pair + ": " + kinds_[parent].name + " has a field " + name +
                        ", and its object cannot have two of that name");
  }
}

std::vector<std::pair<std::string, std::string>> Nesting::pairs() const {
  std::vector<std::pair<std::string, std::string>> names;
  names.reserve(pairs_.size());
  for (const auto& [child, parent] : pairs_)
    names.emplace_back(kinds_[child].name, kinds_[parent].name);
  return names;
}

std::vector<std::string> Nesting::names() const {
  std::vector<std::string> names;
  for (const Kind& kind : kinds_)
    names.push_back(kind.name);
  return names;
}

std::size_t Nesting::named(const std::string& name, const std::vector<std::string>& kinds) {
  if (const Kind* const known = find(name)) return static_cast<std::size_t>(known - kinds_.data());
  const auto kind =
      std::find_if(kinds.begin(), kinds.end(), [&](const auto& other) { return isSameName(other, name); });
  if (kind == kinds.end()) throw ToolError("--nest: no --when tells which records are " + name);
  kinds_.push_back({*kind});
  return kinds_.size() - 1;
}

Nesting::Kind* Nesting::find(std::string_view name) {
  const auto kind = std::find_if(kinds_.begin(), kinds_.end(), [&](const Kind& k) { return isSameName(k.name, name); });
  return kind == kinds_.end() ? nullptr : &*kind;
}

Nesting::Put Nesting::add(std::string_view kind, std::string_view line, std::string& lines) {
  Kind* const known = find(kind);
  if (known == nullptr) {
    lines += line;
    return Put::inPlace;
  }
  close(*known, lines);
  const Kind* const parent = known->parent ? &kinds_[*known->parent] : nullptr;
  const std::string_view object = line.substr(0, line.size() - 1);
  if (known->children.empty()) {
    deliver(*known, object, lines);
  } else {
    known->isOpen = true;
    known->object.assign(object.substr(0, object.size() - 1));
  }
  if (parent == nullptr || parent->isOpen) return Put::inPlace;
  return parent->isLeftOut ? Put::withoutParent : Put::beforeParent;
}

void Nesting::leaveOut(std::string_view kind, std::string& lines) {
  Kind* const known = find(kind);
  if (known == nullptr) return;
  close(*known, lines);
  known->isLeftOut = true;
}

void Nesting::finish(std::string& lines) {
  for (Kind& kind : kinds_)
    if (!kind.parent) close(kind, lines);
}

// Closes what is below first. It may be open without this: it then came before any parent.
void Nesting::close(Kind& kind, std::string& lines) {
  for (const std::size_t child : kind.children)
    close(kinds_[child], lines);
  kind.isLeftOut = false;
  if (!kind.isOpen) return;
  kind.isOpen = false;
  std::string object = std::move(kind.object);
  for (const std::size_t child : kind.children) {
    if (object.size() > 1) object += ',';
    object += '"' + kinds_[child].name + "\":[" + kinds_[child].collected + ']';
    kinds_[child].collected.clear();
  }
  deliver(kind, object + '}', lines);
}

void Nesting::deliver(const Kind& kind, std::string_view object, std::string& lines) {
  if (!kind.parent || !kinds_[*kind.parent].isOpen) {
    lines.append(object) += '\n';
    return;
  }
  std::string& collected = kinds_[static_cast<std::size_t>(&kind - kinds_.data())].collected;
  if (!collected.empty()) collected += ',';
  collected += object;
}

}  // namespace oxr::rec
