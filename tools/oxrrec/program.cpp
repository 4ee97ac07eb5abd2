#include "oxrrec/program.hpp"

#include "oxrrec/decode.hpp"
#include "oxrrec/encode/encode.hpp"
#include "oxrrec/explain/explain.hpp"
#include "oxrrec/index.hpp"
#include "oxrrec/layout.hpp"
#include "oxrrec/profile/profile.hpp"
#include "oxrrec/verify/verify.hpp"
#include "records/options/topics.hpp"

namespace oxr::rec {

namespace {

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

constexpr Topic kTopics[] = {
    kCopybookTopic,
    kRecordsTopic,
    kKindsTopic,
    kFieldsTopic,
    {"output", "Output", "what is written, and where to", "What is written, and where to."},
    {"errors", "Errors", "what becomes of a field that cannot be read",
     "What becomes of a field that cannot be read. The first 20 are told on standard error, with record, byte, path, "
     "reason and bytes; `oxrrec explain` shows a whole record."},
    {"exit-codes", "", "what the exit code tells",
     "0: all is read. 1: some field or record was bad, whatever --on-error made of it. 2: nothing usable, such as "
     "options or a copybook that are not understood, or a file that cannot be read or written."},
};

}  // namespace

const Program kOxrrec{"oxrrec", "reads and writes record files that a COBOL copybook describes", OXR_VERSION, kCommands,
                      kTopics};

int run(std::span<const char* const> arguments, const Console& console) {
  return runCommand(kOxrrec, arguments, console);
}

}  // namespace oxr::rec
