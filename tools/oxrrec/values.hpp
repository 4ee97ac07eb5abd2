#pragma once

#include <array>
#include <string>

#include "records/records.hpp"

namespace oxr::rec {

// A value as the JSON shows it: "abc" in quotes, 12.50, null.
std::string valueText(const PWFData& value);

// What stands for a field in a copybook: "S9(7)V99 COMP-3".
std::string pictureText(const Item& item);

// Each byte of a code page as a single character to be shown; "·" where it is none.
std::array<std::string, 256> charactersOf(int ccsid);

// A handler for who looks at fields through an observer: it takes all events and does nothing.
class NoHandler : public RecordHandler {
 public:
  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override {}
  void endMessage(const WorkerInfoPtr&) override {}
  using RecordHandler::startElement;
  void startElement(const unsigned short*, unsigned short, const WorkerInfoPtr&, int, int) override {}
  using RecordHandler::endElement;
  void endElement(const unsigned short*, const WorkerInfoPtr&) override {}
  void data(const PWFData&, const WorkerInfoPtr&, int, int) override {}
};

}  // namespace oxr::rec
