#include "records/checkedparts.hpp"

#include <iostream>
#include <string>

#include "checkedworker.hpp"

namespace oxr::rec {

// A worker for one message: the next part of the real one. Only what a checker asks for while it parses is there.
class CheckedParts::Part final : public BitstreamWorker {
 public:
  explicit Part(BitstreamWorker& worker) : worker_(worker) {}

  void initializeParse(int, MessageInfo*, int) override {}  // the worker is in the midst of its input
  void setFIHandler(FIHandler* handler, bool adopt) override { worker_.setFIHandler(handler, adopt); }
  FIHandler* getFIHandler() const override { return worker_.getFIHandler(); }
  // The first part is read from a buffer; without one the worker goes on where it stands.
  void parse(const BitstreamBuffer* from, std::vector<int>* path, int offset, int flags) override {
    if (from != nullptr)
      worker_.parseFirst(from, path, true, offset, flags);
    else
      worker_.parseNext();
  }
  void parseFirst(const BitstreamBuffer*, std::vector<int>*, bool, int, int) override { throw FIParseException(); }
  void parseNext() override { throw FIParseException(); }
  bool hasNext() const override { return false; }
  PWFInt64 getNumBytesParsed() const override { return worker_.getNumBytesParsed(); }

  void initializeWrite(MessageInfo*, int, int, int) override { throw FIWriteException(); }
  void setFIMessageTree(const FIMessageTree*, bool) override { throw FIWriteException(); }
  const FIMessageTree* getFIMessageTree() const override { return nullptr; }
  void write(WritableBitstreamBuffer*, int, int) override { throw FIWriteException(); }

  const DictionaryInfo* getWireFormatDescriptor() const override { return worker_.getWireFormatDescriptor(); }
  void setWireFormatDescriptor(const DictionaryInfo* descriptor) override {
    worker_.setWireFormatDescriptor(descriptor);
  }
  void release(bool) override {}
  const unsigned short* getWorkerName() const override { return worker_.getWorkerName(); }

 private:
  BitstreamWorker& worker_;
};

CheckedParts::CheckedParts(BitstreamWorker& worker, FIHandler& handler)
    : handler_(handler), part_(std::make_unique<Part>(worker)) {}
CheckedParts::~CheckedParts() = default;

void CheckedParts::parseFirst(const BitstreamBuffer* buffer) {
  parse(buffer, 0);
}

void CheckedParts::parseNext() {
  parse(nullptr, -1);
}

void CheckedParts::parse(const BitstreamBuffer* buffer, int offset) {
  CheckedWorker checker(part_.get());
  // The worker reports to the checker, and must not keep it for longer than that lives.
  const std::unique_ptr<Part, void (*)(Part*)> restored(part_.get(),
                                                        [](Part* part) { part->setFIHandler(nullptr, false); });
  try {
    checker.initializeParse(-1, nullptr);
    checker.setFIHandler(&handler_, false);
    checker.parse(buffer, nullptr, offset);
  } catch (const FIHandlerException&) {
    throw CheckError("an event of the worker does not fit where the message stands");
  } catch (const FIParseException&) {
    throw CheckError("a call does not fit where the worker stands");
  }
  if (checker.openElements() != 0)
    throw CheckError("elements that the worker leaves open: " + std::to_string(checker.openElements()));
}

namespace {

// Takes everything and keeps nothing.
class Nowhere : public std::streambuf {
 protected:
  int_type overflow(int_type unit) override { return traits_type::not_eof(unit); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

std::streambuf* nowhere() {
  static Nowhere buffer;
  return &buffer;
}

}  // namespace

QuietOutput::QuietOutput() : before_(std::cout.rdbuf(nowhere())) {}
QuietOutput::~QuietOutput() {
  std::cout.rdbuf(before_);
}

}  // namespace oxr::rec
