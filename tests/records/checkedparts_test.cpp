#include "records/checkedparts.hpp"

#include <gtest/gtest.h>

#include "fuzz/workers/recorder.hpp"
#include "harness/rows.hpp"

namespace oxr::rec::test {
namespace {

constexpr unsigned short kName[] = {'n', 0};

// Reports the events of its letters, in each part: m and . a message, s and e an element, x the end of another, d data.
struct Scripted : fuzz::RecordingWorker {
  explicit Scripted(std::string letters) : events(std::move(letters)) {}
  void setFIHandler(FIHandler* handler, bool) override { to = handler; }
  void parseFirst(const BitstreamBuffer*, std::vector<int>*, bool, int, int) override { parseNext(); }
  void parseNext() override {
    for (const char event : events) {
      if (event == 'm') to->startMessage(info, info);
      if (event == '.') to->endMessage(info);
      if (event == 's') to->startElement(kName, 0, info, 0, 0);
      if (event == 'e') to->endElement(kName, info);
      if (event == 'x') to->endElement(7, info);
      if (event == 'd') to->data(PWFData(STRING), info, 0, 0);
    }
  }
  const std::string events;
  FIHandler* to = nullptr;
  WorkerInfoPtr info;
};

TEST(CheckedParts, TellWhatNoMessageHas) {
  const QuietOutput quiet;
  for (const auto& c : oxr::test::rows("mssdesdee. fine; m. fine; msde.msde. an_event; sde an_event; msdd an_event; "
                                       "msx an_event; msse. elements_that_the_worker_leaves_open:_1")) {
    Scripted worker(c[0]);
    fuzz::RecordingHandler handler;
    CheckedParts parts(worker, handler);
    std::string told = "fine";
    try {
      const ReadOnlyByteBuffer buffer;
      parts.parseFirst(&buffer);
      parts.parseNext();
    } catch (const CheckError& error) {
      told = error.what();
    }
    EXPECT_EQ(told.substr(0, c[1].size()), c[1]) << c[0];
  }
}

}  // namespace
}  // namespace oxr::rec::test
