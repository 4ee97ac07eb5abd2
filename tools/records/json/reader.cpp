#include "records/json/reader.hpp"

#include <simdjson.h>

#include <bit>
#include <cstring>

#include "kelwstringconvertor.hpp"

// simdjson finds the structure of a line; its tokens are walked once and each becomes a node of the tree. Numbers are
// only looked at, never converted, and almost all texts are ASCII without escapes: they are widened as they stand.

namespace oxr::rec {

namespace {

namespace od = simdjson::ondemand;

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// The end of the digits that begin at `at`; `at` itself if there is none.
const char* afterDigits(const char* at, const char* end) {
  while (at != end && isDigit(*at))
    ++at;
  return at;
}

// Whether a token is a number as JSON has it.
bool isNumber(std::string_view token) {
  const char* at = token.data();
  const char* const end = at + token.size();
  if (at != end && *at == '-') ++at;
  const char* const whole = at;
  at = afterDigits(at, end);
  if (at == whole || (*whole == '0' && at - whole > 1)) return false;
  if (at != end && *at == '.') {
    const char* const places = at + 1;
    at = afterDigits(places, end);
    if (at == places) return false;
  }
  if (at != end && (*at == 'e' || *at == 'E')) {
    ++at;
    if (at != end && (*at == '+' || *at == '-')) ++at;
    const char* const exponent = at;
    at = afterDigits(exponent, end);
    if (at == exponent) return false;
  }
  return at == end;
}

constexpr bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string_view withoutTrailingSpace(std::string_view token) {
  while (!token.empty() && isSpace(token.back()))
    token.remove_suffix(1);
  return token;
}

// Writes valid UTF-8 as UTF-16. Returns where that ends.
unsigned short* toUtf16(std::string_view text, unsigned short* to) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned>(static_cast<unsigned char>(text[at])); };
  for (std::size_t at = 0; at < text.size();) {
    const unsigned lead = byte(at);
    const unsigned size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned point = size == 1 ? lead : lead & (0xFFU >> (size + 1));
    for (unsigned i = 1; i < size; ++i)
      point = (point << 6) | (byte(at + i) & 0x3F);
    at += size;
    if (point >= 0x10000) {
      *to++ = static_cast<unsigned short>(0xD7C0 + (point >> 10));
      point = 0xDC00 | (point & 0x3FF);
    }
    *to++ = static_cast<unsigned short>(point);
  }
  return to;
}

using Bytes = unsigned char __attribute__((vector_size(16)));
using Units = unsigned short __attribute__((vector_size(32)));

// Writes the content of a string as it stands, in blocks that may go beyond both; false if it holds a backslash or
// anything but ASCII, so that it means something else.
bool widenPlain(std::string_view text, unsigned short* to) {
  Bytes bad{};
  for (std::size_t at = 0; at < text.size(); at += sizeof(Bytes)) {
    Bytes bytes;
    std::memcpy(&bytes, text.data() + at, sizeof bytes);
    const auto units = __builtin_convertvector(bytes, Units);
    std::memcpy(to + at, &units, sizeof units);
    const std::size_t left = text.size() - at;
    Bytes odd = reinterpret_cast<Bytes>((bytes >= 0x80) | (bytes == '\\'));
    if (left < sizeof bytes) {
      // What lies behind the text has no say.
      constexpr Bytes kLanes = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
      odd &= reinterpret_cast<Bytes>(kLanes < static_cast<unsigned char>(left));
    }
    bad |= odd;
  }
  std::uint64_t halves[2];
  std::memcpy(halves, &bad, sizeof bad);
  return (halves[0] | halves[1]) == 0;
}

}  // namespace

JsonNames::Entry::Entry(const unsigned short* units, const std::string& text)
    : units_(units), size_(text.size()), text_(text) {
  constexpr std::size_t kWord = sizeof lastBits_;
  std::memset(&lastBits_, 0xFF, (size_ - 1) % kWord + 1);
  text_.resize((size_ + kWord - 1) / kWord * kWord);
}

