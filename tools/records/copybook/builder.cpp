#include "records/copybook/builder.hpp"

#include <algorithm>
#include <array>

#include "records/copybook/counters.hpp"

// From entries to a layout, in this order:
//   1. choose the record: the entries from one level 01 to the next
//   2. turn each entry into an item below its group: kind and size of fields, what REDEFINES means
//   3. find the counter of each counted array: all items must be known for that
//   4. place the items of each group, inner groups first, so that a group's size is known when its own turn comes

namespace oxr::rec::copybook {

namespace {

constexpr unsigned kMaxBinaryDigits = 38;
constexpr unsigned kIntegerDigits = 18;  // a binary number of more is wider than 8 bytes

struct BinarySize {
  unsigned digits;  // up to
  std::uint32_t bytes;
};
constexpr BinarySize kBinarySizes[] = {{4, 2}, {9, 4}, {kIntegerDigits, 8}};

std::uint32_t binaryBytes(unsigned digits) {
  for (const BinarySize& size : kBinarySizes)
    if (digits <= size.digits) return size.bytes;
  // The number needs the bits of its digits and a sign. A digit has log2(10) bits, rounded up here by so little that 38
  // digits do not show it.
  constexpr unsigned kScale = 10000000;
  constexpr unsigned kBitsPerDigit = 33219281;
  const std::uint32_t bits = (digits * kBitsPerDigit + kScale - 1) / kScale + 1;
  return (bits + 7) / 8;
}

// The kind of a number by its usage. Of DISPLAY the picture decides whether it is a number.
constexpr std::array<Kind, 6> kKinds = {Kind::external, Kind::binary,     Kind::nativeBinary,
                                        Kind::packed,   Kind::shortFloat, Kind::longFloat};

constexpr SignPlace kSignPlaces[2][2] = {{SignPlace::trailingIncluded, SignPlace::trailingSeparate},
                                         {SignPlace::leadingIncluded, SignPlace::leadingSeparate}};

bool isFloat(Usage usage) {
  return usage == Usage::shortFloat || usage == Usage::longFloat;
}

struct Record {
  std::string_view name;
  std::span<const Entry> entries;
};

std::vector<Record> splitRecords(std::span<const Entry> entries) {
  std::vector<Record> records;
  for (std::size_t begin = 0, end; begin < entries.size(); begin = end) {
    const auto isStart = [](const Entry& entry) { return entry.level == 1 || entry.level == 77; };
    end = begin + 1;
    while (end < entries.size() && !isStart(entries[end]))
      ++end;
    const Entry& first = entries[begin];
    records.push_back(
        {isStart(first) ? std::string_view(first.name) : std::string_view(), entries.subspan(begin, end - begin)});
  }
  return records;
}

// What a group hands down to the entries below it.
struct Inherited {
  Usage usage = Usage::display;
  std::optional<SignClause> sign;
  bool isSynchronized = false;

  Inherited with(const Entry& entry) const {
    return {entry.usage ? entry.usage->usage : usage, entry.sign ? entry.sign : sign,
            isSynchronized || entry.synchronized.has_value()};
  }
};

class LayoutBuilder {
 public:
  explicit LayoutBuilder(const Source& source) : source_(source) {}

  Layout build(std::span<const Entry> entries, std::string_view recordName);

 private:
  // A group whose entries are being read.
  struct OpenGroup {
    ItemIndex item;
    ItemIndex lastChild;
    unsigned level;
    Inherited inherited;
  };

  Record choose(const std::vector<Record>& records, std::string_view name) const;
  void checkRecordRedefines(const std::vector<Record>& records, const Record& record) const;
  void addItems(const Record& record);
  void addRoot();
  void addItem(const Entry& entry, bool isGroup);
  void openGroup(unsigned level, const Inherited& inherited);
  void link(Item& item, const Entry& entry);
  ItemIndex redefinedItem(const Token& name) const;
  void readOccurs(Item& item, const Entry& entry) const;
  void readField(Item& item, const Entry& entry, const Inherited& inherited) const;
  void readNumber(Item& item, const Entry& entry, const Inherited& inherited) const;
  void readSign(Item& item, const Entry& entry, const std::optional<SignClause>& inherited) const;

  void placeChildren(ItemIndex group);
  std::uint32_t totalSize(ItemIndex item) const;

