#pragma once

#include <string>
#include <vector>

namespace oxr::rec {

// Rows in columns that are as wide as their widest cell, two blanks apart. A column of numbers is set to the right; the
// last one may be of any width.
std::string tableText(const std::vector<std::vector<std::string>>& rows, const std::vector<bool>& isNumber);

}  // namespace oxr::rec