JsonNames::JsonNames(const std::vector<unsigned short>& names) {
  for (std::size_t at = 0; at < names.size();) {
    const UnitView name(names.data() + at);
    entries_.emplace_back(names.data() + at, toUtf8(name) + '"');
    at += name.size() + 1;
  }
  next_.assign(std::bit_ceil(16 * (entries_.size() + 1)), kNone);
  for (std::uint32_t entry = 0; entry < entries_.size(); ++entry)
    byText_.emplace(entries_[entry].name(), entry);
}

std::uint32_t JsonNames::find(std::uint32_t container, std::uint32_t previous, std::string_view text) {
  if (const auto known = byText_.find(text); known != byText_.end())
    return next_[slot(container, previous)] = known->second;
  // Names end with a zero: one within a name would make another name of it.
  std::string name(text);
  for (std::size_t at = 0; (at = name.find('\0', at)) != std::string::npos;)
    name.replace(at, 1, "\uFFFD");
  foreign_.push_back(fromUtf8(name));
  return kForeign + static_cast<std::uint32_t>(foreign_.size() - 1);
}

struct JsonReader::Parser {
  od::parser parser;
};

// Fills the tree from one line.
class JsonTreeBuilder {
 public:
  JsonTreeBuilder(JsonTree& tree, JsonNames& names, std::string_view line, od::parser& parser)
      : tree_(tree), names_(names), line_(line), parser_(parser) {
    tree_.nodes_.clear();
    tree_.root_ = 0;
    // A value has no more units than bytes, and its terminator takes the place of the comma or bracket after it. The
    // rest is for the last block.
    const std::size_t most = line.size() + 1 + sizeof(Bytes);
    if (tree_.units_.size() < most) tree_.units_.resize(most);
    units_ = tree_.units_.data();
  }

  void run() {
    od::document document;
    const simdjson::padded_string_view padded(line_.data(), line_.size(), line_.size() + JsonReader::kPadding);
    check(parser_.iterate(padded).get(document), nullptr);
    od::object root;
    const simdjson::error_code error = document.get_object().get(root);
    if (error == simdjson::INCORRECT_TYPE) fail(line_.data(), "an object is wanted, as in {\"NAME\": ...}");
    check(error, &document);
    open(JsonNode::Kind::object, nullptr, line_.data(), 0);
    try {
      members(root, JsonNames::kNone);
    } catch (const simdjson::simdjson_error& failure) {
      check(failure.error(), &document);
    }
    const char* rest = nullptr;
    if (document.current_location().get(rest) == simdjson::SUCCESS) fail(rest, "more follows after the object");
    close(0);
  }

 private:
  void members(od::object object, std::uint32_t container) {
    const std::uint32_t parent = last();
    std::uint32_t previous = JsonNames::kNone;
    for (auto found : object) {
      // No copy: that would wait for what was just written.
      od::field&& field = std::move(found);
      const char* const text = field.key().raw();
      std::uint32_t name = names_.expected(container, previous, text, left(text));
      if (name == JsonNames::kNone) name = names_.find(container, previous, field.unescaped_key());
      value(field.value(), names_.units(name), name, parent);
      previous = name;
    }
  }

  void elements(od::array array, const unsigned short* units, std::uint32_t name) {
    const std::uint32_t parent = last();
    for (auto element : array)
      value(element.value(), units, name, parent);
  }

  void value(od::value& value, const unsigned short* units, std::uint32_t name, std::uint32_t parent) {
    const std::string_view token = withoutTrailingSpace(value.raw_json_token());
    const char* const at = token.data();
    switch (*at) {
      case '{': {
        const std::uint32_t node = openContainer(JsonNode::Kind::object, units, at, parent);
        members(value.get_object(), name);
        return closeContainer(node);
      }
      case '[': {
        const std::uint32_t node = openContainer(JsonNode::Kind::array, units, at, parent);
        elements(value.get_array(), units, name);
        return closeContainer(node);
      }
      case '"':
        return text(value, token, open(JsonNode::Kind::text, units, at, parent));
      default:
        return scalar(token, open(JsonNode::Kind::number, units, at, parent));
    }
  }

  void text(od::value& value, std::string_view token, std::uint32_t number) {
    const std::string_view content = token.substr(1, token.size() - 2);
    if (widenPlain(content, units_)) {
      // Taken all the same: simdjson would pass over a text that nobody takes as over a name, with the colon and the
      // value behind it.
      static_cast<void>(value.get_raw_json_string().value());
      keepUnits(number, units_ + content.size());
    } else {
      keepUnits(number, toUtf16(value.get_string(), units_));
    }
  }

