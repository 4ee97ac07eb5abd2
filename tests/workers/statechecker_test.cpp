// Any sequence of calls, in all their forms, is held against a model in fuzz/workers/statechecker_check.hpp: what is
// refused, and what is forwarded to whom with which arguments.

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "fuzz/workers/statechecker_check.hpp"
#include "harness/headers.hpp"

namespace oxr::test {
namespace {

using fuzz::checker::CapturedOutput;
using fuzz::checker::Model;
using fuzz::checker::refusalOf;

// Reports events that no operation reports, too.
struct Judge : CheckedWorker {
  Judge() : CheckedWorker(nullptr) {}
  std::string judge(int call) const {
    return refusalOf([&] { _validateAndTransitionState(static_cast<EBitstreamWorkerCall>(call)); });
  }
  std::string judgeEvent(int event) {
    return refusalOf([&] { _performTreeStateTransition(static_cast<EBitstreamWorkerCall>(event)); });
  }
};

// The shortest calls to each state of the two machines, as the charts have them.
std::map<std::pair<int, int>, std::vector<int>> waysToStates() {
  std::map<std::pair<int, int>, std::vector<int>> ways{{{0, 0}, {}}};
  std::vector<std::pair<int, int>> next{{0, 0}};
  for (std::size_t i = 0; i < next.size(); ++i)
    for (int call = CALL_INITIALIZE_PARSE; call <= CALL_END_EMBEDDED; ++call) {
      Model model{next[i].first, next[i].second, {}};
      model.judge(call);
      std::vector<int> way = ways[next[i]];
      way.push_back(call);
      if (ways.try_emplace({model.worker, model.tree}, way).second) next.emplace_back(model.worker, model.tree);
    }
  return ways;
}

// After each pair a further call of each kind tells which state it led to.
TEST(StateChecker, EachPairOfStateAndCallIsJudged) {
  const CapturedOutput output;
  const auto ways = waysToStates();
  std::set<int> workerStates, treeStates;
  for (const auto& [state, way] : ways) {
    workerStates.insert(state.first);
    treeStates.insert(state.second);
    Judge stranger;
    for (const int each : way)
      stranger.judge(each);
    EXPECT_EQ(stranger.judge(CALL_END_EMBEDDED + 1), stranger.judge(CALL_UNUSED_14)) << "what is no call at all";
    EXPECT_NE(stranger.judgeEvent(CALL_END_EMBEDDED + 1), "") << "nor an event of the tree";
    EXPECT_NE(stranger.judgeEvent(-1), "");
    if (state.second != 0 && state.first != 10) continue;  // the two machines know nothing of each other
    for (int call = CALL_INITIALIZE_PARSE; call <= CALL_END_EMBEDDED; ++call)
      for (int further = CALL_INITIALIZE_PARSE; further <= CALL_END_EMBEDDED; ++further) {
        Judge checker;
        Model model;
        for (const int each : way)
          ASSERT_EQ(checker.judge(each), model.judge(each));
        ASSERT_EQ(checker.judge(call), model.judge(call)) << state.first << '/' << state.second << ", call " << call;
        ASSERT_EQ(checker.judge(further), model.judge(further))
            << state.first << '/' << state.second << ", calls " << call << ' ' << further;
      }
  }
  EXPECT_EQ(workerStates.size(), 16u);
  EXPECT_EQ(treeStates.size(), 15u);
}

// A checker in a state that a parse leads to, with a worker and a handler that record.
struct Parse {
  explicit Parse(FIHandler* to) {
    checker->initializeParse(-1, nullptr);
    checker->setFIHandler(to, false);
    checker->parse(nullptr, nullptr, 0);
    worker.taken();
  }
  CapturedOutput output;
  fuzz::RecordingWorker worker;
  std::unique_ptr<CheckedWorker> checker = std::make_unique<CheckedWorker>(&worker);
  WorkerInfoPtr info;
};
constexpr unsigned short kName[] = {'n', 0};

TEST(StateChecker, WhatFailsLateHasBeenTakenByTheStepsBefore) {
  Parse parse(nullptr);
  CheckedWorker& checker = *parse.checker;
  // Nobody to forward to: the message has begun all the same, and the elements are open.
  EXPECT_EQ(refusalOf([&] { checker.startMessage(parse.info, parse.info); }), "FIHandlerException");
  // Refused, since nothing is open; yet the end has moved the order on, so that a start by number fits.
  EXPECT_EQ(refusalOf([&] { checker.endElement(1, parse.info); }), "FIHandlerException");
  EXPECT_EQ(refusalOf([&] { checker.startElement(1, 0, parse.info, 0, 0); }), "FIHandlerException");
  EXPECT_EQ(refusalOf([&] { checker.startElement(kName, 0, parse.info, 0); }), "FIHandlerException");
  EXPECT_EQ(refusalOf([&] { checker.endElement(1, parse.info); }), "FIHandlerException");  // the name is on top
  EXPECT_EQ(refusalOf([&] { checker.endMessage(parse.info); }), "FIHandlerException");
  parse.checker.reset();
  EXPECT_EQ(parse.output.text(), "ERROR: there were 2 items left on idContext stack\n");
}

TEST(StateChecker, AMissingWorkerOrTreeIsRefusedAfterTheOrderIs) {
  const CapturedOutput output;
  oxr::CheckedWorker checker(nullptr);
  EXPECT_EQ(refusalOf([&] { checker.release(true); }), "FIParseException");
  EXPECT_EQ(refusalOf([&] { checker.write(nullptr); }), "FIParseException");  // out of order
  EXPECT_EQ(refusalOf([&] { checker.initializeWrite(nullptr, nullptr); }), "FIParseException");
  EXPECT_EQ(refusalOf([&] { checker.setWireFormatDescriptor(nullptr); }), "FIWriteException");
  const fuzz::RecordingTree tree;
  EXPECT_EQ(refusalOf([&] { checker.setFIMessageTree(&tree, false); }), "FIWriteException");
  EXPECT_EQ(refusalOf([&] { checker.getProjectId(); }), "FIWriteException");  // before write
  EXPECT_EQ(refusalOf([&] { checker.write(nullptr); }), "FIWriteException");
  EXPECT_EQ(checker.getFIMessageTree(), &tree);
  EXPECT_STREQ(reinterpret_cast<const char*>(checker.getProjectId()), reinterpret_cast<const char*>(fuzz::kText));
}

TEST(StateChecker, FindsTheEndOfTheMessageCallByCall) {
  fuzz::RecordingHandler handler;
  Parse parse(&handler);
  parse.worker.partsLeft = 2;
  EXPECT_EQ(refusalOf([&] { parse.checker->getEndOfMessageOffset(); }), "FIParseException");  // parse has no next part
  parse.checker->parseFirst(nullptr, nullptr, true, 0);
  parse.worker.taken();
  EXPECT_EQ(parse.checker->getEndOfMessageOffset(), fuzz::kNumber);
  EXPECT_EQ(parse.worker.taken(), "hasNextparseNexthasNextparseNexthasNextgetNumBytesParsed");
}

TEST(StateChecker, ReleaseEndsTheWorkersUseAndTheChecker) {
  fuzz::RecordingHandler handler;
  Parse parse(&handler);
  parse.checker.release()->release(false);
  EXPECT_EQ(parse.worker.taken(), "release 0");
  EXPECT_EQ(parse.output.text(), "ERROR: there were 0 items left on idContext stack\n");
}

TEST(StateChecker, HeadersAreMarked) {
  const CapturedOutput output;
  const CheckedWorker checker(nullptr);
  EXPECT_EQ(headerIn(&checker, sizeof checker, "QVBS"), "QVBS 144 272");
  EXPECT_EQ(headerOfA<IDInfo>("QVBI", 7), "QVBI 0 80 / 0OXR QVBI 0 80");
}

}  // namespace
}  // namespace oxr::test
