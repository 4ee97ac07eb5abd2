#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "growingbytebuffer.hpp"
#include "oxrrec/encode/unnesting.hpp"
#include "oxrrec/nesting.hpp"
#include "records/records.hpp"

// Records of random layouts with random values: written from JSON lines as decode gives them, and read again, they give
// the same lines, and the same bytes when these are written once more. Some files have several kinds of record, those
// of one kind standing in the objects of another.

namespace oxr::fuzz {

namespace roundtrip {

using namespace oxr::rec;

// A layout, its settings and records of it are drawn together: an item writes its entry once, and its value for each
// occurrence. Of an area that a field chooses in, an occurrence has one of two alternatives. Of several kinds of record
// the first one has no parent, and any other one of those before it.
class Sample {
 public:
  explicit Sample(Choices& choices) : choices_(choices) {
    kinds_.resize(choices.coin() ? 1 : choices.between(2, 3));
    for (std::size_t kind = 0; kind < kinds_.size(); ++kind) {
      kinds_[kind].items = drawGroup(1);
      copybook += "01 " + nameOf(kind) + ".\n";
      if (kinds_.size() > 1) drawKind(kind);
      copybook += entries(kinds_[kind].items, 5);
    }
    for (int left = kinds_.size() > 1 ? choices.between(1, 3) : 1; left > 0; --left)
      lines.push_back(record(0));
  }
  std::string copybook;
  std::vector<std::string> lines;
  std::vector<std::string> nest;  // "CHILD:PARENT"
  std::vector<FieldSettingText> settings;
  std::vector<std::string> conditions;

 private:
  enum class Form : std::uint8_t { text, number, date, time, group, filler, counted, area };
  struct Item {
    Form form = Form::text;
    std::string name{};
    std::string clauses{};
    int digits = 0;  // or characters
    int places = 0;
    bool isSigned = false;
    int occurs = 0;  // 0: no array
    std::vector<Item> items{};
  };

  struct RecordItems {
    std::vector<Item> items{};
    std::vector<std::size_t> children{};
  };

  static std::string nameOf(std::size_t kind) { return "R" + std::to_string(kind); }
  static std::string letterOf(std::size_t kind) { return std::string(1, static_cast<char>('a' + kind)); }

  void drawKind(std::size_t kind) {
    const std::string name = nameOf(kind);
    copybook += "05 " + name + "-K PIC X.\n";
    conditions.push_back(name + "-K=" + letterOf(kind) + ':' + name);
    if (kind == 0) return;
    const std::size_t parent = choices_.upTo(kind - 1);
    kinds_[parent].children.push_back(kind);
    nest.push_back(name + ':' + nameOf(parent));
  }

  // A record with those that stand in it.
  std::string record(std::size_t kind) {
    std::string text = object(kinds_[kind].items);
    if (kinds_.size() > 1)
      text.insert(1, '"' + nameOf(kind) + "-K\":\"" + letterOf(kind) + (text.size() > 2 ? "\"," : "\""));
    for (const std::size_t child : kinds_[kind].children) {
      text.back() = ',';
      text += '"' + nameOf(child) + "\":[";
      for (int i = 0, count = choices_.between(0, 3); i < count; ++i)
        text += (i == 0 ? "" : ",") + record(child);
      text += "]}";
    }
    return text;
  }

  std::vector<Item> drawGroup(int depth) {
    std::vector<Item> items;
    for (int left = choices_.between(1, 4); left > 0; --left)
      items.push_back(drawItem(depth));
    return items;
  }

  Item drawItem(int depth) {
    Item item;
    item.form = static_cast<Form>(choices_.upTo(depth < 3 ? 7 : 3));
    item.name = "F" + std::to_string(++names_);
    item.digits = choices_.between(1, 9);
    switch (item.form) {
      case Form::number:
        drawNumber(item);
        break;
      case Form::date:
      case Form::time:
        drawDate(item);
        break;
      case Form::area:
        item.items = {{.form = Form::group, .name = item.name + "-A", .items = drawGroup(depth + 1)},
                      {.form = Form::group,
                       .name = item.name + "-B",
                       .clauses = " REDEFINES " + item.name + "-A",
                       .items = drawGroup(depth + 1)}};
        conditions.push_back(item.name + "-K=a,c-d:" + item.items[0].name);
        conditions.push_back(item.name + "-K=*:" + item.items[1].name);
        return item;
      case Form::group:
      case Form::counted:
        item.items = drawGroup(depth + 1);
        break;
      default:
        item.clauses = " PIC X(" + std::to_string(item.digits) + ")";
    }
    if (item.form != Form::counted && item.form != Form::filler && choices_.upTo(4) == 0)
      item.occurs = choices_.between(1, 3);
    return item;
  }

