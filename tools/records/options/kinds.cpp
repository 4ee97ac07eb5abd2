#include "records/options/choice.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

namespace {

constexpr char kTopic[] = "Kinds of record";
const Words<OnUnknown> kUnknownWords = {
    {"error", OnUnknown::isError}, {"skip", OnUnknown::isSkipped}, {"raw", OnUnknown::isRaw}};

}  // namespace

void addKindOptions(CLI::App& command, RecordOptions& record) {
  command
      .add_option(
          "--when", record.plan.conditions,
          "FIELD=VALUE:NAME: if the field holds the value, the record is the level 01 entry NAME, or of the items "
          "that share their bytes with NAME only that one is read; VALUE may be a list C,D, a range 10-19, a "
          "quoted text, or * for all others; can be given again, and the first that holds decides")
      ->type_name("CONDITION")
      ->allow_extra_args(false)
      ->group(kTopic);
}

void addUnknownLineOption(CLI::App& command, OnUnknown& onUnknown) {
  addChoice<OnUnknown>(command, "--on-unknown", onUnknown, kUnknownWords,
                       "an object that no --when holds for is a bad line, but {\"RAW\":...} becomes the bytes that it "
                       "shows (raw); each is a bad line (error), or is left out (skip) [raw]")
      ->group(kTopic);
}

void addUnknownOption(CLI::App& command, OnUnknown& onUnknown) {
  addChoice<OnUnknown>(command, "--on-unknown", onUnknown, kUnknownWords,
                       "a record that no --when holds for is a bad field, is left out, or is written in hexadecimal "
                       "as {\"RAW\":...} [error]")
      ->group(kTopic);
}

}  // namespace oxr::rec
