#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "records/copybook/copybook.hpp"

// Any text gives a layout that holds together, or a CopybookError that names a place in it. Half of the texts are made
// of entries that belong together, so that most of them give a layout: of these the size of each field is known as
// well. Texts copy others: themselves, one that is good, or one of any bytes.

namespace oxr::fuzz {

namespace copybook {

using namespace oxr::rec;

struct FieldText {
  const char* clauses;
  std::uint32_t size;
};

inline constexpr FieldText kFieldTexts[] = {{"PIC X(3)", 3},
                                            {"PIC 9", 1},
                                            {"PIC S9(4) COMP", 2},
                                            {"PIC S9(9)V99 COMP-3", 6},
                                            {"PIC ZZ9.99CR", 8},
                                            {"COMP-2", 8},
                                            {"PIC 9(20) COMP", 9},
                                            {"PIC S9(2) SIGN LEADING SEPARATE", 3},
                                            {"PIC SPP9(5)", 5},
                                            {"PIC 9(5) COMP", 4},
                                            {"COMP-1", 4},
                                            {"PIC S9(18) BINARY", 8},
                                            {"PIC S9(9) COMP SYNC", 4},
                                            {"PIC 9(4) COMP-5 SYNC", 2},
                                            {"COMP-2 SYNC", 8},
                                            {"PIC 9(5) COMP-6", 3},
                                            {"PIC N(4)", 8},
                                            {"USAGE INDEX", 4},
                                            {"PIC X(70000000)", 70'000'000}};  // four of them pass the limit

// A copybook of entries that belong together, and the sizes of its fields in their order: none if the text was spoilt.
class Composer {
 public:
  explicit Composer(Choices& choices) : choices_(choices) {
    entry(1, "R", "");
    entry(5, "N", "PIC 9");
    sizes.push_back(1);
    children(1);
    if (choices_.upTo(3) == 0) spoil();
  }

  std::string text;
  std::vector<std::uint32_t> sizes;

 private:
  static constexpr unsigned kDeepest = 8;

  void entry(unsigned level, const std::string& name, const std::string& clauses) {
    text += "       " + std::to_string(level) + ' ' + name + "\n           " + clauses + ".\n";
  }

  // The texts that are copied hold one field, whose name may be replaced.
  void copied(unsigned level) {
    text += "       COPY GOOD REPLACING ==:L:== BY ==" + std::to_string(level) + "==\n           " +
            choices_.oneOf(kReplacements) + ".\n";
    sizes.push_back(2);
  }

  void children(unsigned depth) {
    std::string previous;
    if (choices_.upTo(3) == 3) copied(5 * depth);
    for (int left = choices_.between(1, 4); left > 0; --left) {
      std::string clauses = choices_.oneOf(kArrays);
      if (!previous.empty() && choices_.upTo(3) == 3) clauses += " REDEFINES " + previous;
      const bool isGroup = depth < kDeepest && choices_.upTo(3) == 3;
      const std::string name = choices_.upTo(5) == 5 ? "FILLER" : "F" + std::to_string(++names_);
      if (!isGroup) {
        const FieldText& field = choices_.oneOf(kFieldTexts);
        sizes.push_back(field.size);
        clauses += std::string(" ") + field.clauses;
      }
      entry(5 * depth, name, clauses);
      if (isGroup) children(depth + 1);
      previous = name == "FILLER" ? "" : name;
    }
  }

  // Cuts the text off or changes a byte of it.
  void spoil() {
    sizes.clear();
    const std::size_t at = choices_.upTo(text.size() - 1);
    if (choices_.coin())
      text.resize(at);
    else
      text[at] = choices_.any<char>();
  }

