#include "records/recordtemplate.hpp"

#include <algorithm>
#include <cstring>

#include "records/fields/converter.hpp"

namespace oxr::rec {

namespace {

bool isText(Kind kind) {
  switch (kind) {
    case Kind::text:
    case Kind::edited:
    case Kind::external:
    case Kind::national:
    case Kind::dbcs:
      return true;
    default:
      return false;
  }
}

}  // namespace

void RecordTemplate::copy(std::uint64_t offset, std::uint64_t size, unsigned char* to) {
  if (filler_) {
    std::memset(to, *filler_, size);
    return;
  }
  if (bytes_.empty()) make();
  const std::uint64_t there = offset < bytes_.size() ? std::min<std::uint64_t>(size, bytes_.size() - offset) : 0;
  if (there != 0) std::memcpy(to, bytes_.data() + offset, there);
  std::memset(to + there, 0, size - there);
}

void RecordTemplate::make() {
  bytes_.assign(layout_.maxSize(), 0);
  fill(0, 0);
}

// Fills all occurrences of an item, the first of which begins at `at`. What redefines another item has no bytes of its
// own.
void RecordTemplate::fill(ItemIndex index, std::uint32_t at) {
  const Item& item = layout_.items[index];
  if (item.isGroup()) {
    for (ItemIndex child = index + 1; child < item.next; child = layout_.items[child].next)
      if (layout_.items[child].redefines == kNoItem) fill(child, at + layout_.items[child].offset);
  } else if (isText(item.kind)) {
    try {
      writer_.fillWithBlanks(item.kind, bytes_.data() + at, item.size);
    } catch (const FieldRefused&) {
      // The code page has no such characters: the bytes stay zero.
    }
  }
  for (std::uint32_t i = 1; i < item.occurs.max; ++i)
    std::memcpy(bytes_.data() + at + std::size_t{i} * item.size, bytes_.data() + at, item.size);
}

}  // namespace oxr::rec
