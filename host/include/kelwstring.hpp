#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>

#include "kelexport.hpp"
#include "kelunits.hpp"

template <unsigned N>
class KelBufferedWstring;

// A counted string of UTF-16 code units, always zero-terminated in storage.
//
// The characters lie in one of three places: nowhere (an empty string without a buffer), in the inline buffer of a
// KelBufferedWstring, or in a heap block that strings share by an atomic reference count. Copying a string with a block
// shares it; changing a string that shares its block first gives it characters of its own.
//
// Two strings that share a block may be used in two threads; one string may not be changed by two threads at once.
//
// Example:
//   KelBufferedWstring<16u> text(units, 3);  // "123", inline, no allocation
//   text.appendInternal(units, 1, 0);        // "1231"
//   KelWstring copy(text);                   // short texts are copied, long ones shared
class KELHOST_EXPORT KelWstring {
 public:
  // "Not found", and "to the end" where a count is asked for.
  static constexpr unsigned npos = 0xFFFFFFFFu;

  // Makes an empty string without storage.
  constexpr KelWstring() noexcept = default;
  // Copies `count` units.
  KelWstring(const unsigned short* text, unsigned count) { assignInternal(text, count, 0); }
  // Copies the units of the view.
  explicit KelWstring(oxr::UnitView text) { assignInternal(text.data(), static_cast<unsigned>(text.size()), 0); }
  KelWstring(const KelWstring& other) { assign(other); }
  KelWstring(KelWstring&& other) noexcept(false) { take(other); }
  KelWstring& operator=(const KelWstring& other) { return assign(other), *this; }
  KelWstring& operator=(KelWstring&& other) noexcept(false) {
    if (this != &other) take(other);
    return *this;
  }
  ~KelWstring() {
    if (isShared_) dropBlock();
  }

  // Gives the code units, zero-terminated and never null. They are valid until the string is changed or destroyed.
  const unsigned short* characters() const noexcept { return text_; }
  // Counts code units.
  unsigned length() const noexcept { return length_; }
  // Views the code units, which stay valid as those of characters() do.
  oxr::UnitView view() const noexcept { return {text_, length_}; }

  // Shares the block of `other` when it has one and this string could not hold the text inline; else copies.
  void assign(const KelWstring& other) {
    if (other.isShared_)
      assignShared(other);
    else
      assignInternal(other.text_, other.length_, 0);
  }

  // Replaces the contents with `count` units. The last argument of this family is reserved: 0. `text` may lie inside
  // this string.
  void assignInternal(const unsigned short* text, unsigned count, int) {
    if (!isShared_ && count <= inlineCapacity_)
      setInline(text, count);
    else
      assignLong(text, count);
  }
  // Appends `count` units.
  void appendInternal(const unsigned short* text, unsigned count, int) { replaceInternal(length_, 0, text, count, 0); }
  // Inserts before `position`; a position past the end appends.
  void insertInternal(unsigned position, const unsigned short* text, unsigned count, int) {
    replaceInternal(position, 0, text, count, 0);
  }
  // Replaces up to `length` units from `position` on.
  void replaceInternal(unsigned position, unsigned length, const unsigned short* text, unsigned count, int);
  // Erases up to `count` units; eraseInternal(0, 0xFFFFFFFF) empties the string.
  void eraseInternal(unsigned position, unsigned count) { replaceInternal(position, count, nullptr, 0, 0); }
  // Makes room for `capacity` units, so that growing up to there allocates nothing.
  void reserve(unsigned capacity);

  // Makes the string `length` units long with unspecified contents and returns them for writing. This builds text in
  // place, without a scratch copy.
  unsigned short* resizeForOverwrite(unsigned length) {
    unsigned short* const units = resizeInPlace(length);
    return units != nullptr ? units : resizeBlock(length);
  }
  // Does the same where the text stays in the place that the string has; else leaves the string and returns null.
  [[gnu::always_inline]] unsigned short* resizeInPlace(unsigned length) {
    if (!canHold(length) || (isShared_ && length <= inlineCapacity_)) return nullptr;
    length_ = length;
    if (isShared_ || inlineCapacity_ != 0) text_[length] = 0;
    return text_;
  }

