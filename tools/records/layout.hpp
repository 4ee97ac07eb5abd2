#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace oxr::rec {

// The largest record, array and field that a layout may describe, in bytes.
inline constexpr std::uint32_t kMaxRecordBytes = 256U << 20;

// The most fields that a record may have, each counted as often as it occurs. It bounds what a copybook of a few words
// can ask of whatever holds a record's fields: a line of JSON, a table, two readings to be compared.
inline constexpr std::uint32_t kMaxRecordFields = 1U << 20;

// How the bytes of an item are to be read.
enum class Kind : std::uint8_t {
  group,           // no bytes of its own: the items below it
  text,            // PIC X, A, or a mixture of X, A and 9: characters of the code page
  edited,          // a picture with editing symbols (Z * + - CR DB B 0 / , . $): delivered as the characters it shows
  external,        // numeric DISPLAY: a digit a byte, the sign as Item::sign tells
  binary,          // COMP, COMP-4, BINARY: two's complement, value limited by the picture
  nativeBinary,    // COMP-5: two's complement, value limited by its bytes only, in the byte order of the machine of
                   // origin
  packed,          // COMP-3, PACKED-DECIMAL: two digits a byte, the sign in the last half byte
  shortFloat,      // COMP-1: 4 bytes
  longFloat,       // COMP-2: 8 bytes
  national,        // PIC N, NATIONAL: UTF-16, 2 bytes a character
  dbcs,            // PIC G, or N with DISPLAY-1: the double-byte characters of the code page, 2 bytes each, no shifts
  unsignedPacked,  // COMP-6: two digits a byte, no sign
  opaque,          // POINTER, INDEX and the like: bytes without a value outside of the program that wrote them
};

// "group", "text", ... as the enumerators are named.
std::string_view kindName(Kind kind);

// Where a external item has its sign. "Included" shares the byte with a digit, "separate" is a byte of its own.
enum class SignPlace : std::uint8_t { none, leadingIncluded, trailingIncluded, leadingSeparate, trailingSeparate };

// The place of an item in Layout::items, or kNoItem.
using ItemIndex = std::uint32_t;
inline constexpr ItemIndex kNoItem = std::numeric_limits<ItemIndex>::max();

// The number of a counter in Layout::counters, or kNoSlot.
using CounterSlot = std::uint32_t;
inline constexpr CounterSlot kNoSlot = std::numeric_limits<CounterSlot>::max();

// How often an item stands in a row.
struct Occurs {
  bool isArray = false;   // false: no OCCURS clause, min = max = 1
  std::uint32_t min = 1;  // 0 and up; equals max unless a counter rules
  std::uint32_t max = 1;  // 1 and up
  CounterSlot counter = kNoSlot;

  // True if the number is read from the record: OCCURS ... DEPENDING ON.
  bool isCounted() const { return counter != kNoSlot; }
};

// One entry of the copybook: a group or a field.
struct Item {
  std::string name;     // as written in the copybook; empty for FILLER and for an entry without a name
  std::string picture;  // as written; empty for a group and a float
  std::uint32_t line = 0;
  std::uint32_t file = 0;  // that the line is in: its place in Layout::fileNames
  std::uint8_t level = 0;
  Kind kind = Kind::group;

  // These are of numbers (external, binary, nativeBinary, packed, unsignedPacked). The value is the stored digits times
  // 10 to the power of -scale: `scale` is above `digits` for PPP9(5) (5 digits, scale 8) and negative for 9(5)PPP (5
  // digits, scale -3).
  std::uint16_t digits = 0;
  std::int16_t scale = 0;
  bool isSigned = false;  // also of an edited picture that starts with S: no compiler takes it, but files with
                          // an included sign and a point in their digits are described so
  SignPlace sign = SignPlace::none;  // external only; none if not signed

  bool isJustifiedRight = false;  // text: padded with leading blanks, not trailing ones
  bool isBlankWhenZero = false;   // external, edited: an all-blank field stands for zero
  bool hasDecimalComma = false;   // edited: comma and point in the picture have changed places

  // Bytes of ONE occurrence, counted arrays below it at their largest.
  std::uint32_t size = 0;

