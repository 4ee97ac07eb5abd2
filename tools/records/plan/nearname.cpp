#include "records/plan/nearname.hpp"

#include <algorithm>
#include <numeric>
#include <vector>

namespace oxr::rec {

namespace {

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// How many letters must be added, left out or changed to make one name of another.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (upper(a[i]) == upper(b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j + 1] + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

// A third of the letters may differ, and one more.
std::string_view nearestName(std::string_view given, std::span<const std::string_view> names) {
  std::string_view best;
  std::size_t least = 1 + given.size() / 3;
  for (const std::string_view name : names) {
    const std::size_t far = distance(name, given);
    if (far > least) continue;
    least = far;
    best = name;
  }
  return best;
}

}  // namespace oxr::rec