  void drawDate(Item& item) {
    constexpr const char* kDates[] = {"yyyyMMdd", "ddMMyyyy", "MMddyyyy"};
    constexpr const char* kClauses[] = {" PIC X(8)", " PIC 9(8)", " PIC 9(8) COMP-3", " PIC S9(8) COMP", " PIC X(9)"};
    item.clauses = choices_.oneOf(kClauses);
    settings.emplace_back(item.name + ":date=" + (item.form == Form::date ? choices_.oneOf(kDates) : "HHmmss"));
  }

  void drawNumber(Item& item) {
    constexpr const char* kUsages[] = {" COMP-6",      "", " COMP-3", " COMP", " COMP-5", " SIGN LEADING SEPARATE",
                                       " SIGN LEADING"};
    item.places = choices_.between(0, 3);
    if (choices_.upTo(3) == 0) item.digits += 18;  // more than an integer has
    const std::size_t usage = choices_.upTo(std::size(kUsages) - 1);
    item.isSigned = usage > 4 || (usage != 0 && choices_.coin());
    item.clauses = std::string(" PIC ") + (item.isSigned ? "S" : "") + "9(" + std::to_string(item.digits) + ")";
    if (item.places != 0) item.clauses += "V9(" + std::to_string(item.places) + ")";
    item.clauses += kUsages[usage];
  }

  static std::string entries(const std::vector<Item>& items, int level) {
    std::string text;
    for (const Item& item : items) {
      const std::string counter = item.name + "-N";
      if (item.form == Form::area) {
        text += std::to_string(level) + ' ' + item.name + "-K PIC X.\n" + entries(item.items, level);
        continue;
      }
      if (item.form == Form::counted) text += std::to_string(level) + ' ' + counter + " PIC 9.\n";
      text += std::to_string(level) + ' ' + (item.form == Form::filler ? "FILLER" : item.name) + item.clauses;
      if (item.occurs != 0) text += " OCCURS " + std::to_string(item.occurs);
      if (item.form == Form::counted) text += " OCCURS 0 TO 3 DEPENDING ON " + counter;
      text += ".\n" + entries(item.items, level + 5);
    }
    return text;
  }

  std::string object(const std::vector<Item>& items) {
    std::string text;
    for (const Item& item : items) {
      if (item.form == Form::filler) continue;
      if (item.form == Form::area) {
        const std::size_t which = choices_.upTo(1);
        text += '"' + item.name + "-K\":\"" + choices_.oneOf(std::string_view(which == 0 ? "acd" : "bxe")) + "\",\"" +
                item.items[which].name + "\":" + object(item.items[which].items) + ',';
        continue;
      }
      int count = item.occurs;
      if (item.form == Form::counted) {
        count = choices_.between(0, 3);
        text += '"' + item.name + "-N\":" + std::to_string(count) + ',';
      }
      text += '"' + item.name + "\":";
      const bool isArray = item.occurs != 0 || item.form == Form::counted;
      if (isArray) text += '[';
      for (int i = 0; i < (isArray ? count : 1); ++i)
        text += (i == 0 ? "" : ",") + value(item);
      text += isArray ? "]," : ",";
    }
    if (!text.empty()) text.pop_back();
    return '{' + text + '}';
  }

  std::string value(const Item& item) {
    if (!item.items.empty()) return object(item.items);
    if (item.form == Form::number) return number(item);
    const auto two = [&](int least, int most) { return std::to_string(100 + choices_.between(least, most)).substr(1); };
    if (item.form == Form::date)
      return '"' + std::to_string(choices_.between(1600, 9999)) + '-' + two(1, 12) + '-' + two(1, 28) + '"';
    if (item.form == Form::time) return '"' + two(0, 23) + ':' + two(0, 59) + ':' + two(0, 59) + '"';
    std::string text;
    for (int left = choices_.between(0, item.digits); left > 0; --left)
      text += choices_.oneOf(std::string_view("aZ09 -*({."));
    text.erase(text.find_last_not_of(' ') + 1);
    return '"' + text + '"';
  }

