#include "oxrrec/profile/profile.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "oxrrec/profile/fieldprofile.hpp"
#include "oxrrec/table.hpp"
#include "oxrrec/values.hpp"
#include "records/counted.hpp"
#include "records/json/jsontext.hpp"
#include "records/options/choice.hpp"
#include "records/program/printablestream.hpp"
#include "records/program/reading.hpp"

namespace oxr::rec {

namespace {

using Profiles = std::vector<FieldProfile>;

// Keeps a profile for each step of the plan that reads a field.
class Profiler : public FieldObserver, public FaultListener {
 public:
  explicit Profiler(const RecordPlan& plan) : plan_(plan), adviser_(plan), profiles_(plan.steps().size()) {
    const auto characters = charactersOf(plan.forms().front().ccsid);
    blank_ = static_cast<unsigned char>(std::find(characters.begin(), characters.end(), " ") - characters.begin());
  }

  void seen(const FieldSeen& field) override {
    FieldProfile& here = profiles_[static_cast<std::size_t>(&field.step - plan_.steps().data())];
    if (here.count == 0) {
      const Layout& layout = layoutOf(plan_, field.step);
      // Kinds of record often have fields of the same name.
      here.path = (plan_.kinds().size() > 1 ? layout.recordName + '.' : "") + fieldPath(layout, field.step.item, {});
      here.picture = pictureText(layout.items[field.step.item]);
    }
    told_ = field.fault;
    addTo(here, field, blank_, plan_.forms()[field.step.form], adviser_);
  }
  // Those of fields came to seen() before.
  bool goOnAfter(const FieldFault& fault) override {
    hasFault_ = true;
    if (std::exchange(told_, nullptr) == &fault) return true;
    ++others_.bad;
    const std::string path = fault.path();
    ++others_.reasons[(path.empty() ? "" : path + ", ") + fault.reason.kind()];
    return true;
  }

  bool hasFault() const { return hasFault_; }
  // Those of fields that some record has, and one of the records.
  Profiles profiles() const {
    Profiles some;
    std::copy_if(profiles_.begin(), profiles_.end(), std::back_inserter(some),
                 [](const auto& p) { return p.count != 0; });
    if (others_.bad != 0) some.push_back(others_);
    return some;
  }

 private:
  const RecordPlan& plan_;
  Adviser adviser_;
  Profiles profiles_;
  FieldProfile others_{.path = "(record)"};  // what is wrong with records as such, and with counts
  const FieldFault* told_ = nullptr;         // the last one that seen() got
  bool hasFault_ = false;
  unsigned char blank_ = ' ';
};

// "FIELD: option", for each field that has bad values of which an option makes some readable.
std::vector<std::string> suggestions(const Profiles& profiles) {
  std::map<std::string, std::string> fields;  // by option
  for (const FieldProfile& field : profiles)
    if (const std::string best = field.suggestion(); !best.empty())
      fields[best] += (fields[best].empty() ? "" : ", ") + field.path;
  std::vector<std::string> lines;
  lines.reserve(fields.size());
  for (const auto& [option, paths] : fields)
    lines.push_back(option + " makes bad values readable of: " + paths);
  return lines;
}

std::string tableOf(const Profiles& profiles, std::uint64_t records) {
  std::vector<std::vector<std::string>> rows{
      {"field", "picture", "count", "bad", "null", "blank", "NUL", "signs", "smallest", "largest"}};
  std::string reasons;
  for (const FieldProfile& field : profiles) {
    rows.push_back({field.path, field.picture, std::to_string(field.count), std::to_string(field.bad),
                    std::to_string(field.nulls), std::to_string(field.blanks), std::to_string(field.nuls),
                    signsText(field), field.extremes.smallest(), field.extremes.largest()});
    for (const auto& [reason, count] : field.reasons)
      reasons += field.path + ": " + counted(count, "time") + ' ' + reason + '\n';
  }
  std::string text = counted(records, "record") + '\n' +
                     tableText(rows, {false, false, true, true, true, true, true, false, false, false}) + reasons;
  for (const std::string& line : suggestions(profiles))
    text += line + '\n';
  return text;
}

void putCounts(JsonText& json, const char* key, const std::map<std::string, std::uint64_t>& counts) {
  json.writer().Key(key);
  json.writer().StartObject();
  for (const auto& [name, count] : counts)
    json.put(name.c_str(), count);
  json.writer().EndObject();
}

// An object a field; `smallest` and `largest` are values as decode writes them.
std::string linesOf(const Profiles& profiles) {
  JsonText json;
  for (const FieldProfile& field : profiles) {
    json.writer().StartObject();
    json.put("path", field.path);
    json.put("picture", field.picture);
    const std::pair<const char*, std::uint64_t> numbers[] = {{"count", field.count},
                                                             {"bad", field.bad},
                                                             {"null", field.nulls},
                                                             {"blank", field.blanks},
                                                             {"nul", field.nuls}};
    for (const auto& [key, number] : numbers)
      json.put(key, number);
    std::map<std::string, std::uint64_t> signs;
    for (std::size_t sign = 0; sign < field.signs.size(); ++sign)
      if (field.signs[sign] != 0) signs[std::string(1, "0123456789ABCDEF"[sign])] = field.signs[sign];
    putCounts(json, "signs", signs);
    for (const auto& [key, value] :
         {std::pair("smallest", field.extremes.smallest()), std::pair("largest", field.extremes.largest())}) {
      json.writer().Key(key);
      const std::string text = value.empty() ? "null" : value;
      json.writer().RawValue(text.data(), text.size(), rapidjson::kStringType);
    }
    putCounts(json, "reasons", field.reasons);
    if (const std::string best = field.suggestion(); !best.empty()) json.put("suggestion", best);
    json.writer().EndObject();
    json.endLine();
  }
  return std::string(json.text());
}

// What can be read; a failure that ends the work early is told.
bool readAll(FileInput& input, RecordWorker& worker, const Console& console) {
  try {
    worker.parse(input.first(), nullptr, 0, -1);
    return true;
  } catch (const FrameError& error) {
    console.messages << "oxrrec: " << input.name() << ": " << error.what() << '\n';
    return false;
  }
}

}  // namespace

void addProfileOptions(CLI::App& command, ProfileOptions& options) {
  addInputOptions(command, options.input);
  addRecordOptions(command, options.record);
  addOutputOption(command, options.output);
  addChoice<bool>(command, "--to", options.isJson, {{"table", false}, {"json", true}},
                  "a table, or a JSON object a field [table]")
      ->group("Output");
}

int profile(const ProfileOptions& options, const Console& console) {
  const Description description(options.record, console);
  const RecordPlan& plan = description.plan();
  Profiler profiler(plan);
  FileInput input = openInput(options.input.path, options.input.window, console);
  const RecordWorker::Owner worker = makeWorker(plan, options.input, input, profiler, console);
  FileOutput output = description.openOutput(options.output, input, console);
  NoHandler none;
  worker->setSource(&input);
  worker->initializeParse(-1, nullptr, -1);
  worker->setObserver(&profiler);
  worker->setFIHandler(&none, false);
  const bool isWhole = readAll(input, *worker, console);
  const Profiles profiles = profiler.profiles();
  output.write(options.isJson ? linesOf(profiles) : printableLines(tableOf(profiles, worker->recordsRead())));
  output.close();
  if (!isWhole) return kFailed;
  return profiler.hasFault() ? kBadField : kDone;
}

}  // namespace oxr::rec