  void scalar(std::string_view token, std::uint32_t number) {
    JsonNode& node = tree_.nodes_[number];
    if (isDigit(token[0]) || token[0] == '-') {
      if (!isNumber(token)) fail(token.data(), "no number: " + std::string(token.substr(0, kShown)));
      widenPlain(token, units_);
      keepUnits(number, units_ + token.size());
    } else if (token == "null") {
      node.kind = JsonNode::Kind::null;
    } else if (token == "true" || token == "false") {
      node.kind = JsonNode::Kind::truth;
      node.length = token == "true" ? 1 : 0;
    } else {
      fail(token.data(), "no value: " + std::string(token.substr(0, kShown)));
    }
  }

  // Gives a node the units from where the last one's end up to `end`.
  void keepUnits(std::uint32_t number, unsigned short* end) {
    JsonNode& node = tree_.nodes_[number];
    node.text = static_cast<std::uint32_t>(units_ - tree_.units_.data());
    node.length = static_cast<std::uint32_t>(end - units_);
    *end = 0;
    units_ = end + 1;
  }

  std::uint32_t last() const { return static_cast<std::uint32_t>(tree_.nodes_.size() - 1); }
  std::size_t left(const char* at) const { return static_cast<std::size_t>(line_.data() + line_.size() - at); }

  std::uint32_t open(JsonNode::Kind kind, const unsigned short* name, const char* at, std::uint32_t parent) {
    JsonNode& node = tree_.nodes_.emplace_back();
    node.name = name;
    node.kind = kind;
    node.parent = parent;
    node.end = last() + 1;
    node.byteAt = static_cast<std::uint32_t>(at - line_.data());
    return last();
  }
  void close(std::uint32_t node) { tree_.nodes_[node].end = last() + 1; }

  // Objects and arrays in each other are walked by recursion: their number is bounded.
  std::uint32_t openContainer(JsonNode::Kind kind, const unsigned short* name, const char* at, std::uint32_t parent) {
    if (++depth_ > kMaxDepth) fail(at, "too many objects and arrays in each other");
    return open(kind, name, at, parent);
  }
  void closeContainer(std::uint32_t node) {
    --depth_;
    close(node);
  }

  void check(simdjson::error_code error, od::document* document) const {
    if (error == simdjson::SUCCESS) return;
    const char* at = line_.data();
    if (document != nullptr && document->current_location().get(at) != simdjson::SUCCESS)
      at = line_.data() + line_.size();
    fail(at, reason(error));
  }

  static std::string reason(simdjson::error_code error) {
    switch (error) {
      case simdjson::EMPTY:
        return "the line is empty";
      case simdjson::UTF8_ERROR:
        return "the line is no UTF-8";
      case simdjson::UNESCAPED_CHARS:
        return "a control character stands in a text";
      case simdjson::UNCLOSED_STRING:
        return "a text has no closing quote";
      case simdjson::STRING_ERROR:
        return "a text has an escape that is none";
      case simdjson::DEPTH_ERROR:
        return "too many objects in each other";
      default:
        return "no JSON: a quote, a comma, a colon or a bracket is missing or too many";
    }
  }

  [[noreturn]] void fail(const char* at, const std::string& why) const {
    throw JsonLineError(static_cast<std::size_t>(at - line_.data()) + 1, why);
  }

  static constexpr std::size_t kShown = 40;
  // Far more than a layout has: 49 levels, each of which may be an array.
  static constexpr unsigned kMaxDepth = 256;
  JsonTree& tree_;
  JsonNames& names_;
  const std::string_view line_;
  od::parser& parser_;
  unsigned short* units_ = nullptr;  // where the next ones go
  unsigned depth_ = 0;               // open objects and arrays, the line's own not counted
};

JsonReader::JsonReader(const std::vector<unsigned short>& names) : parser_(std::make_unique<Parser>()), names_(names) {}
JsonReader::~JsonReader() = default;

JsonTree& JsonReader::read(std::string_view line) {
  names_.begin();
  JsonTreeBuilder(tree_, names_, line, parser_->parser).run();
  return tree_;
}

}  // namespace oxr::rec
