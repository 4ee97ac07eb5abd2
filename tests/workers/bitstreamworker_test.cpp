#include "bitstreamworker.hpp"

#include <gtest/gtest.h>

#include "harness/headers.hpp"
#include "records/records.hpp"

namespace oxr::test {
namespace {

// The program's worker and handler leave to the base classes what is tested here.
TEST(BitstreamWorker, EndOfMessageIsFoundByParsingTheRest) {
  struct : rec::FaultListener {
    bool goOnAfter(const rec::FieldFault&) override { return true; }
  } listener;
  const rec::Layout layout = rec::readCopybook("01 R. 05 ID PIC X(10).", "c", {rec::SourceFormat::free, {}});
  const rec::RecordPlan plan(layout, {.form = {819}});
  rec::JsonHandler json(plan.names(), {});
  const rec::RecordWorker::Owner worker = rec::RecordWorker::make(plan, {}, listener);
  EXPECT_EQ(headerIn(dynamic_cast<void*>(worker.get()), 128, "QVFP"), "QVFP 8 24");
  EXPECT_EQ(headerIn(dynamic_cast<void*>(worker.get()), 128, "QVFW"), "QVFW 8 24");
  EXPECT_EQ(headerIn(dynamic_cast<void*>(worker.get()), 128, "QVFB"), "QVFB 48 72");
  worker->initializeParse(-1, nullptr, -1);
  worker->setFIHandler(&json, false);
  const std::string text(50, 'x');
  for (const int records : {1, 5}) {
    ReadOnlyByteBuffer buffer;
    buffer.create(text.data(), 10 * records);
    worker->parseFirst(&buffer, nullptr, true, 0, -1);
    EXPECT_EQ(worker->getEndOfMessageOffset(), 10 * records);
    EXPECT_FALSE(worker->hasNext());  // one more would be refused
  }
  int id = 42;
  EXPECT_TRUE(json.startMessageContent(id, 1, WorkerInfoPtr::defaultWIP, -1, -1, -1, -1) == 0 && id == 42);
}

TEST(BitstreamWorker, HeadersAreMarkedAliveAndDead) {
  EXPECT_EQ(headerOfA<rec::JsonHandler>("QVFH", std::vector<unsigned short>(), rec::JsonHandler::Options()),
            "QVFH 8 24 / 0OXR QVFH 8 24");
  EXPECT_EQ(headerOfA<FIParseException>("QVFQ"), "QVFQ 1052 1080 / 0OXR QVFQ 1052 1080");
  EXPECT_EQ(headerOfA<FIHandlerException>("QVFI"), "QVFI 1052 1072 / 0OXR QVFI 1052 1072");
  EXPECT_EQ(headerOfA<FIMessageTreeException>("QVFM"), "QVFM 1052 1080 / 0OXR QVFM 1052 1080");
  EXPECT_EQ(headerOfA<FIWriteException>("QVFE"), "QVFE 8 1056 / 0OXR QVFE 8 1056");
}

}  // namespace
}  // namespace oxr::test