  static constexpr const char* kReplacements[] = {"==:T:== BY ==X==", "9 BY 8",
                                                  "LEADING ==FIE== BY ====", "==FIELD-:T:== BY F"};
  static constexpr const char* kArrays[] = {"", "", "", "OCCURS 3", "OCCURS 0 TO 4 DEPENDING ON N"};
  Choices& choices_;
  unsigned names_ = 0;
};

inline void checkLinks(const Layout& layout, ItemIndex i) {
  const Item& item = layout.items[i];
  require(item.next > i && item.next <= layout.items.size(), "an item's next lies outside");
  require((item.next > i + 1) == item.isGroup(), "only groups have items below them");
  require(i == 0 ? item.parent == kNoItem : item.parent < i && item.next <= layout.items[item.parent].next,
          "an item does not lie in its parent");
  for (ItemIndex child = i + 1; child < item.next; child = layout.items[child].next)
    require(layout.items[child].parent == i, "a child has another parent");
  if (item.redefines == kNoItem) return;
  const Item& origin = layout.items[item.redefines];
  require(item.redefines < i && origin.parent == item.parent && origin.redefines == kNoItem && origin.isRedefined,
          "a redefinition does not lead to an earlier sibling with bytes of its own");
  require(item.offset == origin.offset && item.areaSize == 0 && origin.areaSize >= item.totalSize(),
          "a redefinition does not lie in the area of what it redefines");
  require(!item.movesWhatFollows() && !origin.movesWhatFollows(), "a redefinition moves what follows it");
}

// Children follow one another without gaps and fill their group.
inline void checkSizes(const Layout& layout, ItemIndex group) {
  std::uint64_t end = 0;
  bool isMoved = false;
  std::map<ItemIndex, std::uint32_t> areas;  // the largest of an item and all that redefines it
  for (ItemIndex i = group + 1; i < layout.items[group].next; i = layout.items[i].next) {
    std::uint32_t& area = areas[layout.items[i].redefines == kNoItem ? i : layout.items[i].redefines];
    area = std::max(area, layout.items[i].totalSize());
  }
  for (ItemIndex i = group + 1; i < layout.items[group].next; i = layout.items[i].next) {
    const Item& item = layout.items[i];
    require(item.size > 0 && item.occurs.min <= item.occurs.max && item.occurs.max > 0, "an item has no bytes");
    require(std::uint64_t{item.size} * item.occurs.max <= kMaxRecordBytes, "an item passes the limit");
    if (item.redefines != kNoItem) continue;
    require(item.offset == end + item.slack && item.hasFixedOffset == !isMoved && item.areaSize == areas[i],
            "an item does not follow the one before it");
    end = item.offset + item.areaSize;
    isMoved = isMoved || item.movesWhatFollows();
  }
  require(end <= layout.items[group].size && layout.items[group].size - end < 8 && end <= kMaxRecordBytes,
          "a group is not the sum of its items");
  require(layout.items[group].hasVariableSize == isMoved, "a group does not know whether it varies in size");
}

// A counter is an integer before the array and lies in no array that the counted one isn't in.
inline void checkCounter(const Layout& layout, ItemIndex array) {
  const Occurs& occurs = layout.items[array].occurs;
  if (!occurs.isCounted()) return;
  require(occurs.isArray && occurs.counter < layout.counters.size(), "a counted array has no counter");
  const ItemIndex counter = layout.counters[occurs.counter];
  const Item& item = layout.items[counter];
  require(counter < array && item.counterSlot == occurs.counter && item.digits > 0 && item.scale == 0,
          "a counter is no earlier integer");
  for (ItemIndex i = counter; i != kNoItem; i = layout.items[i].parent) {
    require(i == counter || layout.items[i].holdsCounter, "a group does not know that it holds a counter");
    require(!layout.items[i].occurs.isArray || (i < array && array < layout.items[i].next),
            "a counter lies in an array that the counted one isn't in");
  }
}

inline void checkFields(const Layout& layout, const std::vector<std::uint32_t>& sizes) {
  std::vector<std::uint32_t> found;
  for (const Item& item : layout.items)
    if (!item.isGroup()) found.push_back(item.size);
  require(found == sizes, "a field has another size than its clauses say");
}

}  // namespace copybook

inline void checkCopybook(Choices& choices) {
  using namespace copybook;
  CopybookOptions options;
  options.format = static_cast<SourceFormat>(choices.upTo(2));
  options.dialect = static_cast<Dialect>(choices.upTo(1));
  std::string text;
  std::vector<std::uint32_t> sizes;
  if (choices.coin()) {
    const auto bytes = choices.allBytes();
    text.assign(bytes.begin(), bytes.end());
  } else {
    Composer composed(choices);
    text = composed.text;
    sizes = composed.sizes;
  }
  // With a text that is no file the reader finds itself, one that is good, and its own second half.
  options.readText = [&](const std::filesystem::path& path) -> std::optional<std::string> {
    if (path == "GOOD.cpy") return "       :L: FIELD-:T:\n           PIC 999 COMP.\n";
    if (path == "fuzz.cob") return text;
    if (path == "HALF") return text.substr(text.size() / 2);
    return std::nullopt;
  };
  try {
    const Copybook copybook = Copybook::read(text, "fuzz.cob", options);
    const Layout layout = copybook.layout();
    require(!layout.items.empty() && layout.record().isGroup() && layout.record().next == layout.items.size(),
            "the first item is not the record");
    for (ItemIndex i = 0; i < layout.items.size(); ++i) {
      checkLinks(layout, i);
      checkCounter(layout, i);
      if (layout.items[i].isGroup()) checkSizes(layout, i);
    }
    if (!sizes.empty()) checkFields(layout, sizes);
    require(!describe(layout).empty(), "a layout has no description");
  } catch (const CopybookError& error) {
    const bool isOwn = error.file() == "fuzz.cob";
    require((!isOwn || error.line() <= std::count(text.begin(), text.end(), '\n') + 1) && !error.message().empty(),
            "an error does not name a place in the text");
  }
}

}  // namespace oxr::fuzz
