#include "records/rawbytes.hpp"

namespace oxr::rec {

namespace {

// The value of a hexadecimal digit; more than 15 for anything else.
constexpr unsigned digitOf(unsigned short unit) {
  if (unit >= '0' && unit <= '9') return unit - unsigned{'0'};
  if (unit >= 'A' && unit <= 'F') return unit - unsigned{'A'} + 10;
  if (unit >= 'a' && unit <= 'f') return unit - unsigned{'a'} + 10;
  return 16;
}

}  // namespace

bool readRaw(const PWFData& value, std::vector<unsigned char>& bytes) {
  if (value.isNull() || value.getDataLogicalType() != STRING) return false;
  const UnitView text = value.getPWFStringValue().view();
  if (text.size() % 2 != 0) return false;
  bytes.clear();
  for (std::size_t at = 0; at < text.size(); at += 2) {
    const unsigned high = digitOf(text[at]);
    const unsigned low = digitOf(text[at + 1]);
    if ((high | low) > 15) return false;
    bytes.push_back(static_cast<unsigned char>(high << 4 | low));
  }
  return true;
}

bool readRaw(const FIMessageTree& tree, std::vector<unsigned char>& bytes) {
  FITreeIterator place = tree.getMsgContentIterator();
  if (!place.moveToFirstChild() || UnitView(place.getTagName()) != UnitView(kRawName)) return false;
  const bool isRaw = readRaw(place.getData(), bytes);
  return isRaw && !place.moveToNextSibling();
}

}  // namespace oxr::rec
