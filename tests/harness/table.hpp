#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "harness/converter.hpp"
#include "harness/hex.hpp"
#include "harness/outcome.hpp"
#include "harness/tracing.hpp"
#include "harness/ways.hpp"

// Tables of cases for the members of DataCnv: "member arguments -> result or failure", one case a line.
//
//   member        field   places sign   ->  result
//   PckdDecToDec  123D    2      LI     way=fast  ->  -1.23
//   ~             1234    0      LI               ->  OXR5505: packed decimal, no sign found  | 0x1234
//
// The first line names the columns. Words stand between blanks; '...' is one word, blanks in it and all; "~" is the
// word of the line above. Words of the form name=value before the arrow are further arguments, which few cases need.
// "{3,5,7}" stands for three cases, one with each word; a result "{a,b,c}" has the result of each, and "{size}" within
// a result stands for the case's word of that column. What follows the arrow is compared with the text of what comes
// out; see outcome.hpp.
//
// Each case runs twice: as it is, and with debug trace on, when every guard sends it the general way; both must come to
// the same, and the trace shows each value that is made. way=fast says that no guard may send the first run the general
// way, way=general that one must.
namespace oxr::test {

// Bytes to write into, guards on both sides.
class Target {
 public:
  explicit Target(int size) : area_(2 * kGuard + static_cast<std::size_t>(std::max(size, 0)), kFill) {}

  unsigned char* data() { return area_.data() + kGuard; }
  std::string hex(int size) { return toHex({reinterpret_cast<const char*>(data()), static_cast<std::size_t>(size)}); }
  bool isUntouched(std::size_t from, std::size_t to) const {
    return std::all_of(area_.begin() + static_cast<std::ptrdiff_t>(from),
                       area_.begin() + static_cast<std::ptrdiff_t>(to),
                       [](unsigned char byte) { return byte == kFill; });
  }
  bool isUntouched() const { return isUntouched(0, area_.size()); }
  bool areGuardsWhole() const { return isUntouched(0, kGuard) && isUntouched(area_.size() - kGuard, area_.size()); }

 private:
  static constexpr std::size_t kGuard = 16;
  static constexpr unsigned char kFill = 0xA5;
  std::vector<unsigned char> area_;
};

// The arguments of a case by the names of their columns. An argument that the case does not have is the one of the
// second parameter. What pointers lead to lives as long as the case.
class Case {
 public:
  std::map<std::string, std::string> words;

  bool has(const std::string& name) const { return words.count(name) != 0; }
  std::string word(const std::string& name, const std::string& otherwise = "") const {
    const auto found = words.find(name);
    return found == words.end() ? otherwise : found->second;
  }
  template <class T = int>
  T number(const std::string& name, T otherwise = 0) const {
    if (!has(name)) return otherwise;
    if constexpr (std::is_floating_point_v<T>) return std::stod(word(name));
    if constexpr (std::is_unsigned_v<T>) return static_cast<T>(std::stoull(word(name), nullptr, 0));
    return static_cast<T>(std::stoll(word(name), nullptr, 0));
  }
  bool flag(const std::string& name, bool otherwise = false) const { return number<int>(name, otherwise) != 0; }
  // One of the words, or a number.
  template <class Enum>
  Enum oneOf(const std::string& name, const std::vector<std::string>& names, Enum otherwise) const {
    if (!has(name)) return otherwise;
    const auto found = std::find(names.begin(), names.end(), word(name));
    return static_cast<Enum>(found != names.end() ? found - names.begin() : std::stoi(word(name)));
  }
  ESign sign(ESign otherwise = eSignNone) const { return oneOf("sign", {"none", "LI", "TI", "LS", "TS"}, otherwise); }
  EJustification justification(EJustification otherwise = eJustifyNone) const {
    return oneOf("justify", {"none", "left", "right"}, otherwise);
  }
  ETrimType trim(ETrimType otherwise = eTrimNone) const {
    return oneOf("trim", {"none", "leading", "trailing", "both", "pad"}, otherwise);
  }
  EEndian endian(const std::string& name, EEndian otherwise = eEndianBig) const {
    return has(name) ? word(name) == "little"  ? eEndianLittle
                       : word(name) == "big"   ? eEndianBig
                       : word(name) == "unset" ? eEndianUnset
                                               : static_cast<EEndian>(number(name))
                     : otherwise;
  }
  // Hex digits as bytes; "null" is a null pointer.
  const unsigned char* bytes(const std::string& name) {
    if (word(name) == "null") return nullptr;
    return reinterpret_cast<const unsigned char*>(byteTexts_.emplace_back(fromHex(word(name))).data());
  }
  // Their number, but for what `size` says.
  int sizeOf(const std::string& name) const {
    return has("size") ? number("size") : static_cast<int>(fromHex(word(name)).size());
  }
  // Zero-terminated units; "null" is a null pointer.
  const unsigned short* text(const std::string& name, const std::string& otherwise = "") {
    if (word(name, otherwise) == "null") return nullptr;
    return texts_.emplace_back(k(word(name, otherwise))).characters();
  }
  // A target of so many bytes; a null pointer if the case says target=null.
  unsigned char* target(int size) { return word("target") == "null" ? nullptr : targets_.emplace_back(size).data(); }
  // What a member left in the last target.
  std::string written(int size) { return targets_.back().hex(size); }
  const std::deque<Target>& targets() const { return targets_; }

