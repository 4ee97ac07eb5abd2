#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "kelunits.hpp"
#include "records/json/rapidjson.hpp"

namespace oxr::rec {

// A name as the key of an object's member, rendered: `,"NAME":`, followed by blanks so that it can be copied in blocks.
class JsonKey {
 public:
  explicit JsonKey(UnitView name);

 private:
  friend class JsonLine;
  static constexpr std::size_t kBlock = 32;
  std::string text_;
  std::size_t size_;  // without the blanks
};

// RapidJSON's streaming writer with a shorter way for what records mostly hold: a key that was rendered before, and
// its value. A member or an element is begun first and then gets exactly one of the values.
//
//   line.StartObject();
//   line.beginMember(name);
//   line.text(units);
//   line.EndObject();
class JsonLine : public JsonWriter<rapidjson::UTF16<unsigned short>> {
 public:
  explicit JsonLine(JsonBuffer& out) : Writer(out) {}

  // The writer counts keys and values to know where it stands: a member with a plain value is two of them.
  void beginMember(const JsonKey& key) {
    Level& object = *level_stack_.template Top<Level>();
    put(key, key.size_, object);
    object.valueCount += 2;
  }
  void beginElement() { Prefix(rapidjson::kNullType); }
  // The values. The line ends U+0085, U+2028 and U+2029 are escaped in texts, and a surrogate that
  // stands alone becomes U+FFFD.
  void text(UnitView text);
  // Without superfluous leading zeros, with a digit before the point, and as a string if there is a point and
  // `pointsAsText`. Text that is no decimal becomes a string too, so that the line stays valid.
  void decimal(UnitView text, bool pointsAsText);
  void integer(std::int64_t value);
  // With the shortest digits that read back as the same double. REQUIRES: finite.
  void real(double value);
  void null() { WriteNull(); }

  // A member that is an object or an array, which StartObject or StartArray then opens.
  void beginContainer(const JsonKey& key) {
    Level& object = *level_stack_.template Top<Level>();
    put(key, key.size_ - 1, object);
    object.valueCount += 1;
  }

 private:
  void generalText(UnitView text);
  // Appends the key up to `size`, without the comma for the first member.
  void put(const JsonKey& key, std::size_t size, const Level& object) {
    const std::size_t skipped = object.valueCount == 0 ? 1 : 0;
    const char* const from = key.text_.data() + skipped;
    const std::size_t count = size - skipped;
    char* const to = os_->Push(count + JsonKey::kBlock);
    std::size_t at = 0;
    do
      std::memcpy(to + at, from + at, JsonKey::kBlock);
    while ((at += JsonKey::kBlock) < count);
    os_->Pop(JsonKey::kBlock);
  }
};

}  // namespace oxr::rec