  std::string number(const Item& item) {
    const auto digits = [&](int count) {
      std::string text;
      while (count-- > 0)
        text += choices_.oneOf(std::string_view("0123456789"));
      return text;
    };
    std::string whole = digits(choices_.between(1, item.digits));
    whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size() - 1));
    const std::string places = digits(item.places);
    const bool isZero = (whole + places).find_first_not_of('0') == std::string::npos;
    const std::string minus = item.isSigned && !isZero && choices_.coin() ? "-" : "";
    return minus + whole + (places.empty() ? "" : '.' + places);
  }

  Choices& choices_;
  std::vector<RecordItems> kinds_;
  int names_ = 0;
};

// What encode makes of lines.
inline std::string written(const Sample& sample, const std::vector<std::string>& lines, const RecordPlan& plan,
                           RecordWorker& worker) {
  JsonReader reader(plan.names());
  const Unnesting unnesting(sample.nest, plan);
  GrowingByteBuffer bytes;
  worker.initializeWrite(nullptr, 0, 0, 0);
  const auto write = [&](const JsonTree& tree, const std::string&) {
    worker.setFIMessageTree(&tree, false);
    worker.write(&bytes, 0, 0);
    return Unnesting::Written::isGood;
  };
  for (const std::string& line : lines) {
    const std::string padded = line + std::string(JsonReader::kPadding, ' ');
    static_cast<void>(unnesting.writeAll(reader.read(std::string_view(padded).substr(0, line.size())), false, write));
  }
  worker.finishWriting(bytes);
  return std::string(bytes.bytes());
}

// What decode makes of records.
inline std::vector<std::string> read(const Sample& sample, const std::string& bytes, const RecordPlan& plan,
                                     RecordWorker& worker) {
  Nesting nesting(sample.nest, plan);
  JsonHandler json(plan.names(), {});
  ReadOnlyByteBuffer buffer;
  buffer.create(bytes.data(), static_cast<int>(bytes.size()));
  std::string all;
  const auto nest = [&] {
    require(nesting.add(worker.kindOfRecord(), json.lines(), all) == Nesting::Put::inPlace,
            "a child stands before its parent");
    json.clear();
  };
  worker.initializeParse(-1, nullptr, -1);
  worker.setFIHandler(&json, false);
  worker.setKindsOfInterest(nesting.names());
  worker.parseFirst(&buffer, nullptr, true, 0, -1);
  nest();
  while (worker.hasNext()) {
    worker.parseNext();
    nest();
  }
  nesting.finish(all);
  std::vector<std::string> lines;
  for (std::size_t at = 0, end = 0; (end = all.find('\n', at)) != std::string::npos; at = end + 1)
    lines.push_back(all.substr(at, end - at));
  return lines;
}

class Ignored : public FaultListener {
 public:
  bool goOnAfter(const FieldFault& fault) override { disagree("what was written cannot be read: " + fault.text()); }
};

}  // namespace roundtrip

inline void checkRoundTrip(Choices& choices) {
  using namespace roundtrip;
  constexpr Framing kFramings[] = {Framing::fixed, Framing::rdw, Framing::bdw, Framing::spanned,
                                   Framing::length4Little};
  constexpr int kPages[] = {37, 819, 1208, 273};
  RecordPlan::Options options;
  options.arraysAtFullSize = choices.coin();
  options.form.ccsid = choices.oneOf(kPages);
  RecordWorker::Settings settings;
  settings.form.framing = choices.oneOf(kFramings);
  const Sample sample(choices);
  const Copybook copybook = Copybook::read(sample.copybook, "c", {.format = SourceFormat::free});
  options.fieldSettings = sample.settings;
  options.conditions = sample.conditions;
  const RecordPlan plan(copybook, "", options);
  Ignored listener;
  const auto worker = RecordWorker::make(plan, settings, listener);
  try {
    const std::string bytes = written(sample, sample.lines, plan, *worker);
    const std::vector<std::string> lines = read(sample, bytes, plan, *worker);
    require(lines.size() == sample.lines.size(), "other lines of records of\n" + sample.copybook);
    for (std::size_t i = 0; i < lines.size(); ++i)
      requireEqual(lines[i], sample.lines[i], "a record of\n" + sample.copybook);
    requireEqual(written(sample, lines, plan, *worker), bytes, "the bytes of a record of\n" + sample.copybook);
  } catch (const WriteError& error) {
    disagree(sample.copybook + sample.lines.front() + " is refused: " + error.what());
  }
}

}  // namespace oxr::fuzz
