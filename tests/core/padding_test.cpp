#include "core/padding.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace oxr::core {
namespace {

// All sequences of up to three bytes of zeros and others, in rooms that end anywhere in them: the bytes are those of a
// string copy, which stops at the first zero and writes zeros to the end.
TEST(PadBytes, RepeatLikeCopies) {
  for (std::size_t count = 1; count <= 3; ++count)
    for (unsigned zeros = 0; zeros < 1u << count; ++zeros)
      for (std::size_t room = 0; room <= 7; ++room) {
        std::vector<unsigned char> sequence;
        for (std::size_t i = 0; i < count; ++i)
          sequence.push_back(zeros >> i & 1 ? 0 : static_cast<unsigned char>('a' + i));
        std::string plain;
        while (plain.size() < room)
          plain.append(sequence.begin(), sequence.end());
        plain.resize(room);
        std::string copied = plain.substr(0, plain.find('\0'));
        copied.resize(room);

        std::string repeated(room, '!'), upToZero(room, '!');
        repeat({reinterpret_cast<unsigned char*>(repeated.data()), room}, sequence);
        repeatUpToZero({reinterpret_cast<unsigned char*>(upToZero.data()), room}, sequence);
        EXPECT_EQ(repeated, plain);
        EXPECT_EQ(upToZero, copied);
      }
}

}  // namespace
}  // namespace oxr::core
