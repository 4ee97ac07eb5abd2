#pragma once

#include <cstdint>
#include <vector>

#include "fimessagetree.hpp"
#include "kelunits.hpp"

// Bytes that no condition has an alternative for are shown in hexadecimal, as the value of a name of their own.

namespace oxr::rec {

inline constexpr unsigned short kRawName[] = {'R', 'A', 'W', 0};

// Puts the bytes that such a value stands for into `bytes`. False for any other value.
bool readRaw(const PWFData& value, std::vector<unsigned char>& bytes);
// The same for a record, of which nothing else is shown.
bool readRaw(const FIMessageTree& tree, std::vector<unsigned char>& bytes);

}  // namespace oxr::rec
