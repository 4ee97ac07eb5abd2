#include "oxrrec/layout.hpp"

#include "records/options/choice.hpp"
#include "records/program/reading.hpp"
#include "records/views/views.hpp"

namespace oxr::rec {

namespace {

std::string viewOf(const Layout& layout, const LayoutOptions& options) {
  if (options.form == LayoutForm::table) return describe(layout);
  const RecordPlan plan(layout, options.plan);
  return options.form == LayoutForm::sql ? createTable(plan) : jsonSchema(plan, options.pointsAsText);
}

}  // namespace

void addLayoutOptions(CLI::App& command, LayoutOptions& options) {
  addCopybookOptions(command, options.copybook);
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
      .add_flag("--flat", options.plan.flat,
                "json-schema and sql: a group that does not repeat gives its fields to what is around it")
      ->group("Output");
  command.footer("Example:\n  oxrrec layout --copybook customers.cob --as json-schema -o customers.schema.json");
}

int layout(const LayoutOptions& options, const Console& console) {
  const Copybook copybook = Copybook::readFile(options.copybook.path, options.copybook.options);
  const Layout record = copybook.layout(options.copybook.options.record);
  if (options.copybook.options.record.empty() && copybook.recordNames().size() > 1) {
    std::vector<std::string> others = copybook.recordNames();
    std::erase(others, record.recordName);
    console.messages << "oxrrec: this is " << record.recordName << "; --record chooses another: " << listOf(others)
                     << '\n';
  }
  const std::string text = viewOf(record, options);
  FileOutput output = openOutput(options.output, record.fileNames, -1, console);
  output.write(text);
  output.close();
  return kDone;
}

}  // namespace oxr::rec
