#pragma once

#include <bitstreamworker.hpp>
#include <dataconv.hpp>
#include <fimessagetree.hpp>
#include <messageinfo.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A worker for one line of text with commas between its fields, such as "7,Ada Winterbourne,-12.50".
//
// A message is an element "line" with an element for each column, STRING or DECIMAL. An empty field is a null. Nothing
// is quoted: a text with a comma or a line end in it cannot be written. The code page is the message's, UTF-8 if it has
// none; a comma and a line end must be a byte each in it.
class CsvWorker final : public BitstreamWorker {
 public:
  struct Column {
    KelWstring name;
    ELogicalType type;
  };
  // The messages of this worker's own failures, which are KelParserException.
  static constexpr int kFieldCount = static_cast<int>(0xC0000001u);   // inserts: fields of the line, columns
  static constexpr int kNotOneField = static_cast<int>(0xC0000002u);  // insert: the text
  static constexpr int kNotOneByte = static_cast<int>(0xC0000003u);   // insert: the character

  explicit CsvWorker(std::vector<Column> columns) : columns_(std::move(columns)) {}

  void initializeParse(int mode, MessageInfo* info, int flags) override;
  void setFIHandler(FIHandler* handler, bool adopt) override;
  FIHandler* getFIHandler() const override { return handler_; }
  void parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset, int flags) override;
  void parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWholeMessage, int offset,
                  int flags) override;
  void parseNext() override;
  bool hasNext() const override { return false; }
  PWFInt64 getNumBytesParsed() const override { return bytesParsed_; }

  void initializeWrite(MessageInfo* info, int mode, int encoding, int flags) override;
  void setFIMessageTree(const FIMessageTree* tree, bool adopt) override;
  const FIMessageTree* getFIMessageTree() const override { return tree_; }
  void write(WritableBitstreamBuffer* buffer, int mode, int flags) override;

  const DictionaryInfo* getWireFormatDescriptor() const override { return descriptor_; }
  void setWireFormatDescriptor(const DictionaryInfo* descriptor) override { descriptor_ = descriptor; }
  void release(bool) override { delete this; }
  const unsigned short* getWorkerName() const override;

 private:
  ~CsvWorker() override = default;  // by release() only

  void begin(const MessageInfo* info);
  char byteOf(unsigned short unit);
  void parseFields(std::string_view line);
  PWFData valueOf(const Column& column, std::string_view field);
  void writeField(const PWFData& value, WritableBitstreamBuffer& buffer) const;

  const std::vector<Column> columns_;
  int codePage_ = 0;
  std::optional<DataCnv> converter_;  // made once a message: its tables and converters are made on first use
  char comma_ = 0, lineEnd_ = 0;      // in the code page
  FIHandler* handler_ = nullptr;
  std::unique_ptr<FIHandler> adoptedHandler_;
  const FIMessageTree* tree_ = nullptr;
  std::unique_ptr<const FIMessageTree> adoptedTree_;
  const DictionaryInfo* descriptor_ = nullptr;
  PWFInt64 bytesParsed_ = 0;
};
