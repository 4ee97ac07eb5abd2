#pragma once

#include <cstdint>
#include <vector>

#include "records/json/jsontext.hpp"
#include "records/records.hpp"

namespace oxr::rec {

// A file of the records that hold a bad field, a JSON object a line:
//
//   {"record":3,"offset":201,"faults":[{"path":"MOVEMENT(2).AMOUNT","offset":245,"reason":"...","bytes":"00A0005C"}],
//    "raw":"F0F0..."}
//
// Offsets are bytes in the input, from 0, with headers counted; "raw" is the record without its header.
class BadRecords {
 public:
  explicit BadRecords(FileOutput output) : output_(std::move(output)) {}

  // To be called while the record is in the worker's hand.
  void add(const FieldFault& fault, const RecordWorker& worker);
  // Ends the line of the record, if it has one. `size` is what the record is known to have at most.
  void finishRecord(std::uint64_t size);
  // Writes what is left. Throws OutputError.
  void close();

 private:
  FileOutput output_;
  JsonText json_;
  std::vector<unsigned char> raw_;
  bool isInRecord_ = false;
};

}  // namespace oxr::rec
