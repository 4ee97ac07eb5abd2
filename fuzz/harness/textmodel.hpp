#pragma once

#include <cstdlib>
#include <string>

// What naive models of conversions share: plain steps on plain strings.
namespace oxr::fuzz {

using Text = std::u16string;

// What a model raises: a message number of the catalogue.
struct Refused {
  int number;
};

inline void require(bool holds) {
  if (!holds) std::abort();
}

// The point moves place by place.
inline void modelShift(int places, Text& text) {
  if (places == 0) return;
  std::size_t point = text.find(u'.');
  const bool hadPoint = point != Text::npos;
  if (hadPoint)
    text.erase(point, 1);
  else
    point = text.size();
  const std::size_t digits = text.size();
  for (; places < 0; ++places)
    if (++point > text.size()) text += u'0';
  bool isBeyond = false;
  for (; places > 0; --places) {
    isBeyond |= point == 0;
    if (point == 0)
      text.insert(0, 1, u'0');
    else
      --point;
  }
  if (isBeyond) text.insert(point++, 1, u'0');
  if (point <= digits || isBeyond) text.insert(point, 1, u'.');
  const std::size_t first = text.find(u'.');
  if (first == 0)
    text.insert(0, 1, u'0');
  else if (first == text.size() - 1)
    text.pop_back();
}

}  // namespace oxr::fuzz
