#pragma once

namespace oxr::mq::test {

// How often consumers are killed.
inline int kills = 20;

}  // namespace oxr::mq::test
