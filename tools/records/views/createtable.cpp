#include <algorithm>
#include <array>

#include "records/fields/datepattern.hpp"
#include "records/views/shown.hpp"
#include "records/views/views.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kMaxColumns = 1U << 16;

// Digits of the largest number in so many bytes: COMP-5 is limited by its bytes, 16 at most, and not by its picture.
constexpr std::array<int, 17> kDigitsOfBytes = {0, 3, 5, 8, 10, 13, 15, 17, 20, 22, 25, 27, 29, 32, 34, 37, 39};

// S9(3)V99 has 5 digits, 2 of them after the point; SPP99 has 4, of which 2 are always zero; 99PPP has 5 before it.
std::string numeric(const Item& item) {
  const int digits = item.kind == Kind::nativeBinary ? kDigitsOfBytes.at(item.size) : item.digits;
  const int scale = item.scale;
  return "numeric(" + std::to_string(std::max(digits, scale) - std::min(scale, 0)) + ',' +
         std::to_string(std::max(scale, 0)) + ')';
}

std::string varchar(std::uint32_t characters) {
  return "varchar(" + std::to_string(characters) + ')';
}

std::string dateType(const std::string& date) {
  const std::string iso = readDatePattern(date).iso;
  const bool hasDay = iso.starts_with("yyyy-MM-dd"), hasTime = iso.find("HH") != std::string::npos;
  const char* const zone = iso.ends_with('Z') ? " with time zone" : "";
  if (hasDay) return hasTime ? std::string("timestamp") + zone : "date";
  if (iso.starts_with("HH")) return std::string("time") + zone;
  return varchar(static_cast<std::uint32_t>(iso.size()));
}

std::string typeOf(const RecordPlan& plan, const Step& step) {
  const Item& item = itemOf(plan, step);
  const PhysicalForm& form = plan.forms()[step.form];
  if (!form.date.empty()) return dateType(form.date);
  switch (step.kind) {
    case Kind::external:
    case Kind::binary:
    case Kind::nativeBinary:
    case Kind::packed:
    case Kind::unsignedPacked:
      return numeric(item);
    case Kind::shortFloat:
      return "real";
    case Kind::longFloat:
      return "double precision";
    case Kind::national:
    case Kind::dbcs:
      return varchar(item.size / 2);
    default:
      if (step.edited == nullptr) return varchar(item.size);
      return "numeric(" + std::to_string(item.size) + ',' + std::to_string(std::max<int>(step.scale, 0)) + ')';
  }
}

// What all kinds show under a name, in the place of the first one that has it.
struct Node {
  std::string name;
  Op op;
  std::uint32_t max = 1;
  std::vector<const Step*> fields{};  // at least one for a field
  std::vector<Node> children{};
};

void add(std::vector<Node>& nodes, const Shown& shown) {
  const Op op = shown.step->op;
  auto known = std::find_if(nodes.begin(), nodes.end(),
                            [&](const Node& node) { return node.name == shown.name && node.op == op; });
  if (known == nodes.end()) known = nodes.insert(known, Node{shown.name, op});
  known->max = std::max(known->max, shown.step->max);
  if (shown.isField()) known->fields.push_back(shown.step);
  for (const Shown& child : shown.children)
    add(known->children, child);
}

class TableWriter {
 public:
  explicit TableWriter(const RecordPlan& plan) : plan_(plan) {}

  std::string write() {
    std::vector<Node> nodes;
    for (const RecordKind& kind : plan_.kinds())
      for (const Shown& child : shownRecord(plan_, kind).children)
        add(nodes, child);
    const std::string& name = plan_.kinds().front().name;
    text_ = "CREATE TABLE \"" + (name.empty() ? "RECORD" : name) + "\" (";
    for (const Node& node : nodes)
      columns(node, node.name);
    return text_ + "\n);\n";
  }

 private:
  void columns(const Node& node, const std::string& path) {
    if (node.op == Op::beginArray) {
      for (std::uint32_t i = 1; i <= node.max; ++i)
        columns(node.children.front(), path + '(' + std::to_string(i) + ')');
    } else if (node.op == Op::field) {
      if (count_ == kMaxColumns)
        throw PlanError(plan_.layout().fileName + ": the table would have more than " + std::to_string(kMaxColumns) +
                        " columns");
      text_ += (count_++ == 0 ? "\n  \"" : ",\n  \"") + path + "\" " + type(node);
    } else {
      for (const Node& child : node.children)
        columns(child, path + '.' + child.name);
    }
  }

  // Text holds whatever values of several types.
  std::string type(const Node& node) const {
    const std::string first = typeOf(plan_, *node.fields.front());
    std::uint32_t longest = 0;
    bool isSame = true;
    for (const Step* const field : node.fields) {
      constexpr std::uint32_t kSignAndPoint = 2;
      const Item& item = itemOf(plan_, *field);
      longest = std::max({longest, item.size, item.digits + kSignAndPoint});
      isSame = isSame && typeOf(plan_, *field) == first;
    }
    return isSame ? first : varchar(longest);
  }

  const RecordPlan& plan_;
  std::string text_;
  std::size_t count_ = 0;
};

}  // namespace

std::string createTable(const RecordPlan& plan) {
  return TableWriter(plan).write();
}

}  // namespace oxr::rec
