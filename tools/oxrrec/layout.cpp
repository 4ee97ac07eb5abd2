#include "oxrrec/layout.hpp"

#include "records/options/choice.hpp"
#include "records/program/printablestream.hpp"
#include "records/program/reading.hpp"
#include "records/views/views.hpp"

namespace oxr::rec {

namespace {

void tellRecordTaken(const std::string& taken, std::vector<std::string> others, const Console& console) {
  std::erase(others, taken);
  if (!others.empty())
    console.messages << "oxrrec: this is " << taken << "; --record chooses another: " << listOf(others) << '\n';
}

// A view, and the files that it was made of.
struct View {
  std::string text;
  std::vector<std::string> files;
};

View tableOf(const Copybook& copybook, const LayoutOptions& options, const Console& console) {
  const RecordPlan::Options& plan = options.record.plan;
  if (!plan.conditions.empty() || !plan.fieldSettings.empty() || plan.form != PhysicalForm())
    throw ToolError("--as table shows the copybook alone: what is said of values is for --as json-schema and sql");
  const std::string& record = options.record.copybook.options.record;
  const Layout layout = copybook.layout(record);
  if (record.empty()) tellRecordTaken(layout.recordName, copybook.recordNames(), console);
  return {describe(layout), layout.fileNames};
}

View viewOf(const Copybook& copybook, const LayoutOptions& options, const Console& console) {
  if (options.form == LayoutForm::table) return tableOf(copybook, options, console);
  const RecordPlan plan(copybook, options.record.copybook.options.record, options.record.plan);
  if (!plan.recordsNotTaken().empty()) tellRecordTaken(plan.kinds().front().name, plan.recordsNotTaken(), console);
  View view{options.form == LayoutForm::sql ? createTable(plan) : jsonSchema(plan, options.pointsAsText),
            plan.layout().fileNames};
  view.files.insert(view.files.end(), options.record.settingFiles.begin(), options.record.settingFiles.end());
  return view;
}

}  // namespace

void addLayoutOptions(CLI::App& command, LayoutOptions& options) {
  addCopybookOptions(command, options.record.copybook);
  addValueOptions(command, options.record);
  addOutputOption(command, options.output);
  addChoice<LayoutForm>(
      command, "--as", options.form,
      {{"table", LayoutForm::table}, {"json-schema", LayoutForm::jsonSchema}, {"sql", LayoutForm::sql}},
      "a table of offsets, sizes and kinds; a JSON Schema of the objects that decode writes; CREATE TABLE with a "
      "column "
      "a field, arrays as NAME(1) and on [table]")
      ->group("Output");
  addChoice<bool>(command, "--decimals", options.pointsAsText, {{"number", false}, {"text", true}},
                  "json-schema: whether decode writes numbers with a decimal point as JSON numbers or strings [number]")
      ->group("Output");
  command
      .add_flag("--flat", options.record.plan.flat,
                "json-schema and sql: a group that does not repeat gives its fields to what is around it")
      ->group("Output");
  command.footer("Example:\n  oxrrec layout --copybook customers.cob --as json-schema -o customers.schema.json");
}

int layout(const LayoutOptions& options, const Console& console) {
  const CopybookSource& source = options.record.copybook;
  const View view = viewOf(Copybook::readFile(source.path, source.options), options, console);
  FileOutput output = openOutput(options.output, view.files, -1, console);
  output.write(options.form == LayoutForm::table ? printableLines(view.text) : view.text);
  output.close();
  return kDone;
}

}  // namespace oxr::rec