  // Cuts a string that resizeForOverwrite() has made to its first `length` units. It must have at least so many, and
  // share its characters with no other.
  void cutTo(unsigned length) {
    length_ = length;
    if (isShared_ || inlineCapacity_ != 0) text_[length] = 0;
  }

  // Makes the string `count` units longer and returns the first of them for writing; their contents are unspecified.
  unsigned short* appendForOverwrite(unsigned count);

  // Gives up to `count` units from `position` on as a new string.
  KelWstring substr(unsigned position, unsigned count) const;

  // Gives the unit at `index`; an index past the end gives the terminator, which must not be written.
  const unsigned short& operator[](unsigned index) const { return text_[index < length_ ? index : length_]; }
  const unsigned short& at(unsigned index) const { return (*this)[index]; }
  unsigned short& at(unsigned index) {
    unshare();
    return text_[index < length_ ? index : length_];
  }

  // Gives the first position at or after `from`, or npos. An empty pattern is found at `from`.
  unsigned find(const KelWstring& pattern, unsigned from) const { return find(pattern.view(), from); }
  unsigned find(unsigned short unit, unsigned from) const { return find(oxr::UnitView(&unit, 1), from); }
  unsigned find(oxr::UnitView pattern, unsigned from) const {
    const auto position = view().find(pattern, from);
    return position == oxr::UnitView::npos ? npos : static_cast<unsigned>(position);
  }

  // Compares the values of the code units up to the shorter length, then the lengths. The result is negative when this
  // string sorts first.
  int compare(const KelWstring& other) const {
    if (text_ == other.text_) return 0;
    const int order = view().compare(other.view());
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
  }

  // Inserts zero-terminated text before `position`; null inserts nothing.
  void insert(unsigned position, const unsigned short* text) {
    if (text != nullptr) insertInternal(position, text, static_cast<unsigned>(oxr::UnitView(text).size()), 0);
  }

 protected:
  // Tells the base that a buffer of `inlineCapacity` units and a terminator follows it.
  explicit KelWstring(unsigned short inlineCapacity) noexcept : text_(inlineBuffer()), inlineCapacity_(inlineCapacity) {
    *text_ = 0;
  }

 private:
  struct Block {
    std::atomic<std::uint64_t> references;
    std::uint32_t capacity;  // in code units, the terminator not counted
    std::uint32_t reserved;
    unsigned short* units() { return reinterpret_cast<unsigned short*>(this + 1); }
  };
  // What an empty string without a buffer shows. It is never written.
  static constexpr unsigned short kTerminator = 0;

  static Block* allocateBlock(unsigned capacity);
  static unsigned grownCapacity(unsigned length);

  unsigned short* inlineBuffer() { return reinterpret_cast<unsigned short*>(this + 1); }
  Block* block() const { return reinterpret_cast<Block*>(text_) - 1; }
  // Tells whether a text of `length` units can be written in place: never while another string shares the block.
  bool canHold(unsigned length) const {
    if (!isShared_) return length <= inlineCapacity_;
    return block()->references.load(std::memory_order_acquire) == 1 && length <= block()->capacity;
  }
  // Copies `count` units, at least one Word, by its two ends, which may overlap. Both are read before one is written,
  // so source and target may overlap too.
  template <class Word>
  static void copyEnds(unsigned short* target, const unsigned short* source, unsigned count) {
    const unsigned last = count - sizeof(Word) / sizeof *source;
    Word head, tail;
    std::memcpy(&head, source, sizeof head);
    std::memcpy(&tail, source + last, sizeof tail);
    std::memcpy(target, &head, sizeof head);
    std::memcpy(target + last, &tail, sizeof tail);
  }
  // Does what memmove does, without the call, which would be most of the cost of a short text.
  static void copyShort(unsigned short* target, const unsigned short* source, unsigned count) {
    if (count > 16)
      std::memmove(target, source, count * sizeof *source);
    else if (count >= 8)
      copyEnds<std::array<std::uint64_t, 2>>(target, source, count);
    else if (count >= 4)
      copyEnds<std::uint64_t>(target, source, count);
    else if (count >= 2)
      copyEnds<std::uint32_t>(target, source, count);
    else if (count == 1)
      *target = *source;
  }
  void setInline(const unsigned short* text, unsigned count) {
    copyShort(text_, text, count);
    if (inlineCapacity_ != 0) text_[count] = 0;
    length_ = count;
  }
  void setEmpty() noexcept;
  unsigned short* freshUnits(unsigned length);
  unsigned short* firstBlock(unsigned length);
  void adopt(unsigned short* units, unsigned length) noexcept;
  [[gnu::noinline]] void makeRoom(std::uint64_t length);
  void dropBlock() noexcept;
  void assignLong(const unsigned short* text, unsigned count);
  void assignShared(const KelWstring& other);
  void take(KelWstring& other);
  void unshare();
  unsigned short* resizeBlock(unsigned length);
  [[gnu::noinline]] unsigned short* replaceBlock(unsigned length);

