#include "bitstreamworker.hpp"

// The destructors are out of line so that each class has its virtual table and type record here, once.
FIHandler::~FIHandler() = default;
FIParser::~FIParser() = default;
FIWriter::~FIWriter() = default;
BitstreamWorker::~BitstreamWorker() = default;

int FIHandler::startMessageContent(int&, unsigned short, const WorkerInfoPtr&, int, int, int, int) {
  return 0;
}

void FIHandler::checkRootName(const KelWstring&, int, const KelWstring&) {}

PWFInt64 FIParser::getEndOfMessageOffset() {
  while (hasNext())
    parseNext();
  return getNumBytesParsed();
}
