#include "csvworker.hpp"

#include <algorithm>
#include <kelexception.hpp>
#include <textbffrwriter.hpp>

namespace {

constexpr int kUtf8 = 1208;
constexpr int kNotGiven = -1;
constexpr unsigned short kLine[] = {'l', 'i', 'n', 'e', 0};
// The type codes that this worker and its handlers agree on.
constexpr unsigned short kStructure = 1, kField = 2;
const WorkerInfoPtr& kNoInfo = WorkerInfoPtr::defaultWIP;

// Data that this worker cannot do with is told as the conversions tell theirs: number and inserts.
template <class... Inserts>
[[noreturn]] void fail(const char* function, int line, int number, const Inserts&... inserts) {
  KelParserException failure("examples/csv", line, function, KelLog::iDefaultLogSource, number, noTraceHandle);
  (failure << ... << inserts);
  failure.throwThis();
}

int codePageOf(const MessageInfo* info) {
  const PWFInt64 ccsid = info == nullptr ? 0 : info->getPropertyAsInteger(MI_CCSID_STR);
  return ccsid > 0 ? static_cast<int>(ccsid) : kUtf8;
}

}  // namespace

void CsvWorker::begin(const MessageInfo* info) {
  codePage_ = codePageOf(info);
  converter_.emplace(codePage_, eEndianBig, eEndianBig, eFloatIeeeBig, /*centuryWindow=*/53, nullptr, false, nullptr, 0,
                     /*lenient=*/true, /*positivePackedSign=*/12, false, eMessageStandardDefault, nullptr);
  comma_ = byteOf(',');
  lineEnd_ = byteOf('\n');
}

char CsvWorker::byteOf(unsigned short unit) {
  unsigned char byte = 0;
  int size = 1;
  // What does not fit, or takes less, is no code page for this format.
  if (U_FAILURE(converter_->fromUnicodeString(KelWstring(&unit, 1), &byte, size)) || size != 1)
    fail("CsvWorker::byteOf", __LINE__, kNotOneByte, KelWstring(&unit, 1));
  return static_cast<char>(byte);
}

// The parser's side.

void CsvWorker::initializeParse(int, MessageInfo* info, int) {
  begin(info);
}

void CsvWorker::setFIHandler(FIHandler* handler, bool adopt) {
  if (handler != adoptedHandler_.get()) adoptedHandler_.reset(adopt ? handler : nullptr);
  handler_ = handler;
}

void CsvWorker::parse(const BitstreamBuffer* buffer, std::vector<int>*, int offset, int) {
  if (!converter_ || handler_ == nullptr || buffer == nullptr) throw FIParseException();
  int size = 0;
  const char* const bytes = buffer->getData(&size, std::max(offset, 0));
  const std::string_view input(bytes, static_cast<std::size_t>(std::max(size, 0)));
  const std::string_view line = input.substr(0, input.find(lineEnd_));
  handler_->startMessage(kNoInfo, kNoInfo);
  handler_->startElement(kLine, kStructure, kNoInfo, kNotGiven, kNotGiven);
  parseFields(line);
  handler_->endElement(kLine, kNoInfo);
  handler_->endMessage(kNoInfo);
  bytesParsed_ = static_cast<PWFInt64>(std::min(line.size() + 1, input.size()));
}

// A line is one part, so that the first part is all of it.
void CsvWorker::parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool, int offset, int flags) {
  parse(buffer, path, offset, flags);
}

void CsvWorker::parseNext() {
  throw FIParseException();
}

void CsvWorker::parseFields(std::string_view line) {
  const auto fields = static_cast<std::size_t>(std::count(line.begin(), line.end(), comma_)) + 1;
  if (fields != columns_.size())
    fail("CsvWorker::parse", __LINE__, kFieldCount, static_cast<long>(fields), static_cast<long>(columns_.size()));
  for (const Column& column : columns_) {
    const std::string_view field = line.substr(0, line.find(comma_));
    line.remove_prefix(std::min(field.size() + 1, line.size()));
    handler_->startElement(column.name.characters(), kField, kNoInfo, kNotGiven, kNotGiven);
    handler_->data(valueOf(column, field), kNoInfo, kNotGiven, kNotGiven);
    handler_->endElement(column.name.characters(), kNoInfo);
  }
}

PWFData CsvWorker::valueOf(const Column& column, std::string_view field) {
  if (field.empty()) return PWFData(column.type);
  const auto* const bytes = reinterpret_cast<const unsigned char*>(field.data());
  int size = static_cast<int>(field.size());
  if (column.type == DECIMAL) return converter_->StrToDec(bytes, size, /*scale=*/0);
  KelWstring text;
  converter_->toUnicodeString(text, bytes, size);
  return PWFData(text);
}

// The writer's side.

void CsvWorker::initializeWrite(MessageInfo* info, int, int, int) {
  begin(info);
}

void CsvWorker::setFIMessageTree(const FIMessageTree* tree, bool adopt) {
  if (tree != adoptedTree_.get()) adoptedTree_.reset(adopt ? tree : nullptr);
  tree_ = tree;
}

void CsvWorker::write(WritableBitstreamBuffer* buffer, int, int) {
  if (!converter_ || tree_ == nullptr || buffer == nullptr) throw FIWriteException();
  FITreeIterator place = tree_->getMsgContentIterator();
  if (place.isNull()) throw FIWriteException();
  const char* separator = nullptr;
  for (bool more = place.moveToFirstChild(); more; more = place.moveToNextSibling()) {
    if (separator != nullptr) buffer->appendBytes(separator, 1);
    separator = &comma_;
    writeField(place.getData(), *buffer);
  }
  buffer->appendBytes(&lineEnd_, 1);
}

// A decimal is text in its canonical form, which is the form that a line has.
void CsvWorker::writeField(const PWFData& value, WritableBitstreamBuffer& buffer) const {
  if (value.isNull() || value.isNothing()) return;
  const unsigned short* const text =
      value.getDataLogicalType() == DECIMAL ? value.getDecimalValue() : value.getStringValue();
  const auto length = static_cast<unsigned>(value.getStringLength());
  const oxr::UnitView units(text, length);
  if (units.find(',') != units.npos || units.find('\n') != units.npos)
    fail("CsvWorker::write", __LINE__, kNotOneField, KelWstring(text, length));
  TextBufferWriter(&buffer, codePage_, eEndianBig).appendStr(text, static_cast<int>(length));
}

const unsigned short* CsvWorker::getWorkerName() const {
  static constexpr unsigned short kName[] = {'C', 'S', 'V', 0};
  return kName;
}
