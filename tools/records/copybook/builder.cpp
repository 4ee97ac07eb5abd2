#include "records/copybook/builder.hpp"

#include <algorithm>

#include "records/copybook/counters.hpp"
#include "records/copybook/fieldshape.hpp"
#include "records/copybook/placement.hpp"

// From entries to a layout, in this order:
//   1. choose the record: the entries from one level 01 to the next
//   2. turn each entry into an item below its group: kind and size of fields, what REDEFINES means
//   3. find the counter of each counted array: all items must be known for that
//   4. place the items of each group

namespace oxr::rec::copybook {

namespace {

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

class LayoutBuilder {
 public:
  LayoutBuilder(const Source& source, const CopybookOptions& options) : source_(source), options_(options) {}

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

  const Source& source_;
  const CopybookOptions& options_;
  Layout layout_;
  std::vector<Item>& items_ = layout_.items;
  std::vector<const Entry*> entries_;       // the entry of each item; null for a root that the copybook does not have
  std::vector<ItemIndex> previousSibling_;  // of each item
  std::vector<std::uint32_t> boundaries_;   // of each item, as SYNCHRONIZED asks for it
  std::vector<OpenGroup> open_;             // the root first; empty only before it is there
};

Record LayoutBuilder::choose(const std::vector<Record>& records, std::string_view name) const {
  if (records.empty()) source_.raise("the copybook has no entry");
  if (name.empty()) {
    const auto first = std::find_if(records.begin(), records.end(),
                                    [](const Record& record) { return record.entries.front().level != 77; });
    return first == records.end() ? records.front() : *first;
  }
  std::string known;
  const Record* chosen = nullptr;
  for (const Record& record : records) {
    if (equalIgnoringCase(record.name, name)) {
      if (chosen != nullptr)
        source_.raise(record.entries.front().place, "another record is named " + record.entries.front().name);
      chosen = &record;
    }
    if (known.size() < 200) known += (known.empty() ? "" : ", ") + std::string(record.name);
  }
  if (chosen == nullptr) source_.raise("no record is named " + std::string(name) + "; there are: " + known);
  return *chosen;
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
  boundaries_.push_back(1);
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
  item.file = entry.place.file;
  item.line = entry.place.line;
  item.next = static_cast<ItemIndex>(items_.size() + 1);
  const Inherited inherited = (open_.empty() ? Inherited() : open_.back().inherited).with(entry, options_.dialect);
  previousSibling_.push_back(open_.empty() ? kNoItem : open_.back().lastChild);
  if (!open_.empty()) link(item, entry);
  readOccurs(item, entry);
  if (!isGroup)
    shapeField(source_, entry, inherited, options_, item);
  else if (entry.picture)
    source_.raise(entry.picture->place, "an entry with items below it can't have a picture");
  boundaries_.push_back(!isGroup && inherited.isSynchronized ? boundaryOf(item, options_.dialect) : 1);
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

Layout LayoutBuilder::build(std::span<const Entry> entries, std::string_view recordName) {
  const std::vector<Record> records = splitRecords(entries);
  const Record record = choose(records, recordName);
  for (const Entry& entry : record.entries)
    if (entry.fault) throw *entry.fault;
  layout_.fileNames = source_.fileNames();
  layout_.fileName = layout_.fileNames.front();
  layout_.recordName = std::string(record.name);
  checkRecordRedefines(records, record);
  addItems(record);
  findCounters(source_, entries_, layout_);
  placeItems(source_, entries_, std::move(boundaries_), options_.dialect, items_);
  return std::move(layout_);
}

}  // namespace

std::vector<std::string> recordNames(std::span<const Entry> entries) {
  std::vector<std::string> names;
  for (const Record& record : splitRecords(entries))
    names.emplace_back(record.name);
  return names;
}

Layout buildLayout(const Source& source, std::span<const Entry> entries, std::string_view recordName,
                   const CopybookOptions& options) {
  return LayoutBuilder(source, options).build(entries, recordName);
}

}  // namespace oxr::rec::copybook
