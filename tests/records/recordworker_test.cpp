#include "records/recordworker.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "kelwstringconvertor.hpp"
#include "records/copybook/copybook.hpp"
#include "records/framing/fileinput.hpp"

namespace oxr::rec::test {
namespace {

// Notes the events of a message: "G{", "A[" and "F" for the start of a group, an array and a field, with "#0" behind
// for an occurrence, "=value", and "}" for each end.
//
// Also holds them against the order that a checker of worker events admits for elements by name.
class NotingHandler : public RecordHandler {
 public:
  using RecordHandler::endElement;
  using RecordHandler::startElement;
  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override { notes += "<", state_ = 1; }
  void endMessage(const WorkerInfoPtr&) override { notes += ">"; }
  void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr&, int index, int) override {
    admit({1, 5, 6, 7}, 5);
    notes += ' ' + toUtf8(KelWstring(UnitView(name))) + (index < 0 ? "" : '#' + std::to_string(index));
    notes += type == kGroupElement ? "{" : type == kArrayElement ? "[" : "";
    names_.emplace_back(UnitView(name));
  }
  void data(const PWFData& value, const WorkerInfoPtr&, int, int) override {
    admit({5, 7}, 6);
    if (value.isNull())
      notes += "=null";
    else if (value.getDataLogicalType() == INTEGER)
      notes += "=" + std::to_string(value.getInt64Value());
    else
      notes += "=" + toUtf8(UnitView{static_cast<const unsigned short*>(value.getDataValue()),
                                     static_cast<std::size_t>(value.getStringLength())});
  }
  void endElement(const unsigned short* name, const WorkerInfoPtr&) override {
    admit({5, 6, 7}, 7);
    EXPECT_EQ(names_.back(), name);
    names_.pop_back();
    notes += "}";
  }
  std::string notes;

 private:
  void admit(std::initializer_list<int> states, int next) {
    EXPECT_NE(std::find(states.begin(), states.end(), state_), states.end()) << notes << " in state " << state_;
    state_ = next;
  }
  int state_ = 0;
  std::vector<KelWstring> names_;
};

class Collector : public FaultListener {
 public:
  explicit Collector(bool goesOn) : goesOn_(goesOn) {}
  bool goOnAfter(const FieldFault& fault) override { return faults.push_back(fault), goesOn_; }
  std::vector<FieldFault> faults;

 private:
  bool goesOn_;
};

// A worker with all that it stands on.
struct Bench {
  explicit Bench(const char* copybook, bool goesOn = true, const RecordWorker::Settings& settings = {},
                 const RecordPlan::Options& options = {})
      : layout(readCopybook(copybook, "c", {SourceFormat::free, {}})),
        plan(layout, options),
        listener(goesOn),
        worker(RecordWorker::make(plan, {819, eEndianBig, false}, settings, listener)) {
    worker->initializeParse(-1, nullptr, -1);
    worker->setFIHandler(&handler, false);
  }
  const std::string& parse(std::string_view records, int offset = -1) {
    buffer.emplace().create(records.data(), static_cast<int>(records.size()));
    worker->parse(&*buffer, nullptr, offset, -1);
    return handler.notes;
  }

  Layout layout;
  RecordPlan plan;
  Collector listener;
  NotingHandler handler;
  RecordWorker::Owner worker;
  std::optional<ReadOnlyByteBuffer> buffer;
};

constexpr char kOrder[] =
    "01 R. 05 ID PIC X(2). 05 N PIC 9. 05 G. 10 A PIC X. 10 B PIC X OCCURS 2. 05 FILLER PIC X."
    " 05 L OCCURS 0 TO 2 DEPENDING ON N. 10 Q PIC S9(2) COMP.";
constexpr char kTwoOrders[] = "ab2xyz-\x01\x02\xFF\xFEzy0xyz-";
constexpr char kTwoOrdersNotes[] =
    "< ID=ab} N=2} G{ A=x} B[ B#0=y} B#1=z}}} L[ L#0{ Q=258}} L#1{ Q=-2}}}>"
    "< ID=zy} N=0} G{ A=x} B[ B#0=y} B#1=z}}} L[}>";

TEST(RecordWorker, ReportsARecordAsOneMessage) {
  Bench bench(kOrder);
  EXPECT_EQ(bench.parse(kTwoOrders), kTwoOrdersNotes);
  EXPECT_EQ(bench.worker->getNumBytesParsed(), 18);
  EXPECT_EQ(bench.worker->recordsRead(), 2u);
  EXPECT_FALSE(bench.worker->hasNext());
  bench.handler.notes.clear();
  EXPECT_EQ(bench.parse(std::string("...") + kTwoOrders, 3), kTwoOrdersNotes);  // another buffer, from its byte 3 on
  EXPECT_EQ(bench.worker->getEndOfMessageOffset(), 18);
}

TEST(RecordWorker, ReadsTheSameInBlocksOfAnySize) {
  std::string records;
  std::string notes;
  for (int i = 0; i < 20; ++i) {
    records += std::string(kTwoOrders, 18);
    notes += kTwoOrdersNotes;
  }
  for (std::size_t blockBytes = 1; blockBytes < 64; ++blockBytes) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    std::fwrite(records.data(), 1, records.size(), file.get());
    std::rewind(file.get());
    FileInput input(FileDescriptor::borrowed(::fileno(file.get())), "records", blockBytes);
    EXPECT_EQ(input.totalSize(), records.size());
    Bench bench(kOrder);
    bench.worker->setSource(&input);
    bench.worker->parseFirst(input.first(), nullptr, true, 0, -1);
    int count = 1;
    for (; bench.worker->hasNext(); ++count)
      bench.worker->parseNext();
    EXPECT_EQ(count, 40);
    ASSERT_EQ(bench.handler.notes, notes) << blockBytes;
    EXPECT_EQ(bench.worker->getNumBytesParsed(), static_cast<PWFInt64>(records.size()));
  }
}

