#include "oxrrec/explain/explain.hpp"

#include <algorithm>

#include "oxrrec/explain/advice.hpp"
#include "oxrrec/explain/record.hpp"
#include "oxrrec/values.hpp"
#include "records/counted.hpp"
#include "records/options/choice.hpp"
#include "records/program/printablestream.hpp"
#include "records/program/reading.hpp"

// The record is read as decode reads it, with an eye on each field; whatever stands before it is read and not looked
// at.

namespace oxr::rec {

namespace {

// Gathers the fields of the record in hand once `isOn`.
class Explainer : public FieldObserver, public FaultListener {
 public:
  explicit Explainer(const RecordPlan& plan) : plan_(plan), adviser_(plan) {
    record.ccsid = plan.forms().front().ccsid;
    record.characters = charactersOf(record.ccsid);
  }

  bool isOn = false;
  const RecordWorker* worker = nullptr;
  ExplainedRecord record;

  void seen(const FieldSeen& field) override {
    if (!isOn) return;
    keepRecord();
    const Layout& layout = layoutOf(plan_, field.step);
    const Item& item = layout.items[field.step.item];
    ExplainedField& told = record.fields.emplace_back();
    told.path = fieldPath(layout, field.step.item, field.arrays);
    told.offset = field.offset;
    told.size = field.step.size;
    told.picture = pictureText(item);
    told.isFiller = item.isFiller();
    if (field.fault == nullptr) {
      told.value = valueText(field.value);
      return;
    }
    told.fault = field.fault->reasonText();
    told.badByte = field.fault->reason.badByte();
    const Advice advice = adviser_.adviceFor(field);
    told.advice = advice.option;
    if (!advice.option.empty()) told.advised = valueText(advice.value);
  }

  // Those of fields come to seen() before; what is left is of the record, or of a count.
  bool goOnAfter(const FieldFault& fault) override {
    if (!isOn) return true;
    keepRecord();
    hasNoKind_ = hasNoKind_ || fault.reason.code == FaultCode::noKind;
    const std::string path = fault.path();
    for (ExplainedField& field : record.fields) {
      if (path.empty() || field.path != path) continue;
      field.fault = fault.reasonText();
      return true;
    }
    record.faults.push_back((path.empty() ? path : path + ": ") + fault.reasonText());
    return true;
  }

  // To be called when the record was read.
  void finish(std::string_view kind) {
    record.isUnknown = hasNoKind_ && record.fields.empty();
    record.kind = kind.empty() ? plan_.layout().recordName : kind;
  }

 private:
  void keepRecord() {
    if (!record.bytes.empty()) return;
    const auto bytes = worker->recordInHand();
    record.bytes.assign(bytes.begin(), bytes.end());
    record.offset = worker->offsetInInput();
  }

  const RecordPlan& plan_;
  Adviser adviser_;
  bool hasNoKind_ = false;  // the record, or an area of it
};

// Reads on to the record; false if there are not so many.
bool readTo(std::uint64_t number, FileInput& input, RecordWorker& worker, Explainer& explainer) {
  NoHandler none;
  worker.setFIHandler(&none, false);
  explainer.isOn = number == 1;
  worker.parseFirst(input.first(), nullptr, true, 0, -1);
  std::uint64_t before = 0;
  while (worker.recordsRead() < number && worker.hasNext()) {
    explainer.isOn = worker.recordsRead() + 1 == number;
    before = static_cast<std::uint64_t>(worker.getNumBytesParsed());
    worker.parseNext();
  }
  if (worker.recordsRead() < number) return false;
  const auto size = static_cast<std::uint64_t>(worker.getNumBytesParsed()) - before;
  explainer.record.bytes.resize(std::min<std::uint64_t>(explainer.record.bytes.size(), size));
  return true;
}

bool isBad(const ExplainedRecord& record) {
  for (const ExplainedField& field : record.fields)
    if (!field.fault.empty()) return true;
  return !record.faults.empty();
}

}  // namespace

void addExplainOptions(CLI::App& command, ExplainOptions& options) {
  command.add_option("N", options.number, "the number of the record, from 1")->required()->check(wholeNumber(1));
  addInputOptions(command, options.input);
  addRecordOptions(command, options.record);
  command
      .add_option("--html", options.page,
                  "where a page for a browser goes, in the place of the table; - for standard output")
      ->type_name("PAGE")
      ->group("Output");
}

int explain(const ExplainOptions& options, const Console& console) {
  RecordOptions wanted = options.record;
  wanted.plan.showsFillers = true;
  const Description description(wanted, console);
  const RecordPlan& plan = description.plan();
  Explainer explainer(plan);
  // A record of no kind is shown as one: to leave it out would be no answer.
  InputOptions told = options.input;
  told.records.onUnknown = OnUnknown::isError;
  FileInput input = openInput(told.path, told.window, console);
  const std::uint64_t before = input.origin().records;
  if (options.number <= before)
    throw ToolError(input.name() + ": the first record that is read is " + std::to_string(before + 1));
  const RecordWorker::Owner worker = makeWorker(plan, told, input, explainer, console);
  worker->setSource(&input);
  worker->initializeParse(-1, nullptr, -1);
  worker->setObserver(&explainer);
  explainer.worker = worker.get();
  ExplainedRecord& record = explainer.record;
  bool isThere = false;
  try {
    isThere = readTo(options.number - before, input, *worker, explainer);
  } catch (const FrameError& error) {
    throw ToolError(input.name() + ": " + error.what());
  }
  if (!isThere) {
    const std::uint64_t all = worker->recordsRead();
    throw ToolError(input.name() + ": there " + (all == 1 ? "is " : "are ") + counted(all, "record"));
  }
  record.input = input.name();
  record.number = options.number;
  explainer.finish(worker->kindOfRecord());
  const bool isPage = !options.page.empty();
  FileOutput output = description.openOutput(isPage ? options.page : kStandardStream, input, console);
  output.write(isPage ? explainPage(record) : printableLines(explainTable(record)));
  output.close();
  return isBad(record) ? kBadField : kDone;
}

}  // namespace oxr::rec
