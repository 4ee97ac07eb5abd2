// The parts of the string that deal with blocks; what a text in the buffer needs is inline in the header.
//
// A change either goes into the place that the string has, which must then be its own and large enough (canHold), or it
// builds the new text in a fresh place and moves there (freshUnits, adopt). So a block that others share is never
// written, and a change that finds no memory leaves the string as it was.

#include "kelwstring.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

namespace {

constexpr unsigned kFirstBlockCapacity = 37;
constexpr std::uint64_t kMaxLength = 0xFFFFFFF0u;

// The length of a string after a change, where it can still be counted.
unsigned checkedLength(std::uint64_t length) {
  if (length > kMaxLength) throw std::length_error("KelWstring");
  return static_cast<unsigned>(length);
}

// Copies units whose places may overlap. Null is allowed where nothing is copied.
void copyUnits(unsigned short* target, const unsigned short* source, std::size_t count) {
  if (count != 0) std::memmove(target, source, count * sizeof *target);
}

}  // namespace

KelWstring::Block* KelWstring::allocateBlock(unsigned capacity) {
  const std::size_t bytes = sizeof(Block) + (std::size_t{capacity} + 1) * sizeof(unsigned short);
  return ::new (::operator new(bytes)) Block{1, capacity, 0};
}

// From 37 by half until the length fits; an empty string needs no more than its terminator.
unsigned KelWstring::grownCapacity(unsigned length) {
  if (length == 0) return 0;
  std::uint64_t capacity = kFirstBlockCapacity;
  while (capacity < length)
    capacity += capacity >> 1;
  return static_cast<unsigned>(std::min(capacity, kMaxLength));
}

void KelWstring::setEmpty() noexcept {
  text_ = inlineCapacity_ != 0 ? inlineBuffer() : const_cast<unsigned short*>(&kTerminator);
  if (inlineCapacity_ != 0) *text_ = 0;
  length_ = 0;
  isShared_ = false;
}

// Room for `length` units: the buffer where it will do, else a block of this string's own.
unsigned short* KelWstring::freshUnits(unsigned length) {
  const bool fits = inlineCapacity_ != 0 && length <= inlineCapacity_;
  return fits ? inlineBuffer() : allocateBlock(grownCapacity(length))->units();
}

// Takes over what freshUnits() gave, or a block that is counted already. A block's units never lie where the buffer
// would: the block's header comes before them.
void KelWstring::adopt(unsigned short* units, unsigned length) noexcept {
  if (isShared_) dropBlock();
  text_ = units;
  length_ = length;
  isShared_ = units != inlineBuffer();
}

// Gives a string without a block one for a text of `length` units, which are still to be written.
unsigned short* KelWstring::firstBlock(unsigned length) {
  unsigned short* const units = allocateBlock(grownCapacity(checkedLength(length)))->units();
  text_ = units;
  length_ = length;
  isShared_ = true;
  units[length] = 0;
  return units;
}

void KelWstring::dropBlock() noexcept {
  Block* const dropped = block();
  isShared_ = false;
  // A block that no other string shares can't gain a sharer here, so that its count need not change: that spares the
  // usual text a locked instruction, which takes longer than all the rest.
  if (dropped->references.load(std::memory_order_acquire) == 1 ||
      dropped->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    dropped->~Block();
    ::operator delete(dropped);
  }
}

// What assignInternal() does where the buffer alone will not do. A text that finds no room in the buffer is no piece of
// it, so that a string without a block only needs one.
void KelWstring::assignLong(const unsigned short* text, unsigned count) {
  if (isShared_)
    replaceInternal(0, length_, text, count, 0);
  else
    std::memcpy(firstBlock(count), text, std::size_t{count} * sizeof *text);
}

void KelWstring::assignShared(const KelWstring& other) {
  if (this == &other) return;
  if (other.length_ <= inlineCapacity_) {
    assignInternal(other.text_, other.length_, 0);
    return;
  }
  other.block()->references.fetch_add(1, std::memory_order_relaxed);
  adopt(other.text_, other.length_);
}

// Takes over the block of `other`, which is empty afterwards. A text without a block is copied: it may lie in the other
// string's buffer.
void KelWstring::take(KelWstring& other) {
  if (!other.isShared_) {
    assignInternal(other.text_, other.length_, 0);
    return;
  }
  unsigned short* const units = other.text_;
  const unsigned length = other.length_;
  other.setEmpty();
  adopt(units, length);
}

void KelWstring::unshare() {
  if (!isShared_ || block()->references.load(std::memory_order_acquire) == 1) return;
  unsigned short* const units = freshUnits(length_);
  copyUnits(units, text_, std::size_t{length_} + 1);
  adopt(units, length_);
}

void KelWstring::reserve(unsigned capacity) {
  if (canHold(capacity)) return;
  unsigned short* const units = allocateBlock(checkedLength(std::max(capacity, length_)))->units();
  copyShort(units, text_, length_ + 1);
  adopt(units, length_);
}

// What resizeForOverwrite() does where the buffer alone will not do: the text has a block, or will need one.
unsigned short* KelWstring::resizeBlock(unsigned length) {
  return isShared_ ? replaceBlock(length) : firstBlock(length);
}

unsigned short* KelWstring::replaceBlock(unsigned length) {
  if (length <= inlineCapacity_) {
    dropBlock();
    setEmpty();
  } else if (!canHold(length)) {
    adopt(freshUnits(checkedLength(length)), 0);
  }
  length_ = length;
  if (isShared_ || inlineCapacity_ != 0) text_[length] = 0;
  return text_;
}

// Moves the text to where `length` units have room.
void KelWstring::makeRoom(std::uint64_t length) {
  unsigned short* const units = freshUnits(checkedLength(length));
  copyUnits(units, text_, length_);
  adopt(units, length_);
}

unsigned short* KelWstring::appendForOverwrite(unsigned count) {
  const unsigned before = length_;
  const unsigned after = before + count;
  if (after < before || !canHold(after)) makeRoom(std::uint64_t{before} + count);
  length_ = after;
  if (isShared_ || inlineCapacity_ != 0) text_[after] = 0;
  return text_ + before;
}

void KelWstring::replaceInternal(unsigned position, unsigned length, const unsigned short* text, unsigned count, int) {
  position = std::min(position, length_);
  length = std::min(length, length_ - position);
  if (length == 0 && count == 0) return;
  if (count != 0 && std::less_equal<>{}(static_cast<const unsigned short*>(text_), text) &&
      std::less_equal<>{}(text, static_cast<const unsigned short*>(text_ + length_))) {
    const std::basic_string<unsigned short> copy(text, count);  // the text is a piece of this string
    replaceInternal(position, length, copy.data(), count, 0);
    return;
  }
  const unsigned tail = length_ - position - length;
  const unsigned result = checkedLength(std::uint64_t{position} + count + tail);
  if (!canHold(result)) {
    unsigned short* const units = freshUnits(result);
    copyUnits(units, text_, position);
    copyUnits(units + position + count, text_ + position + length, tail);
    adopt(units, result);
  } else {
    copyUnits(text_ + position + count, text_ + position + length, tail);
    length_ = result;
  }
  copyUnits(text_ + position, text, count);
  if (isShared_ || inlineCapacity_ != 0) text_[result] = 0;
}

KelWstring KelWstring::substr(unsigned position, unsigned count) const {
  position = std::min(position, length_);
  return KelWstring(text_ + position, std::min(count, length_ - position));
}
