#pragma once

#include "oxrmq/consume/consume.hpp"
#include "oxrmq/convert/encoding.hpp"

namespace oxr::mq {

struct DecodeOptions {
  ConsumeOptions consume;
  rec::RecordOptions record;
  Decoding::Settings decoding;
};
void addDecodeOptions(CLI::App& command, DecodeOptions& options);
// Messages of records become messages of JSON lines. The result is the exit code.
int decode(const DecodeOptions& options, const rec::Console& console);

struct EncodeOptions {
  ConsumeOptions consume;
  rec::RecordOptions record;
  Encoding::Settings encoding;
};
void addEncodeOptions(CLI::App& command, EncodeOptions& options);
// Messages of JSON lines become messages of records. The result is the exit code.
int encode(const EncodeOptions& options, const rec::Console& console);

}  // namespace oxr::mq
