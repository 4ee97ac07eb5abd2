#pragma once

#include "core/statetable.hpp"

// The shape that the events of a message must have. Any event that a state does not name is refused.
//
// The rows are narrower than a well-formed message would suggest, and that is the contract: the first element is opened
// by name, though it may be closed by number; no content can be closed once it had an element; a second message never
// begins, since the end of the first is no event. StateChecker.EachPairOfStateAndCallIsJudged holds it.
namespace oxr::core {

struct TreeRow {
  int state;
  const char* meaning;
  Arrows move;
  Arrows refuseAndMove = {};  // the event is refused, and the state changes all the same
};

inline constexpr Calls kStart{CALL_START_ELEMENT_ID, CALL_START_ELEMENT_NAME};
inline constexpr Calls kEnd{CALL_END_ELEMENT_ID, CALL_END_ELEMENT_NAME};

// clang-format off
inline constexpr auto kTreeMachine = std::to_array<TreeRow>({
    {0,  "before any message",     {{CALL_START_MESSAGE, 1}}},
    {1,  "in message",             {{{CALL_START_ELEMENT_NAME, CALL_END_ELEMENT_ID}, 5}, {CALL_END_MESSAGE, 2},
                                    {CALL_START_CONTENT, 8}, {CALL_PROJECT_DEPENDENCIES, 4}}},
    {2,  "message ended",          {{CALL_START_MESSAGE, 1}}},
    {3,  "project known",          {{CALL_START_CONTENT, 8}, {{CALL_START_ELEMENT_NAME, CALL_END_ELEMENT_ID}, 5},
                                    {CALL_START_EMBEDDED, 13}}},
    {4,  "dependencies known",     {{CALL_PROJECT_ID, 3}}},

    {5,  "outer element open",     {{kStart, 5}, {kEnd, 7}, {CALL_DATA, 6}}},
    {6,  "outer data seen",        {{kStart, 5}, {kEnd, 7}}},
    {7,  "outer element closed",   {{kStart, 5}, {kEnd, 7}, {CALL_DATA, 6}}},

    {8,  "in content",             {{CALL_END_CONTENT, 12}, {kStart, 9}, {CALL_END_EMBEDDED, 14}}},
    {9,  "content element open",   {{kStart, 9}, {kEnd, 11}, {CALL_DATA, 10}}},
    {10, "content data seen",      {{kStart, 9}, {kEnd, 11}}},
    {11, "content element closed", {{kStart, 9}, {kEnd, 11}, {CALL_DATA, 10}}},
    {12, "content ended",          {{CALL_END_MESSAGE, 2}}},

    {13, "embedded message open",  {}, {{CALL_START_CONTENT, 8}, {CALL_END_EMBEDDED, 14}}},
    {14, "embedded message ended", {{kStart, 9}, {CALL_END_CONTENT, 12}}},
});
// clang-format on
static_assert(areInOrder(kTreeMachine));

// What an event comes to.
struct TreeStep {
  bool isTaken = false;
  int to = 0;  // the state that follows, of an event that is refused too
};

inline constexpr auto kTreeCells = cellsOf(kTreeMachine, [](const TreeRow& row, EBitstreamWorkerCall call) {
  for (const Arrow& arrow : row.move)
    if (arrow.on.has(call)) return TreeStep{true, arrow.to};
  for (const Arrow& arrow : row.refuseAndMove)
    if (arrow.on.has(call)) return TreeStep{false, arrow.to};
  return TreeStep{false, row.state};
});

// What is no call at all is refused. The machine of the worker takes no such event, but a derived checker can ask this
// one alone.
constexpr TreeStep treeStep(int state, EBitstreamWorkerCall event) {
  if (static_cast<std::size_t>(event) >= kCallCount) return {false, state};
  return kTreeCells[static_cast<std::size_t>(state)][event];
}

}  // namespace oxr::core
