// Any bytes in any stretches are held against the same at once in fuzz/records/recordreader_check.hpp.

#include "records/recordworker.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "growingbytebuffer.hpp"
#include "records/records.hpp"

namespace oxr::rec::test {
namespace {

class NoListener : public FaultListener {
 public:
  bool goOnAfter(const FieldFault&) override { return false; }
};

constexpr char kOrder[] = "01 R. 05 N PIC 9. 05 B PIC X OCCURS 2. 05 L OCCURS 2 DEPENDING N. 10 Q PIC S9(2) COMP.";
constexpr char kTwoOrders[] = "2yz\1\2\377\3760zy";
constexpr char kTwoLines[] =
    "{\"N\":2,\"B\":[\"y\",\"z\"],\"L\":[{\"Q\":258},{\"Q\":-2}]}\n{\"N\":0,\"B\":[\"z\",\"y\"],\"L\":[]}\n";

// A worker that writes JSON lines, with all that it stands on.
struct Bench {
  Bench() {
    worker->initializeParse(-1, nullptr, -1);
    worker->setFIHandler(&json, false);
  }
  // The lines of one buffer's records.
  std::string_view parse(std::string_view records, int offset = -1) {
    json.clear();
    buffer.emplace().create(records.data(), static_cast<int>(records.size()));
    worker->parse(&*buffer, nullptr, offset, -1);
    return json.lines();
  }

  Layout layout = readCopybook(kOrder, "c", {SourceFormat::free, {}});
  RecordPlan plan{layout, {.form = {819}}};
  NoListener listener;
  JsonHandler json{plan.names(), {}};
  RecordWorker::Owner worker = RecordWorker::make(plan, {}, listener);
  std::optional<ReadOnlyByteBuffer> buffer;
};

TEST(RecordWorker, ReadsTheRecordsOfABufferFromItsOffsetOn) {
  Bench bench;
  EXPECT_EQ(bench.parse(kTwoOrders), kTwoLines);
  EXPECT_EQ(bench.worker->getNumBytesParsed(), 10);
  EXPECT_EQ(bench.parse(std::string("...") + kTwoOrders, 3), kTwoLines);
  EXPECT_EQ(bench.worker->getEndOfMessageOffset(), 10);
}

TEST(RecordWorker, ReadsAFileInBlocksOfAnySize) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  std::string expected;
  for (int i = 0; i < 20; ++i, expected += kTwoLines)
    std::fwrite(kTwoOrders, 1, 10, file.get());
  for (const std::size_t blockBytes : {1, 2, 7, 10, 11, 61, 1000}) {
    std::rewind(file.get());
    FileInput input(FileDescriptor::borrowed(::fileno(file.get())), "records", {}, blockBytes);
    EXPECT_EQ(input.totalSize(), 200u);
    Bench bench;
    bench.worker->setSource(&input);
    bench.worker->parse(input.first(), nullptr, 0, -1);
    EXPECT_EQ(bench.json.lines(), expected) << blockBytes;
  }
}

TEST(RecordWorker, RefusesCallsOutOfOrder) {
  Bench bench;
  EXPECT_THROW(bench.worker->parseNext(), FIParseException);
  EXPECT_THROW(bench.worker->parseFirst(nullptr, nullptr, true, 0, -1), FIParseException);
  EXPECT_EQ(bench.parse(""), "");
  EXPECT_THROW(bench.worker->parseNext(), FIParseException);
  bench.worker->setFIHandler(nullptr, false);
  EXPECT_THROW(bench.parse(kTwoOrders), FIParseException);
  GrowingByteBuffer buffer;
  EXPECT_THROW(bench.worker->write(&buffer, 0, 0), FIWriteException);
  EXPECT_THROW(bench.worker->finishWriting(buffer), FIWriteException);
  bench.worker->initializeWrite(nullptr, 0, 0, 0);
  EXPECT_THROW(bench.worker->write(&buffer, 0, 0), FIWriteException);
}

TEST(RecordWorker, WritesTheTreesOfLines) {
  Bench bench;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  std::fwrite(kTwoLines, 1, sizeof kTwoLines - 2, file.get());  // the last line has no end
  std::fflush(file.get());
  for (const std::size_t blockBytes : {1, 7, 60, 61, 1000}) {
    std::rewind(file.get());
    FileInput input(FileDescriptor::borrowed(::fileno(file.get())), "lines", {}, blockBytes);
    JsonLines lines(input);
    JsonReader reader(bench.plan.names());
    GrowingByteBuffer buffer;
    bench.worker->initializeWrite(nullptr, 0, 0, 0);
    while (const auto line = lines.next()) {
      bench.worker->setFIMessageTree(&reader.read(*line), false);
      bench.worker->write(&buffer, 0, 0);
    }
    EXPECT_EQ(buffer.bytes(), kTwoOrders) << blockBytes;
    EXPECT_EQ(lines.position(), sizeof kTwoLines - 2);
  }
}

TEST(RecordWorker, DeletesAHandlerThatItAdopted) {
  struct Holder : JsonHandler {
    explicit Holder(std::shared_ptr<int> held) : JsonHandler({}, {}), held_(std::move(held)) {}
    std::shared_ptr<int> held_;
  };
  const auto held = std::make_shared<int>();
  Bench bench;
  bench.worker->setFIHandler(new Holder(held), true);
  bench.worker->setFIHandler(bench.worker->getFIHandler(), true);  // the same again
  EXPECT_EQ(held.use_count(), 2);
  bench.worker->setFIHandler(new Holder(held), true);
  EXPECT_EQ(held.use_count(), 2);
  bench.worker.reset();
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace oxr::rec::test