  unsigned short* text_ = const_cast<unsigned short*>(&kTerminator);
  unsigned length_ = 0;
  unsigned short inlineCapacity_ = 0;  // of the buffer that follows this object; 0 when there is none
  bool isShared_ = false;              // text_ lies in a heap block
};
static_assert(sizeof(KelWstring) == 16);

// A string with room for N units inside the object, so that short texts never allocate.
template <unsigned N>
class KelBufferedWstring : public KelWstring {
 public:
  // Makes an empty string.
  KelBufferedWstring() noexcept : KelWstring(static_cast<unsigned short>(N)) {}
  // Copies `count` units.
  KelBufferedWstring(const unsigned short* text, unsigned count) : KelBufferedWstring() {
    assignInternal(text, count, 0);
  }
  // Copies the units of the view.
  explicit KelBufferedWstring(oxr::UnitView text) : KelBufferedWstring() {
    assignInternal(text.data(), static_cast<unsigned>(text.size()), 0);
  }
  // Takes the text of any string, as KelWstring::assign() does.
  KelBufferedWstring(const KelWstring& other) : KelBufferedWstring() { assign(other); }
  KelBufferedWstring(const KelBufferedWstring& other) : KelBufferedWstring() { assign(other); }
  KelBufferedWstring(KelBufferedWstring&& other) noexcept(false) : KelBufferedWstring() {
    KelWstring::operator=(static_cast<KelWstring&&>(other));
  }
  // Does the same.
  KelBufferedWstring& operator=(const KelWstring& other) { return assign(other), *this; }
  KelBufferedWstring& operator=(const KelBufferedWstring& other) { return assign(other), *this; }
  KelBufferedWstring& operator=(KelBufferedWstring&& other) noexcept(false) {
    KelWstring::operator=(static_cast<KelWstring&&>(other));
    return *this;
  }

 private:
  static_assert(N > 0 && N < 0x10000);
  unsigned short buffer_[N + 1];  // written through the base, which knows that it follows
};

// Tells whether both have the same code units.
inline bool operator==(const KelWstring& left, const KelWstring& right) {
  return left.characters() == right.characters() || left.view() == right.view();
}
// Compares with zero-terminated text; null equals the empty string.
inline bool operator==(const KelWstring& left, const unsigned short* right) {
  return right == nullptr ? left.length() == 0 : left.view() == oxr::UnitView(right);
}

// Gives a new string of both.
inline KelWstring operator+(const KelWstring& left, const KelWstring& right) {
  KelWstring sum;
  sum.reserve(left.length() + right.length());
  sum.appendInternal(left.characters(), left.length(), 0);
  sum.appendInternal(right.characters(), right.length(), 0);
  return sum;
}
// Gives a new string with one more unit.
inline KelWstring operator+(const KelWstring& left, unsigned short right) {
  return left + KelWstring(&right, 1);
}

template <>
struct std::less<KelWstring> {
  bool operator()(const KelWstring& left, const KelWstring& right) const { return left.compare(right) < 0; }
};
