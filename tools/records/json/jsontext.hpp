#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "records/json/rapidjson.hpp"

namespace oxr::rec {

// A JSON text that is written member by member.
class JsonText {
 public:
  JsonWriter<rapidjson::UTF8<>>& writer() { return writer_; }
  void put(const char* key, const std::string& text) {
    writer_.Key(key);
    writer_.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  }
  void put(const char* key, std::uint64_t number) {
    writer_.Key(key);
    writer_.Uint64(number);
  }
  // Ends the text in a newline; the next one stands on a line of its own.
  void endLine() {
    out_.Put('\n');
    writer_.Reset(out_);
  }
  std::string_view text() const { return {out_.GetString(), out_.GetSize()}; }
  void clear() { out_.Clear(); }

 private:
  JsonBuffer out_;
  JsonWriter<rapidjson::UTF8<>> writer_{out_};
};

}  // namespace oxr::rec
