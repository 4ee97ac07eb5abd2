#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "kelunits.hpp"

namespace oxr::python {

// What a record holds, in the order that a walk over it meets. Values come as they are made into Python's.
enum class Token : std::uint8_t {
  beginGroup,  // members, up to endGroup; a record is one; `size` is their number
  endGroup,
  beginArray,  // elements, up to endArray; `size` is their number
  endArray,
  null,
  integer,     // 8 bytes: a signed number
  real,        // 8 bytes: a double
  bigInteger,  // a sign and digits in ASCII, `size` bytes
  decimal,     // the same, with a point among the digits
  ascii,       // a text, `size` bytes
  latin1,      // the same, with characters above 0x7F
  utf16,       // a text, `size` bytes, 2 a unit
  date,        // a date, a time or both in ISO form, in ASCII
};

// Stands before what belongs to it.
struct Head {
  std::uint32_t name;  // its place among the names of the plan, behind them for RAW; no meaning in an array
  Token token;
  std::uint8_t unused[3];
  std::uint64_t size;
};

// Records in a compact form, written by a thread that does not hold the interpreter and read by one that does. Memory
// is used again and again: what is written is not cleared first.
class Tape {
 public:
  std::size_t size() const { return size_; }
  const char* data() const { return bytes_.get(); }
  void resize(std::size_t size) { size_ = size; }

  // Writes a head and makes room for `bytes` bytes after it, and some more that may be written for nothing. Returns
  // where they go; `size` in the head is theirs.
  char* put(std::uint32_t name, Token token, std::size_t bytes = 0) {
    const std::size_t whole = sizeof(Head) + padded(bytes);
    if (capacity_ - size_ < whole + kSlack) grow(whole + kSlack);
    char* const at = bytes_.get() + size_;
    const Head head{name, token, {}, bytes};
    std::memcpy(at, &head, sizeof head);
    size_ += whole;
    return at + sizeof head;
  }
  void putText(std::uint32_t name, UnitView text);
  // Optional "-", digits, optional "." and digits; anything else becomes a text.
  void putDecimal(std::uint32_t name, UnitView text);
  void putInteger(std::uint32_t name, std::int64_t value) {
    std::memcpy(put(name, Token::integer, sizeof value), &value, sizeof value);
  }
  void putReal(std::uint32_t name, double value) {
    std::memcpy(put(name, Token::real, sizeof value), &value, sizeof value);
  }
  // Sets the size in the head that begins at byte `at`.
  void setSize(std::size_t at, std::uint64_t size) {
    std::memcpy(bytes_.get() + at + offsetof(Head, size), &size, sizeof size);
  }

  static constexpr std::size_t padded(std::size_t bytes) { return (bytes + 7) & ~std::size_t{7}; }

 private:
  static constexpr std::size_t kSlack = 16;
  void grow(std::size_t more);

  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace oxr::python
