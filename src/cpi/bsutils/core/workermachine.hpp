#pragma once

#include "core/statetable.hpp"

// The order in which a worker may be called: it is made ready to parse or to write, gets its handler or its tree, and
// works. The events that it reports while it parses are a matter of treemachine.hpp and leave this machine where it is.
//
// Some rows are narrower than their neighbours: state 11 refuses hasNext and getWireFormatDescriptor, which 10 takes,
// and 14 stays where 12 moves on. That is the contract: StateChecker.EachPairOfStateAndCallIsJudged.
namespace oxr::core {

// How a call that does not fit is refused.
enum class Misuse : std::uint8_t { parse, write };

struct WorkerRow {
  int state;
  const char* meaning;
  Calls stay;
  Arrows move;
  bool takesEvents;
  Misuse otherwise;
};

inline constexpr Calls kEvents{CALL_START_ELEMENT_ID, CALL_START_ELEMENT_NAME,   CALL_END_ELEMENT_ID,
                               CALL_END_ELEMENT_NAME, CALL_START_MESSAGE,        CALL_END_MESSAGE,
                               CALL_START_CONTENT,    CALL_END_CONTENT,          CALL_DATA,
                               CALL_PROJECT_ID,       CALL_PROJECT_DEPENDENCIES, CALL_START_EMBEDDED,
                               CALL_END_EMBEDDED};

// clang-format off
inline constexpr auto kWorkerMachine = std::to_array<WorkerRow>({
    {0, "nothing done",
     {}, {{CALL_INITIALIZE_PARSE, 1}, {CALL_INITIALIZE_WRITE, 2}}, false, Misuse::parse},

    {1, "parse initialised",
     {CALL_INITIALIZE_PARSE}, {{CALL_SET_HANDLER, 8}, {CALL_SET_DESCRIPTOR, 7}}, false, Misuse::parse},

    {2, "write initialised",
     {}, {{CALL_SET_TREE, 3}, {CALL_SET_DESCRIPTOR, 4}}, false, Misuse::write},
    {3, "tree set",
     {}, {{CALL_WRITE, 6}, {CALL_SET_DESCRIPTOR, 5}}, false, Misuse::write},
    {4, "write initialised, descriptor set",
     {}, {{CALL_SET_TREE, 5}}, false, Misuse::write},
    {5, "tree and descriptor set",
     {}, {{CALL_WRITE, 6}}, false, Misuse::write},
    {6, "writing",
     {CALL_GET_TREE, CALL_GET_DESCRIPTOR, CALL_GET_PROJECT_ID, CALL_GET_PROJECT_DEPENDENCY, CALL_GET_MSG_START_INFO,
      CALL_GET_MSG_END_INFO, CALL_GET_MSG_HEADER, CALL_GET_MSG_CONTENT, CALL_GET_MSG_FOOTER},
     {}, false, Misuse::write},

    {7, "parse initialised, descriptor set",
     {}, {{CALL_SET_HANDLER, 9}}, false, Misuse::parse},
    {8, "handler set",
     {}, {{CALL_PARSE, 10}, {CALL_PARSE_FIRST, 12}, {CALL_SET_DESCRIPTOR, 9}}, false, Misuse::parse},
    {9, "handler and descriptor set",
     {}, {{CALL_PARSE, 11}, {CALL_PARSE_FIRST, 13}}, false, Misuse::parse},

    {10, "parsing whole",
     {CALL_GET_HANDLER, CALL_PARSE, CALL_HAS_NEXT, CALL_GET_BYTES_PARSED, CALL_GET_DESCRIPTOR},
     {{CALL_PARSE_FIRST, 12}, {CALL_SET_DESCRIPTOR, 11}}, true, Misuse::parse},
    {11, "parsing whole, descriptor set",
     {CALL_GET_HANDLER, CALL_PARSE, CALL_GET_BYTES_PARSED, CALL_SET_DESCRIPTOR},
     {{CALL_PARSE_FIRST, 13}}, true, Misuse::parse},
    {12, "parsing by parts",
     {CALL_GET_HANDLER, CALL_PARSE_FIRST, CALL_HAS_NEXT, CALL_GET_BYTES_PARSED, CALL_GET_DESCRIPTOR},
     {{CALL_PARSE, 10}, {CALL_PARSE_NEXT, 14}, {CALL_SET_DESCRIPTOR, 13}}, true, Misuse::parse},
    {13, "parsing by parts, descriptor set",
     {CALL_GET_HANDLER, CALL_PARSE_FIRST, CALL_HAS_NEXT, CALL_GET_BYTES_PARSED, CALL_GET_DESCRIPTOR,
      CALL_SET_DESCRIPTOR},
     {{CALL_PARSE, 11}, {CALL_PARSE_NEXT, 15}}, true, Misuse::parse},
    {14, "parsing next",
     {CALL_GET_HANDLER, CALL_PARSE_NEXT, CALL_HAS_NEXT, CALL_GET_BYTES_PARSED, CALL_SET_DESCRIPTOR},
     {{CALL_PARSE, 10}, {CALL_PARSE_FIRST, 12}}, true, Misuse::parse},
    {15, "parsing next, descriptor set",
     {CALL_GET_HANDLER, CALL_PARSE_NEXT, CALL_HAS_NEXT, CALL_GET_BYTES_PARSED, CALL_SET_DESCRIPTOR},
     {{CALL_PARSE, 11}, {CALL_PARSE_FIRST, 13}}, true, Misuse::parse},
});
// clang-format on
static_assert(areInOrder(kWorkerMachine));

// What a call comes to.
struct WorkerStep {
  enum class Verdict : std::uint8_t { taken, forTree, parseMisuse, writeMisuse };
  Verdict verdict = Verdict::parseMisuse;
  int to = 0;  // the state that follows, of a call that is taken
};

inline constexpr auto kWorkerCells = cellsOf(kWorkerMachine, [](const WorkerRow& row, EBitstreamWorkerCall call) {
  using Verdict = WorkerStep::Verdict;
  if (row.stay.has(call)) return WorkerStep{Verdict::taken, row.state};
  for (const Arrow& arrow : row.move)
    if (arrow.on.has(call)) return WorkerStep{Verdict::taken, arrow.to};
  if (row.takesEvents && kEvents.has(call)) return WorkerStep{Verdict::forTree, row.state};
  return WorkerStep{row.otherwise == Misuse::parse ? Verdict::parseMisuse : Verdict::writeMisuse, row.state};
});

// No state takes an unknown call. CALL_UNUSED_14 is one that every state refuses.
constexpr WorkerStep workerStep(int state, EBitstreamWorkerCall call) {
  const EBitstreamWorkerCall known = static_cast<std::size_t>(call) < kCallCount ? call : CALL_UNUSED_14;
  return kWorkerCells[static_cast<std::size_t>(state)][known];
}

}  // namespace oxr::core
