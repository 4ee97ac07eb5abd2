#include "bitstreamworker.hpp"

#include <gtest/gtest.h>

#include "harness/headers.hpp"
#include "records/json/json.hpp"

namespace oxr::test {
namespace {

// A parser of parts of ten bytes each.
class PartsWorker : public BitstreamWorker {
 public:
  explicit PartsWorker(int parts) : left_(parts) {}
  void initializeParse(int, MessageInfo*, int) override {}
  void setFIHandler(FIHandler*, bool) override {}
  FIHandler* getFIHandler() const override { return nullptr; }
  void parse(const BitstreamBuffer*, std::vector<int>*, int, int) override {}
  void parseFirst(const BitstreamBuffer*, std::vector<int>*, bool, int, int) override {}
  void parseNext() override { --left_, ++parsed_; }
  bool hasNext() const override { return left_ > 0; }
  PWFInt64 getNumBytesParsed() const override { return 10 * parsed_; }
  void initializeWrite(MessageInfo*, int, int, int) override {}
  void setFIMessageTree(const FIMessageTree*, bool) override {}
  const FIMessageTree* getFIMessageTree() const override { return nullptr; }
  void write(WritableBitstreamBuffer*, int, int) override {}
  const DictionaryInfo* getWireFormatDescriptor() const override { return nullptr; }
  void setWireFormatDescriptor(const DictionaryInfo*) override {}
  void release(bool) override {}
  const unsigned short* getWorkerName() const override { return nullptr; }

 private:
  int left_, parsed_ = 0;
};

TEST(BitstreamWorker, EndOfMessageIsFoundByParsingTheRest) {
  for (const int parts : {0, 1, 5}) {
    PartsWorker worker(parts);
    if (worker.hasNext()) worker.parseNext();
    EXPECT_EQ(worker.getEndOfMessageOffset(), 10 * parts);
    EXPECT_EQ(worker.getNumBytesParsed(), 10 * parts);  // a parser without a part left has not been asked for one
  }
}

// The program's handler leaves these two as they are.
TEST(FIHandler, DefaultsLeaveEverythingAlone) {
  rec::JsonHandler handler({}, {});
  int id = 42;
  EXPECT_EQ(handler.startMessageContent(id, 1, WorkerInfoPtr::defaultWIP, -1, -1, -1, -1), 0);
  EXPECT_EQ(id, 42);
  EXPECT_NO_THROW(handler.checkRootName(KelWstring(), -1, KelWstring()));
}

TEST(BitstreamWorker, HeadersAreMarkedAliveAndDead) {
  const std::vector<unsigned short> names;
  EXPECT_EQ(headerOfA<PartsWorker>("QVFP", 0), "QVFP 8 24 / 0OXR QVFP 8 24");
  EXPECT_EQ(headerOfA<PartsWorker>("QVFW", 0), "QVFW 8 24 / 0OXR QVFW 8 24");
  EXPECT_EQ(headerOfA<PartsWorker>("QVFB", 0), "QVFB 48 72 / 0OXR QVFB 48 72");
  EXPECT_EQ(headerOfA<rec::JsonHandler>("QVFH", names, rec::JsonHandler::Options()), "QVFH 8 24 / 0OXR QVFH 8 24");
  EXPECT_EQ(headerOfA<FIParseException>("QVFQ"), "QVFQ 1052 1080 / 0OXR QVFQ 1052 1080");
  EXPECT_EQ(headerOfA<FIHandlerException>("QVFI"), "QVFI 1052 1072 / 0OXR QVFI 1052 1072");
  EXPECT_EQ(headerOfA<FIMessageTreeException>("QVFM"), "QVFM 1052 1080 / 0OXR QVFM 1052 1080");
  EXPECT_EQ(headerOfA<FIWriteException>("QVFE"), "QVFE 8 1056 / 0OXR QVFE 8 1056");
}

}  // namespace
}  // namespace oxr::test