  // Bytes from the start of the occurrence of the enclosing group to the first occurrence of this item. Exact only if
  // `hasFixedOffset`: otherwise a counted array stands somewhere before it in the same group, and this is the
  // offset with that array at its largest.
  std::uint32_t offset = 0;
  bool hasFixedOffset = true;

  // Bytes without a meaning directly before the item, which SYNCHRONIZED put there; they are counted in `offset`.
  // Counts in a record do not change them, nor those at the end of an occurrence, which are counted in its `size`.
  std::uint32_t slack = 0;

  // Bytes that the item takes in its group, all occurrences and all that redefines it included, at the largest: what
  // follows starts at offset + areaSize, after its own slack. 0 for an item that redefines another, since its bytes are
  // counted there.
  std::uint32_t areaSize = 0;

  // A counted array lies somewhere below, so that one occurrence may be shorter than `size`.
  bool hasVariableSize = false;

  Occurs occurs;

  // The item whose bytes this one shows again, or kNoItem. It is an earlier sibling that itself redefines nothing,
  // however long the chain in the copybook is.
  //
  // Such an area of bytes has always the room of the longest of its alternatives, counted arrays at their largest:
  // short arrays move what follows within their alternative, but nothing after the area.
  ItemIndex redefines = kNoItem;
  bool isRedefined = false;

  // Where the value of this item is kept if a counted array needs it. `holdsCounter` tells that such an item lies
  // below: a walker that leaves the group out of its output must still read it.
  CounterSlot counterSlot = kNoSlot;
  bool holdsCounter = false;

  ItemIndex parent = kNoItem;
  ItemIndex next = 0;  // the first item after all that lies below this one

  bool isGroup() const { return kind == Kind::group; }
  bool isFiller() const { return name.empty(); }
  // The bytes of all occurrences together, at the largest.
  std::uint32_t totalSize() const { return size * occurs.max; }
  bool isAlternative() const { return isRedefined || redefines != kNoItem; }
  // True if a count in the record tells how many bytes this item has.
  bool isVariable() const { return hasVariableSize || occurs.isCounted(); }
  // True if the items after this one move with a count in the record.
  bool movesWhatFollows() const { return isVariable() && !isAlternative(); }
  // A binary number of more than 18 digits: laid out here, but wider than any machine integer.
  bool isWideBinary() const { return (kind == Kind::binary || kind == Kind::nativeBinary) && size > 8; }
};

// The layout of one record. Built by `readCopybook` and not changed afterwards: many threads may read it.
//
// `items` is the tree in pre-order: an item is followed by what lies below it, then by its next sibling. items[0] is
// the record and always a group; its own children start at 1. A record that is one field (01 or 77 with a picture)
// is that field, with its level, below a group of level 0 without a name; so are entries without a level 01 over them.
//
//   for (ItemIndex child = group + 1; child < items[group].next; child = items[child].next) ...
//
// A walker that follows short arrays goes through a group like this, `at` being where the next item starts:
//
//   begin = item.redefines != kNoItem ? begin of that sibling : at + item.slack;
//   read item.occurs.max, or the value in its counter's slot, occurrences from `begin` on;
//   if item.redefines == kNoItem:
//     at = item.movesWhatFollows() ? where the last occurrence ended : begin + item.areaSize
//
// An occurrence ends where the last item in it does, and the slack at its end after that: in all it has size less the
// bytes of the occurrences that are missing below.
//
// An item with hasVariableSize false can be passed over without a look at what lies below.
struct Layout {
  std::string fileName;                // of the copybook, for messages
  std::vector<std::string> fileNames;  // the same and those that it copies
  std::string recordName;
  std::vector<Item> items;
  std::vector<ItemIndex> counters;  // the item of each counter slot

  // Where an item is written, as messages have it: "customers.cob:12".
  std::string placeOf(const Item& item) const;

  const Item& record() const { return items.front(); }
  // Bytes of the longest record: of every record unless record().hasVariableSize.
  std::uint32_t maxSize() const { return record().size; }
  // Bytes from the start of the record to the first occurrence of an item, nothing if counts in the record move it.
  std::optional<std::uint32_t> recordOffset(ItemIndex item) const;
};

// A table of all items for people: level and name, offset in the record (from 0, "var" if it moves), size of one
// occurrence, kind, picture, and what else is to be known.
std::string describe(const Layout& layout);

}  // namespace oxr::rec
