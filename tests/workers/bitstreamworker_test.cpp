#include "bitstreamworker.hpp"

#include <gtest/gtest.h>

#include <type_traits>

#include "harness/headers.hpp"
#include "harness/text.hpp"
#include "kelexception.hpp"

namespace oxr::test {
namespace {

// Parts of ten bytes each; the writer's side refuses.
class PartsWorker : public BitstreamWorker {
 public:
  explicit PartsWorker(int parts) : left_(parts) {}
  void initializeParse(int, MessageInfo*, int) override {}
  void setFIHandler(FIHandler* handler, bool) override { handler_ = handler; }
  FIHandler* getFIHandler() const override { return handler_; }
  void parse(const BitstreamBuffer*, std::vector<int>*, int, int) override {}
  void parseFirst(const BitstreamBuffer*, std::vector<int>*, bool, int, int) override {}
  void parseNext() override { --left_, ++parsed_; }
  bool hasNext() const override { return left_ > 0; }
  PWFInt64 getNumBytesParsed() const override { return 10 * parsed_; }
  void initializeWrite(MessageInfo*, int, int, int) override { throw FIWriteException(); }
  void setFIMessageTree(const FIMessageTree*, bool) override { throw FIWriteException(); }
  const FIMessageTree* getFIMessageTree() const override { return nullptr; }
  void write(WritableBitstreamBuffer*, int, int) override { throw FIWriteException(); }
  const DictionaryInfo* getWireFormatDescriptor() const override { return nullptr; }
  void setWireFormatDescriptor(const DictionaryInfo*) override {}
  void release(bool) override {}
  const unsigned short* getWorkerName() const override { return nullptr; }

 private:
  FIHandler* handler_ = nullptr;
  int left_;
  int parsed_ = 0;
};

class DefaultHandler : public FIHandler {
 public:
  using FIHandler::startMessageContent;
  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override {}
  void endMessage(const WorkerInfoPtr&) override {}
  int startMessageContent(const unsigned short*, unsigned short, const WorkerInfoPtr&, int) override { return 1; }
  int startQualifiedMessageContent(const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&,
                                   int) override {
    return 1;
  }
  void endMessageContent(int, const WorkerInfoPtr&) override {}
  void endMessageContent(const unsigned short*, const WorkerInfoPtr&) override {}
  void endQualifiedMessageContent(const KelWstring&, const KelWstring&, const WorkerInfoPtr&) override {}
  void startElement(int, unsigned short, const WorkerInfoPtr&, int, int, int, int, int) override {}
  void startElement(const unsigned short*, unsigned short, const WorkerInfoPtr&, int, int) override {}
  void startQualifiedElement(const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&, int,
                             int) override {}
  void endElement(int, const WorkerInfoPtr&) override {}
  void endElement(const unsigned short*, const WorkerInfoPtr&) override {}
  void endQualifiedElement(const KelWstring&, const KelWstring&, const WorkerInfoPtr&) override {}
  void startEmbeddedMessage() override {}
  void startEmbeddedMessage(int&) override {}
  void endEmbeddedMessage(bool, bool) override {}
  void unparsedContent(const void*, int, const WorkerInfoPtr&) override {}
  void data(const PWFData&, const WorkerInfoPtr&, int, int) override {}
  void simpleElement(const PWFData&, const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&,
                     const WorkerInfoPtr&, const WorkerInfoPtr&, int, int, int, int, int) override {}
  void projectId(const unsigned short*) override {}
  void projectDependencies(const std::vector<KelWstring>&) override {}
};

TEST(BitstreamWorker, HeadersAreMarkedAliveAndDead) {
  EXPECT_EQ(headerOfA<PartsWorker>("QVFP", 0), "QVFP 8 24 / 0OXR QVFP 8 24");
  EXPECT_EQ(headerOfA<PartsWorker>("QVFW", 0), "QVFW 8 24 / 0OXR QVFW 8 24");
  EXPECT_EQ(headerOfA<PartsWorker>("QVFB", 0), "QVFB 48 72 / 0OXR QVFB 48 72");
  EXPECT_EQ(headerOfA<DefaultHandler>("QVFH"), "QVFH 8 24 / 0OXR QVFH 8 24");
}

TEST(BitstreamWorker, EndOfMessageIsFoundByParsingTheRest) {
  const struct {
    int parts;
    int parsedBefore;
    PWFInt64 end;
  } cases[] = {{0, 0, 0}, {1, 0, 10}, {5, 0, 50}, {5, 3, 50}, {5, 5, 50}};
  for (const auto& [parts, parsedBefore, end] : cases) {
    PartsWorker worker(parts);
    for (int i = 0; i < parsedBefore; ++i)
      worker.parseNext();
    EXPECT_EQ(worker.getEndOfMessageOffset(), end);
    EXPECT_EQ(worker.getNumBytesParsed(), end);  // a parser without a part left has not been asked for one
    EXPECT_FALSE(worker.hasNext());
  }
}

TEST(FIHandler, DefaultsLeaveEverythingAlone) {
  DefaultHandler handler;
  int id = 42;
  EXPECT_EQ(handler.startMessageContent(id, 1, WorkerInfoPtr::defaultWIP, -1, -1, -1, -1), 0);
  EXPECT_EQ(id, 42);
  EXPECT_NO_THROW(handler.checkRootName(u"Root"_k, -1, KelWstring()));
}

TEST(PWFException, HeadersAreMarkedAliveAndDead) {
  EXPECT_EQ(headerOfA<PWFException>("QVFE"), "QVFE 8 1056 / 0OXR QVFE 8 1056");
  EXPECT_EQ(headerOfA<FIParseException>("QVFQ"), "QVFQ 1052 1080 / 0OXR QVFQ 1052 1080");
  EXPECT_EQ(headerOfA<FIHandlerException>("QVFI"), "QVFI 1052 1072 / 0OXR QVFI 1052 1072");
  EXPECT_EQ(headerOfA<FIMessageTreeException>("QVFM"), "QVFM 1052 1080 / 0OXR QVFM 1052 1080");
  EXPECT_EQ(headerOfA<FIWriteException>("QVFE"), "QVFE 8 1056 / 0OXR QVFE 8 1056");
}

// The type is the whole message: each is caught as itself, or as the family, and never as a failure of the host.
template <class Thrown>
std::string caughtAs() {
  static_assert(!std::is_base_of_v<KelException, Thrown>);
  try {
    throw Thrown();
  } catch (const FIParseException&) {
    return "parse";
  } catch (const FIWriteException&) {
    return "write";
  } catch (const FIHandlerException&) {
    return "handler";
  } catch (const FIMessageTreeException&) {
    return "tree";
  } catch (const PWFException&) {
    return "family";
  }
}

TEST(PWFException, IsCaughtByItsType) {
  EXPECT_EQ(caughtAs<FIParseException>() + ' ' + caughtAs<FIWriteException>() + ' ' + caughtAs<FIHandlerException>() +
                ' ' + caughtAs<FIMessageTreeException>() + ' ' + caughtAs<PWFException>(),
            "parse write handler tree family");
}

}  // namespace
}  // namespace oxr::test