  // A converter with the settings of the case.
  DataCnv converter() const {
    return converterFor(number("page", 37), endian("order"), endian("packed"),
                        static_cast<EFloatFmt>(number("float", static_cast<int>(eFloatHexadecimal))), flag("strict"),
                        static_cast<EMessageStandard>(number("standard")));
  }

 private:
  std::deque<std::string> byteTexts_;
  std::deque<KelWstring> texts_;
  std::deque<Target> targets_;
};

// Runs a member with the arguments of a case; the result is its text.
using Member = std::function<std::string(Case&)>;
using Members = std::map<std::string, Member>;

// Binds a member of DataCnv that reads the field of a case, or writes its value into a target; the arguments that
// follow are taken from the case.
//
// Example: {"IntToDec", reader(&DataCnv::IntToDec, placesOf)}
inline ESign signOf(const Case& c) {
  return c.sign();
}
inline int placesOf(const Case& c) {
  return c.number("places");
}
template <class Result, class... Types, class... Arguments>
Member reader(Result (DataCnv::*member)(const unsigned char*, int, Types...), Arguments... arguments) {
  return [=](Case& c) {
    const unsigned char* const field = c.bytes("field");
    return shown((c.converter().*member)(field, c.sizeOf("field"), arguments(c)...));
  };
}
template <class Value, class Size, class... Types, class... Arguments>
Member writer(void (DataCnv::*member)(Value, unsigned char*, Size, Types...), Arguments... arguments) {
  return [=](Case& c) {
    int size = c.number("size");
    const auto value = [&c] {
      if constexpr (std::is_pointer_v<Value>)
        return c.text("value");
      else
        return c.number<Value>("value");
    };
    (c.converter().*member)(value(), c.target(size), size, arguments(c)...);
    return c.written(size);
  };
}

inline std::vector<std::string> wordsOf(std::string_view line) {
  std::vector<std::string> words;
  bool isInWord = false, isQuoted = false;
  for (const char c : line) {
    if (c == ' ' && !isQuoted) {
      isInWord = false;
      continue;
    }
    if (!isInWord) words.emplace_back();
    isInWord = true;
    if (c == '\'')
      isQuoted = !isQuoted;  // in a word too: pad=' '
    else
      words.back() += c;
  }
  return words;
}

// The same members, their result the members of DataCnv that they enter: "StrToDec StrToDecimal TrimData". Entry and
// end of the converter itself don't count.
inline Members tracesOf(const Members& members) {
  Members traces;
  for (const auto& [name, member] : members)
    traces[name] = [member = member](Case& c) {
      std::string entered;
      for (const std::string& each : enteredMembers([&] { raisedBy([&] { member(c); }); }))
        if (each.find("DataCnv") == each.npos) entered += (entered.empty() ? "" : " ") + each;
      return entered;
    };
  return traces;
}

// One run of a case; what a member must leave alone is looked at too.
inline std::string runCase(const Member& member, const std::map<std::string, std::string>& words) {
  Case run;
  run.words = words;
  std::string text;
  const Raised raised = raisedBy([&] { text = member(run); });
  for (const Target& target : run.targets()) {
    EXPECT_TRUE(target.areGuardsWhole()) << "written outside the target";
    EXPECT_TRUE(raised.kind.empty() || run.flag("touched") || target.isUntouched()) << "written before the failure";
  }
  return raised.kind.empty() ? text : shown(raised);
}

// How many more values a debug trace shows at their ends than being made.
inline long valuesMadeUnseen(std::string_view lines) {
  const auto count = [&](std::string_view entry) {
    long found = 0;
    for (std::size_t at = lines.find(entry); at != lines.npos; at = lines.find(entry, at + entry.size()))
      ++found;
    return found;
  };
  long unseen = count("> PWFData::~PWFData\n");
  for (const char* entry : {"> PWFData::init:", "> PWFData::PWFData\n", "> PWFData::PWFData(PWFString&)\n",
                            "> PWFData::PWFData(PWFInt32,bool)\n", "> PWFData::PWFData(PWFData&)\n"})
    unseen -= count(entry);
  return unseen;
}

// The cases that a line stands for, by their arguments.
inline std::vector<std::map<std::string, std::string>> casesOf(std::map<std::string, std::string> named) {
  std::vector<std::map<std::string, std::string>> cases;
  for (auto& [name, word] : named) {
    if (!word.starts_with('{') || !word.ends_with('}') || word.find(',') == word.npos) continue;
    for (std::string rest = word.substr(1); !rest.empty(); rest.erase(0, word.size() + 1)) {
      word = rest.substr(0, std::min(rest.find(','), rest.size() - 1));
      for (auto& one : casesOf(named))
        cases.push_back(std::move(one));
    }
    return cases;
  }
  return {std::move(named)};
}
// The result of the case with the index.
inline std::string resultOf(std::string_view result, const std::map<std::string, std::string>& named,
                            std::size_t index) {
  if (result.starts_with('{') && result.ends_with('}') && result.find(',') != result.npos) {
    for (result = result.substr(1, result.size() - 2); index > 0; --index)
      result.remove_prefix(result.find(',') + 1);
    result = result.substr(0, result.find(','));
  }
  std::string text(result == "''" ? "" : result);
  for (const auto& [name, word] : named)
    for (std::size_t at; (at = text.find('{' + name + '}')) != text.npos;)
      text.replace(at, name.size() + 2, word);
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

// Runs the cases of a table. Its first column names the member, or several between commas.
inline void runTable(std::string_view table, const Members& members) {
  std::vector<std::string> columns, above;
  while (!table.empty()) {
    const std::string_view line = table.substr(0, table.find('\n'));
    table.remove_prefix(std::min(line.size() + 1, table.size()));
    const std::size_t arrow = line.find(" ->");
    std::vector<std::string> words = wordsOf(line.substr(0, arrow));
    if (words.empty()) continue;
    if (columns.empty()) {
      columns = words;
      continue;
    }
    SCOPED_TRACE(line);
    ASSERT_GE(words.size(), columns.size()) << "a case without all arguments";
    std::map<std::string, std::string> named;
    for (std::size_t i = 0; i < words.size(); ++i) {
      if (i < columns.size()) {
        if (words[i] == "~") words[i] = above.at(i);
        named[columns[i]] = words[i];
      } else {
        const std::size_t equals = words[i].find('=');
        ASSERT_NE(equals, std::string::npos) << "a word too many: " << words[i];
        named[words[i].substr(0, equals)] = words[i].substr(equals + 1);
      }
    }
    above = words;
    ASSERT_NE(arrow, line.npos) << "a case without a result";
    std::string_view result = line.substr(arrow + 3);
    result.remove_prefix(std::min(result.find_first_not_of(' '), result.size()));
    result = result.substr(0, result.find_last_not_of(' ') + 1);
    std::size_t index = 0;
    for (const auto& arguments : casesOf(named)) {
      const std::string expected = resultOf(result, arguments, index++);
      for (std::string names = words[0]; !names.empty();) {
        const std::string name = names.substr(0, names.find(','));
        names.erase(0, name.size() + 1);
        ASSERT_EQ(members.count(name), 1u) << "no member " << name;
        std::string text, general;
        const std::uint64_t ways = generalWays([&] { text = runCase(members.at(name), arguments); });
        KelLog::iCurrentSubComponent = 1;
        const std::string trace = tracedAt(4, [&] { general = runCase(members.at(name), arguments); });
        KelLog::iCurrentSubComponent = 0;
        EXPECT_EQ(text.substr(0, text.find_last_not_of(' ') + 1), expected) << name;
        EXPECT_EQ(general, text) << name << " the general way";
        const bool hasFailed = general.find("OXR") != general.npos;
        EXPECT_TRUE(hasFailed || valuesMadeUnseen(trace) == 0) << trace;
        if (arguments.count("way") != 0) {
          EXPECT_EQ(ways != 0, arguments.at("way") == "general") << name << " took the other way";
        }
      }
    }
  }
}

}  // namespace oxr::test
