#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <vector>

#include "records/records.hpp"

namespace oxr::rec {

// A place where the bytes of a record differ from those that it had.
struct Difference {
  std::uint64_t offset = 0;  // in the record
  std::uint32_t size = 0;    // bytes
  std::string path;          // of the field; empty for bytes that no field gives
  bool hasValue = false;     // the field now reads as something else
};

// Keeps where the fields of the last record lie, and finds those whose bytes differ. Serves one thread.
class Differences : public FieldObserver {
 public:
  // The plan must outlive the object.
  explicit Differences(const RecordPlan& plan);

  // To be called before each record is read.
  void begin();
  void seen(const FieldSeen& field) override;
  // What differs, in the order of the bytes. Both are the record, which begins with its layout. Bytes behind the end
  // of the shorter one are told only where a field has another value without them.
  std::vector<Difference> between(const Layout& layout, std::span<const unsigned char> was,
                                  std::span<const unsigned char> is);

 private:
  struct Field {
    const Step* step;
    std::uint64_t offset;
    std::size_t arrays;  // where its open arrays begin among all
    std::size_t arrayCount;
  };
  bool readsAlike(const Step& step, std::span<const unsigned char> was, std::span<const unsigned char> is);

  std::deque<FieldConverter> converters_;  // by Step::form
  std::vector<Field> fields_;
  std::vector<OpenArray> arrays_;
};

}  // namespace oxr::rec
