#pragma once

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "records/json/line.hpp"
#include "records/linehandler.hpp"

// The way into this folder: the events of a record worker become JSON lines.

namespace oxr::rec {

// Writes each message as a JSON object on a line of its own, in UTF-8.
//
//   STRING   a string, without the blanks at its end
//   INTEGER  a number
//   DECIMAL  a number with all its digits
//   FLOAT    a number with the shortest digits that read back
//   null     null
class JsonHandler : public LineHandler {
 public:
  struct Options {
    bool pointsAsText = false;  // a decimal with a point as a string
  };

  // `names` are those of the worker's plan, each zero-terminated, and stay there unchanged: their JSON is made once.
  // Other names can be reported too, but cost more.
  JsonHandler(const std::vector<unsigned short>& names, const Options& options);

  void startMessage(const WorkerInfoPtr& header, const WorkerInfoPtr& content) override;
  void endMessage(const WorkerInfoPtr& info) override;
  using RecordHandler::startElement;
  void startElement(const unsigned short* name, unsigned short type, const WorkerInfoPtr& info, int index,
                    int flags) override;
  using RecordHandler::endElement;
  void endElement(const unsigned short* name, const WorkerInfoPtr& info) override;
  void data(const PWFData& value, const WorkerInfoPtr& info, int index, int flags) override;
  void field(const unsigned short* name, const PWFData& value, int index) override;

  void discard() override;
  void discardUnfinished() override {
    if (place_ != Place::outside) discard();
  }
  std::string_view lines() const override { return line_.buffer().text(); }
  void clear() override;

 private:
  // Where the next event stands: fields may begin in a record, and have a value or not when they end.
  enum class Place : std::uint8_t { outside, inRecord, inField, afterValue };

  const JsonKey& keyFor(const unsigned short* name) {
    // They are compared as numbers: a name of somebody else's lies in other memory, and such pointers do not compare.
    const std::uintptr_t at =
        (reinterpret_cast<std::uintptr_t>(name) - reinterpret_cast<std::uintptr_t>(names_)) / sizeof(unsigned short);
    if (at < keyCount_ && keyAt_[at] != nullptr) [[likely]]
      return *keyAt_[at];
    return foreignKey(name);
  }
  const JsonKey& foreignKey(const unsigned short* name);
  [[gnu::always_inline]] void begin(const unsigned short* name, int index) {
    if (index < 0)
      line_.beginMember(keyFor(name));
    else
      line_.beginElement();
  }

  [[gnu::always_inline]] void put(const PWFData& value);
  void endContainer();

  const unsigned short* const names_;
  const std::size_t keyCount_;  // units of the names
  // The key of the name that begins there, for each unit of the names; null for a unit within a name.
  std::vector<const JsonKey*> keyAt_;
  std::deque<JsonKey> keys_;
  JsonKey foreignKey_{UnitView()};  // of the last name that is not among them
  const Options options_;
  JsonLine line_;
  std::size_t lineStart_ = 0;  // of the last record
  Place place_ = Place::outside;
  std::vector<unsigned short> open_;  // types of the open groups and arrays
};

}  // namespace oxr::rec
