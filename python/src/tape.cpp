#include "tape.hpp"

#include <algorithm>

#include "digits.hpp"
#include "narrow.hpp"

namespace oxr::python {

namespace {

// Where the point of a decimal stands, its size if it has none; npos if the text is no decimal.
std::size_t pointOf(UnitView digits) {
  std::size_t point = digits.size();
  bool hasDigit = false;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (isDigit(digits[i])) {
      hasDigit = true;
    } else {
      if (digits[i] != '.' || point != digits.size()) return UnitView::npos;
      point = i;
    }
  }
  return hasDigit ? point : UnitView::npos;
}

}  // namespace

void Tape::grow(std::size_t more) {
  constexpr std::size_t kLeast = std::size_t{1} << 10;  // a table has a tape for each column
  const std::size_t capacity = std::max({kLeast, 2 * capacity_, size_ + more});
  auto bytes = std::unique_ptr<char[]>(new char[capacity]);
  std::copy_n(bytes_.get(), size_, bytes.get());
  bytes_ = std::move(bytes);
  capacity_ = capacity;
}

void Tape::putText(std::uint32_t name, UnitView text) {
  const std::size_t before = size_;
  const unsigned bits = narrow(text, put(name, Token::ascii, text.size()));
  if (bits < 0x80) return;
  const Token token = bits < 0x100 ? Token::latin1 : Token::utf16;
  if (token == Token::latin1) {
    std::memcpy(bytes_.get() + before + offsetof(Head, token), &token, sizeof token);
    return;
  }
  size_ = before;
  const std::size_t bytes = text.size() * sizeof(unsigned short);
  std::memcpy(put(name, token, bytes), text.data(), bytes);
}

void Tape::putDecimal(std::uint32_t name, UnitView text) {
  const std::size_t sign = !text.empty() && text[0] == '-' ? 1 : 0;
  const UnitView digits = text.substr(sign);
  const std::size_t point = pointOf(digits);
  if (point == UnitView::npos) return putText(name, text);
  if (point + 1 < digits.size()) {
    narrow(text, put(name, Token::decimal, text.size()));
  } else if (point <= std::size_t{kDigitsOfInteger}) {
    std::int64_t value = 0;
    for (const unsigned short digit : digits.substr(0, point))
      value = 10 * value + (digit - '0');
    putInteger(name, sign != 0 ? -value : value);
  } else {
    narrow(text.substr(0, sign + point), put(name, Token::bigInteger, sign + point));
  }
}

}  // namespace oxr::python
