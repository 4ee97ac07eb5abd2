#pragma once

namespace oxr::rec {

// What FITreeIterator::getCategory() gives for the nodes of a record's tree.
struct TreeCategory {
  static constexpr int kField = 0, kObject = 2, kArray = 12;
};

}  // namespace oxr::rec