TEST(RecordWorker, GoesOnWithNullsWhereTheListenerSays) {
  Bench bench(kOrder);
  EXPECT_THROW(bench.parse("ab?xyz-"), FrameError);
  EXPECT_EQ(bench.handler.notes, "< ID=ab} N=null} G{ A=x} B[ B#0=y} B#1=z}}} L=null}");
  ASSERT_EQ(bench.listener.faults.size(), 1u);
  const FieldFault& fault = bench.listener.faults[0];
  EXPECT_EQ(fault.record, 1u);
  EXPECT_EQ(fault.offset, 2u);
  EXPECT_EQ(fault.path, "N");
  EXPECT_EQ(fault.message, 5505);
  EXPECT_EQ(fault.bytes, std::vector<unsigned char>{'?'});

  // Behind an array whose count is not known nothing has a place.
  Bench moved(
      "01 R. 05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC 9 OCCURS 2. 05 M PIC 9."
      " 05 C PIC X OCCURS 0 TO 3 DEPENDING ON M.",
      true, {RecordForm::Header::big, true, false});
  EXPECT_EQ(moved.parse(std::string("\0\7\0\0"
                                    "7ab",
                                    7)),
            "< N=7} A=null} B[ B#0=null} B#1=null}} M=null} C=null}>");
  EXPECT_EQ(moved.listener.faults.size(), 1u);
}

TEST(RecordWorker, EndsWhereTheListenerSays) {
  Bench bench("01 R. 05 A OCCURS 3. 10 B PIC 9.", false);
  try {
    bench.parse("1231x3");
    FAIL() << "nothing thrown";
  } catch (const FieldError& error) {
    EXPECT_EQ(error.fault().path, "A(2).B");
    EXPECT_EQ(error.fault().offset, 4u);
    EXPECT_EQ(error.fault().record, 2u);
  }
  EXPECT_EQ(bench.handler.notes, "< A[ A#0{ B=1}} A#1{ B=2}} A#2{ B=3}}}>< A[ A#0{ B=1}} A#1{ B");
}

TEST(RecordWorker, RefusesCallsOutOfOrder) {
  Bench bench(kOrder);
  EXPECT_THROW(bench.worker->parseNext(), FIParseException);
  EXPECT_FALSE(bench.worker->hasNext());
  EXPECT_THROW(bench.worker->parseFirst(nullptr, nullptr, true, 0, -1), FIParseException);
  EXPECT_EQ(bench.parse(""), "");
  EXPECT_EQ(bench.worker->recordsRead(), 0u);
  EXPECT_THROW(bench.worker->parseNext(), FIParseException);
  bench.worker->setFIHandler(nullptr, false);
  EXPECT_THROW(bench.parse(kTwoOrders), FIParseException);
  EXPECT_THROW(bench.worker->initializeWrite(nullptr, 0, 0, 0), FIWriteException);
  EXPECT_THROW(bench.worker->setFIMessageTree(nullptr, false), FIWriteException);
  EXPECT_THROW(bench.worker->write(nullptr, 0, 0), FIWriteException);
}

class MortalHandler : public NotingHandler {
 public:
  explicit MortalHandler(int& deaths) : deaths_(deaths) {}
  ~MortalHandler() override { ++deaths_; }

 private:
  int& deaths_;
};

TEST(RecordWorker, DeletesAHandlerThatItAdopted) {
  int deaths = 0;
  {
    Bench bench(kOrder);
    auto* const handler = new MortalHandler(deaths);
    bench.worker->setFIHandler(handler, true);
    bench.worker->setFIHandler(handler, true);
    EXPECT_EQ(bench.worker->getFIHandler(), handler);
    bench.worker->setFIHandler(new MortalHandler(deaths), true);
    EXPECT_EQ(deaths, 1);
  }
  EXPECT_EQ(deaths, 2);
}

}  // namespace
}  // namespace oxr::rec::test