  const Source& source_;
  Layout layout_;
  std::vector<Item>& items_ = layout_.items;
  std::vector<const Entry*> entries_;       // the entry of each item; null for a root that the copybook does not have
  std::vector<ItemIndex> previousSibling_;  // of each item
  std::vector<OpenGroup> open_;             // the root first; empty only before it is there
};

Record LayoutBuilder::choose(const std::vector<Record>& records, std::string_view name) const {
  if (records.empty()) source_.raise("the copybook has no entry");
  for (const Record& record : records)
    if (record.entries.front().level == 77 && records.size() > 1)
      source_.raise(record.entries.front().place, "a level 77 item beside other records is not supported");
  if (name.empty()) return records.front();
  std::string known;
  for (const Record& record : records) {
    if (equalIgnoringCase(record.name, name)) return record;
    if (known.size() < 200) known += (known.empty() ? "" : ", ") + std::string(record.name);
  }
  source_.raise("no record is named " + std::string(name) + "; there are: " + known);
}

// A record that redefines another stands for itself: only the name is checked.
void LayoutBuilder::checkRecordRedefines(const std::vector<Record>& records, const Record& record) const {
  const auto& name = record.entries.front().redefines;
  if (!name || record.entries.front().level > 1) return;
  for (const Record& earlier : records) {
    if (earlier.entries.data() == record.entries.data()) break;
    if (equalIgnoringCase(earlier.name, name->text)) return;
  }
  source_.raise(name->place, "REDEFINES names " + quoted(*name) + ", which is no earlier record");
}

void LayoutBuilder::openGroup(unsigned level, const Inherited& inherited) {
  open_.push_back({static_cast<ItemIndex>(items_.size() - 1), kNoItem, level, inherited});
}

void LayoutBuilder::addRoot() {
  items_.emplace_back();
  entries_.push_back(nullptr);
  previousSibling_.push_back(kNoItem);
  openGroup(0, {});
}

// The root stays open to the end: in a record no later entry has its level or a lower one.
void LayoutBuilder::addItems(const Record& record) {
  const auto entries = record.entries;
  const auto isGroup = [&](std::size_t i) { return i + 1 < entries.size() && entries[i + 1].level > entries[i].level; };
  if (entries.front().level != 1 || !isGroup(0)) addRoot();
  const auto close = [&] {
    items_[open_.back().item].next = static_cast<ItemIndex>(items_.size());
    open_.pop_back();
  };
  for (std::size_t i = 0; i < entries.size(); ++i) {
    while (!open_.empty() && open_.back().level >= entries[i].level)
      close();
    addItem(entries[i], isGroup(i));
  }
  while (!open_.empty())
    close();
}

void LayoutBuilder::addItem(const Entry& entry, bool isGroup) {
  Item item;
  item.name = entry.name;
  item.level = entry.level;
  item.line = entry.place.line;
  item.next = static_cast<ItemIndex>(items_.size() + 1);
  const Inherited inherited = (open_.empty() ? Inherited() : open_.back().inherited).with(entry);
  previousSibling_.push_back(open_.empty() ? kNoItem : open_.back().lastChild);
  if (!open_.empty()) link(item, entry);
  readOccurs(item, entry);
  if (!isGroup)
    readField(item, entry, inherited);
  else if (entry.picture)
    source_.raise(entry.picture->place, "an entry with items below it can't have a picture");
  items_.push_back(std::move(item));
  entries_.push_back(&entry);
  if (isGroup) openGroup(entry.level, inherited);
}

void LayoutBuilder::link(Item& item, const Entry& entry) {
  item.parent = open_.back().item;
  if (entry.redefines && entry.level > 1) {
    item.redefines = redefinedItem(*entry.redefines);
    items_[item.redefines].isRedefined = true;
  }
  open_.back().lastChild = static_cast<ItemIndex>(items_.size());
}

// The name must be that of the sibling before or of one whose bytes that sibling shares: no other bytes may lie between
// an item and what redefines it.
ItemIndex LayoutBuilder::redefinedItem(const Token& name) const {
  bool isAdjacent = true;
  for (ItemIndex i = open_.back().lastChild; i != kNoItem; i = previousSibling_[i]) {
    const bool redefines = items_[i].redefines != kNoItem;
    if (equalIgnoringCase(items_[i].name, name.text)) {
      if (isAdjacent) return redefines ? items_[i].redefines : i;
      source_.raise(name.place, "other items stand between " + quoted(name) + " and what redefines it");
    }
    isAdjacent = isAdjacent && redefines;
  }
  source_.raise(name.place, "REDEFINES names " + quoted(name) + ", which is no earlier item of the same group");
}

void LayoutBuilder::readOccurs(Item& item, const Entry& entry) const {
  if (!entry.occurs) return;
  if (entry.level == 1 || entry.level == 77)
    source_.raise(entry.occurs->place, "OCCURS can't stand at level " + std::string(entry.level == 1 ? "01" : "77"));
  item.occurs = {true, entry.occurs->min, entry.occurs->max, kNoSlot};
}

void LayoutBuilder::readField(Item& item, const Entry& entry, const Inherited& inherited) const {
  const Usage usage = inherited.usage;
  item.kind = kKinds[static_cast<std::size_t>(usage)];
  if (inherited.isSynchronized && usage != Usage::display && usage != Usage::packed)
    source_.raise(entry.synchronized.value_or(entry.place), "SYNCHRONIZED binary numbers and floats are not supported");
  if (isFloat(usage)) {
    if (entry.picture) source_.raise(entry.picture->place, "a COMP-1 or COMP-2 item has no picture");
    item.size = usage == Usage::shortFloat ? 4 : 8;
    return;
  }
  if (!entry.picture)
    source_.raise(entry.place, (item.isFiller() ? "the entry" : item.name) + " has no picture and no items below it");
  const Picture& picture = entry.picture->picture;
  item.picture = entry.picture->text;
  item.isSigned = picture.isSigned;
  if (picture.category == Picture::Category::numeric) {
    readNumber(item, entry, inherited);
    return;
  }
  if (usage != Usage::display)
    source_.raise(entry.usage ? entry.usage->place : entry.place, "this usage needs a picture of S, 9, V and P only");
  if (entry.sign) source_.raise(entry.sign->place, "SIGN needs a picture of S, 9, V and P only");
  item.kind = picture.category == Picture::Category::text ? Kind::text : Kind::edited;
  item.isJustifiedRight = entry.isJustified;
  item.size = picture.characters;
}

void LayoutBuilder::readNumber(Item& item, const Entry& entry, const Inherited& inherited) const {
  const Picture& picture = entry.picture->picture;
  item.digits = picture.digits;
  item.scale = picture.scale;
  if (item.kind == Kind::external) {
    item.size = picture.digits;
    item.isBlankWhenZero = entry.isBlankWhenZero;
    readSign(item, entry, inherited.sign);
    return;
  }
  if (entry.sign) source_.raise(entry.sign->place, "SIGN is for numbers of USAGE DISPLAY only");
  if (item.kind == Kind::packed) {
    item.size = picture.digits / 2U + 1;
    return;
  }
  if (picture.digits > kMaxBinaryDigits)
    source_.raise(entry.picture->place, "a binary number has at most " + std::to_string(kMaxBinaryDigits) + " digits");
  item.size = binaryBytes(picture.digits);
}

// A SIGN clause of the field itself makes it signed even if its picture has no S; one that is handed down does not.
void LayoutBuilder::readSign(Item& item, const Entry& entry, const std::optional<SignClause>& inherited) const {
  if (entry.sign) item.isSigned = true;
  if (!item.isSigned) return;
  const SignClause clause = inherited.value_or(SignClause{});
  item.sign = kSignPlaces[clause.isLeading][clause.isSeparate];
  if (clause.isSeparate) ++item.size;
}

std::uint32_t LayoutBuilder::totalSize(ItemIndex item) const {
  const std::uint64_t total = std::uint64_t{items_[item].size} * items_[item].occurs.max;
  if (total > kMaxRecordBytes) source_.raise(entries_[item]->place, "the item is longer than 256 MiB");
  return static_cast<std::uint32_t>(total);
}

void LayoutBuilder::placeChildren(ItemIndex group) {
  std::uint32_t end = 0;  // of all placed so far, at most kMaxRecordBytes
  bool isMoved = false;
  for (ItemIndex child = group + 1; child < items_[group].next; child = items_[child].next) {
    Item& item = items_[child];
    const std::uint32_t total = totalSize(child);
    if (item.redefines == kNoItem) {
      item.offset = end;
      item.hasFixedOffset = !isMoved;
      item.areaSize = total;
      isMoved = isMoved || item.movesWhatFollows();
    } else {
      Item& origin = items_[item.redefines];
      if (item.movesWhatFollows() || origin.movesWhatFollows())
        source_.raise(entries_[child]->redefines->place, "items with a counted array can't take part in REDEFINES");
      item.offset = origin.offset;
      item.hasFixedOffset = origin.hasFixedOffset;
      origin.areaSize = std::max(origin.areaSize, total);
    }
    end = std::max(end, item.offset + total);
    if (end > kMaxRecordBytes) source_.raise(entries_[child]->place, "the record is longer than 256 MiB");
  }
  items_[group].size = end;
  items_[group].hasVariableSize = isMoved;
}

Layout LayoutBuilder::build(std::span<const Entry> entries, std::string_view recordName) {
  const std::vector<Record> records = splitRecords(entries);
  const Record record = choose(records, recordName);
  layout_.fileName = std::string(source_.fileName());
  layout_.recordName = std::string(record.name);
  checkRecordRedefines(records, record);
  addItems(record);
  findCounters(source_, entries_, layout_);
  for (auto i = static_cast<ItemIndex>(items_.size()); i-- > 0;)
    if (items_[i].isGroup()) placeChildren(i);
  return std::move(layout_);
}

}  // namespace

std::vector<std::string> recordNames(std::span<const Entry> entries) {
  std::vector<std::string> names;
  for (const Record& record : splitRecords(entries))
    names.emplace_back(record.name);
  return names;
}

Layout buildLayout(const Source& source, std::span<const Entry> entries, std::string_view recordName) {
  return LayoutBuilder(source).build(entries, recordName);
}

}  // namespace oxr::rec::copybook
