#include "oxrmq/consume/commands.hpp"

#include <CLI/CLI.hpp>

#include "records/options/choice.hpp"
#include "records/program/reading.hpp"

namespace oxr::mq {

namespace {

template <class Made, class Settings>
int consumeBy(const ConsumeOptions& options, const rec::RecordOptions& record, Settings settings,
              const std::string& name, const rec::Console& console) {
  settings.longest = options.longestOutput;
  const rec::Description description(record, console);
  refuseInputs(options.broker.metrics, filesOf(options.broker));
  refuseInputs(options.broker.metrics, description.files());
  const ConversionMaker make = [&] { return std::make_unique<Made>(description.plan(), settings); };
  return consume(options, name, make, console);
}

}  // namespace

void addDecodeOptions(CLI::App& command, DecodeOptions& options) {
  addConsumeOptions(command, options.consume);
  rec::addRecordOptions(command, options.record);
  rec::addFramingOptions(command, options.decoding.records.form, rec::FormIs::said);
  rec::addUnknownOption(command, options.decoding.records.onUnknown);
  command
      .add_flag("--allow-extra", options.decoding.records.allowExtra, "records may be longer than the copybook says")
      ->group("Records");
  rec::addChoice<bool>(command, "--decimals", options.decoding.json.pointsAsText, {{"number", false}, {"text", true}},
                       "write numbers with a decimal point as JSON numbers or as strings [number]")
      ->group("Output");
  command
      .add_flag("--flat", options.record.plan.flat,
                "a group that does not repeat gives its fields to the object around it")
      ->group("Output");
  rec::addChoice<OnError>(command, "--on-error", options.decoding.onError,
                          {{"errors", OnError::fails}, {"null", OnError::null}, {"skip", OnError::skip}},
                          "at a field that cannot be read: send the message to --errors, write null for the field, or "
                          "leave its record out [errors]")
      ->group("Errors");
  command.footer(
      "Example:\n  oxrmq decode --from records --to /lines --errors /bad --copybook customers.cob --ccsid 37 --records "
      "rdw");
}

int decode(const DecodeOptions& options, const rec::Console& console) {
  return consumeBy<Decoding>(options.consume, options.record, options.decoding, "oxrmq decode", console);
}

void addEncodeOptions(CLI::App& command, EncodeOptions& options) {
  addConsumeOptions(command, options.consume);
  rec::addRecordOptions(command, options.record);
  rec::addFramingOptions(command, options.encoding.records.form, rec::FormIs::said);
  rec::addUnknownLineOption(command, options.encoding.records.onUnknown);
  rec::addFillerOption(command, options.encoding.records.filler);
  command
      .add_flag("--flat", options.record.plan.flat,
                "groups that do not repeat have their fields in the object around them")
      ->group("Output");
  rec::addChoice<OnError>(command, "--on-error", options.encoding.onError,
                          {{"errors", OnError::fails}, {"skip", OnError::skip}},
                          "at a line that does not fit: send the message to --errors, or leave its record out [errors]")
      ->group("Errors");
  command.footer(
      "Example:\n  oxrmq encode --from lines --to /records --errors /bad --copybook customers.cob --ccsid 37 --records "
      "rdw");
}

int encode(const EncodeOptions& options, const rec::Console& console) {
  return consumeBy<Encoding>(options.consume, options.record, options.encoding, "oxrmq encode", console);
}

}  // namespace oxr::mq
