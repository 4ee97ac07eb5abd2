#include <algorithm>
#include <array>

#include "records/views/shown.hpp"
#include "records/views/views.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kMaxColumns = 1U << 16;

// Digits of the largest number in so many bytes: COMP-5 is limited by its bytes and not by its picture.
int digitsOfBytes(std::uint32_t bytes, int digits) {
  constexpr std::array<int, 9> kDigits = {0, 3, 5, 8, 10, 13, 15, 17, 20};
  return bytes < kDigits.size() ? kDigits[bytes] : digits;
}

// S9(3)V99 has 5 digits, 2 of them after the point; SPP99 has 4, of which 2 are always zero; 99PPP has 5 before it.
std::string numeric(const Item& item) {
  const int digits = item.kind == Kind::nativeBinary ? digitsOfBytes(item.size, item.digits) : item.digits;
  const int scale = item.scale;
  return "numeric(" + std::to_string(std::max(digits, scale) - std::min(scale, 0)) + ',' +
         std::to_string(std::max(scale, 0)) + ')';
}

std::string typeOf(const Item& item) {
  switch (item.kind) {
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
      return "varchar(" + std::to_string(item.size / 2) + ')';
    default:
      return "varchar(" + std::to_string(item.size) + ')';
  }
}

class TableWriter {
 public:
  explicit TableWriter(const RecordPlan& plan) : layout_(plan.layout()) {}

  std::string write(const Shown& record) {
    text_ = "CREATE TABLE \"" + (record.name.empty() ? "RECORD" : record.name) + "\" (";
    for (const Shown& child : record.children)
      columns(child, child.name);
    return text_ + "\n);\n";
  }

 private:
  void columns(const Shown& shown, const std::string& path) {
    if (shown.isArray()) {
      for (std::uint32_t i = 1; i <= shown.step->max; ++i)
        columns(shown.children.front(), path + '(' + std::to_string(i) + ')');
    } else if (shown.isField()) {
      if (count_ == kMaxColumns)
        throw PlanError(layout_.fileName + ": the table would have more than " + std::to_string(kMaxColumns) +
                        " columns");
      text_ += (count_++ == 0 ? "\n  \"" : ",\n  \"") + path + "\" " + typeOf(layout_.items[shown.step->item]);
    } else {
      for (const Shown& child : shown.children)
        columns(child, path + '.' + child.name);
    }
  }

  const Layout& layout_;
  std::string text_;
  std::size_t count_ = 0;
};

}  // namespace

std::string createTable(const RecordPlan& plan) {
  return TableWriter(plan).write(shownRecord(plan));
}

}  // namespace oxr::rec
