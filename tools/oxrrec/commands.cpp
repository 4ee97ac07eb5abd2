#include "oxrrec/commands.hpp"

#include <memory>

#include "oxrrec/decode.hpp"
#include "oxrrec/encode/encode.hpp"
#include "oxrrec/explain/explain.hpp"
#include "oxrrec/index.hpp"
#include "oxrrec/layout.hpp"
#include "oxrrec/profile/profile.hpp"
#include "oxrrec/verify/verify.hpp"

namespace oxr::rec {

namespace {

// A command is a struct of options, a function that adds them, and one that works by them.
template <class Options, void (*kAdd)(CLI::App&, Options&), int (*kRun)(const Options&, const Console&)>
Work prepare(CLI::App& command) {
  const auto options = std::make_shared<Options>();
  kAdd(command, *options);
  return [options](const Console& console) { return kRun(*options, console); };
}

constexpr Command kCommands[] = {
    {"decode", "write a JSON object for each record, one a line", prepare<DecodeOptions, addDecodeOptions, decode>},
    {"explain", "show one record, field by field", prepare<ExplainOptions, addExplainOptions, explain>},
    {"index", "tell in what ranges a file can be read one by one", prepare<IndexOptions, addIndexOptions, index>},
    {"layout", "show how a copybook lays its records out", prepare<LayoutOptions, addLayoutOptions, layout>},
    {"profile", "tell what the bytes of each field are in a whole file",
     prepare<ProfileOptions, addProfileOptions, profile>},
    {"encode", "write the records of JSON lines, as decode made them",
     prepare<EncodeOptions, addEncodeOptions, encode>},
    {"verify", "decode a record file and encode it again, and compare all bytes",
     prepare<VerifyOptions, addVerifyOptions, verify>},
};

}  // namespace

std::span<const Command> commands() {
  return kCommands;
}

}  // namespace oxr::rec
