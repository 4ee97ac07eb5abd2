#include "oxrmq/program.hpp"

#include "oxrmq/consume/commands.hpp"
#include "oxrmq/feed/feed.hpp"
#include "oxrmq/take/take.hpp"
#include "records/options/topics.hpp"

namespace oxr::mq {

namespace {

constexpr rec::Command kCommands[] = {
    {"feed", "cut a record file into messages", rec::prepare<FeedOptions, addFeedOptions, feed>},
    {"decode", "turn messages of records into messages of JSON lines",
     rec::prepare<DecodeOptions, addDecodeOptions, decode>},
    {"encode", "turn messages of JSON lines into messages of records",
     rec::prepare<EncodeOptions, addEncodeOptions, encode>},
    {"take", "write the messages of a queue to a file, each once", rec::prepare<TakeOptions, addTakeOptions, take>},
};

constexpr rec::Topic kTopics[] = {
    {"broker", "Broker", "where the broker is, and who logs in",
     "Where the broker is, who logs in, and how the connection is kept. When it is lost, it is made again, after "
     "pauses that grow from a tenth of a second to ten seconds."},
    {"messages", "Messages", "what is taken and what is put in a message",
     "What is taken from queues and what a message holds. A message is acknowledged when the broker has confirmed what "
     "became of it: whatever happens, it is there, once or more, with the same id."},
    rec::kCopybookTopic,
    rec::kRecordsTopic,
    rec::kKindsTopic,
    rec::kFieldsTopic,
    {"output", "Output", "what is made, and where it goes", "What is made, and where it goes."},
    {"errors", "Errors", "what becomes of what cannot be converted",
     "What becomes of a message in which something cannot be converted. It goes, whole and unchanged, to the target of "
     "--errors, and its headers tell why: oxr-fault (the reason), oxr-fault-number, oxr-fault-record, oxr-fault-path, "
     "oxr-fault-byte, oxr-fault-queue; oxr-fault-headers stands where there was no room for its own. What is left out, "
     "of no kind or bad, as options say, is counted in the last line."},
    {"exit-codes", "", "what the exit code tells",
     "0: all was converted, or the whole file was fed, or the queue was taken. 1: some message went to --errors, or "
     "something was left out; or feed was stopped before the end of its file; or take could not tell the broker that "
     "its output is complete, so that the messages are in the queue again. 2: nothing usable, such as options, a "
     "copybook or a file that are not understood, a login that the broker refuses, or a queue that is not there."},
};

}  // namespace

const rec::Program kOxrmq{"oxrmq", "carries records through a message broker, and converts them on the way",
                          OXR_VERSION, kCommands, kTopics};

}  // namespace oxr::mq
