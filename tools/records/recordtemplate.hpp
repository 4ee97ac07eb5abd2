#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "records/fields/writer.hpp"
#include "records/layout.hpp"

namespace oxr::rec {

// The bytes of a record that nobody gives a value for: blanks where a field of text lies, and zero elsewhere; or one
// byte all over. Made when it is first asked for.
class RecordTemplate {
 public:
  // Both must outlive the object.
  RecordTemplate(const Layout& layout, FieldWriter& writer, std::optional<unsigned char> filler)
      : layout_(layout), writer_(writer), filler_(filler) {}

  // Copies `size` bytes from byte `offset` of the layout on, in which all arrays have their largest size. What lies
  // behind the layout's end is zero.
  void copy(std::uint64_t offset, std::uint64_t size, unsigned char* to);

 private:
  void make();
  void fill(ItemIndex item, std::uint32_t at);

  const Layout& layout_;
  FieldWriter& writer_;
  const std::optional<unsigned char> filler_;
  std::vector<unsigned char> bytes_;
};

}  // namespace oxr::rec
