#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "fuzz/records/stretches.hpp"
#include "records/framing/framing.hpp"

// What a framer puts around records, a reader takes away again, in all forms; it knows where each byte stands, and can
// begin at any record that may be the first of an input. Bytes that no framer wrote give records or an error, the same
// in stretches and at once.

namespace oxr::fuzz {

namespace framing {

using namespace oxr::rec;

inline RecordForm anyForm(Choices& choices) {
  RecordForm form;
  form.framing = static_cast<Framing>(choices.upTo(static_cast<std::size_t>(Framing::lines)));
  if (choices.coin()) form.countsHeader = choices.coin();
  form.maxSize = static_cast<std::uint32_t>(1 + choices.upTo(40));
  if (choices.coin()) form.nextLine = 0x85;
  return form;
}

struct Read {
  std::vector<std::string> records;      // without padding
  std::vector<std::uint64_t> positions;  // where a reader may begin, and the end
  std::string end;                       // what was wrong, if anything
};

// `input` is all that there is; the reader sees it in stretches.
inline Read readAll(const RecordForm& form, std::string_view input, std::size_t more) {
  Read read;
  RecordReader reader(form);
  Stretches source(input, more);
  try {
    reader.open(source.slide(0, 1), 0, &source);
    while (!reader.atEnd()) {
      if (reader.isAtStart()) read.positions.push_back(reader.position());
      const RecordBytes record = reader.next();
      require(record.padding <= record.size, "more blanks than bytes");
      const std::string bytes(reinterpret_cast<const char*>(record.data), record.size);
      for (std::uint32_t at = 0; at < record.size - record.padding; ++at)
        requireEqual(input.at(reader.offsetInInput(at)), bytes[at], "the place of a byte");
      requireEqual(bytes.find_first_not_of(' ', record.size - record.padding), std::string::npos, "padding");
      read.records.push_back(bytes.substr(0, record.size - record.padding));
      reader.finish(record.size);
    }
    requireEqual(reader.position(), input.size(), "bytes of all records");
  } catch (const FrameError& error) {
    read.end = error.what();
  }
  require(reader.position() <= input.size(), "more bytes than there are");
  return read;
}

inline std::string anyRecord(Choices& choices, const RecordForm& form) {
  std::size_t size = choices.upTo(2 * form.maxSize);
  if (form.framing == Framing::fixed) size = form.maxSize;
  const auto bytes = choices.bytes(size);
  std::string record(bytes.begin(), bytes.end());
  if (form.framing == Framing::fixed) record.resize(size);
  if (form.framing == Framing::spanned && record.empty()) record = "x";
  if (form.framing == Framing::lines)
    std::erase_if(record, [&](unsigned char c) { return c < ' ' || c == form.nextLine; });
  return record;
}

}  // namespace framing

inline void checkFraming(Choices& choices) {
  using namespace framing;
  const RecordForm form = anyForm(choices);
  RecordFramer framer(
      form, static_cast<std::uint32_t>(std::max<std::size_t>(RecordFramer::kSmallestBlock, choices.upTo(200))));
  const std::size_t more = choices.upTo(7);
  std::vector<std::string> records;
  std::string file;
  while (!choices.isEmpty()) {
    const std::string record = anyRecord(choices, form);
    try {
      framer.add({reinterpret_cast<const unsigned char*>(record.data()), record.size()}, file);
      records.push_back(record);
    } catch (const FrameError&) {
      require(form.framing == Framing::bdw, "a record was refused that fits");
    }
  }
  framer.finish(file);
  const Read read = readAll(form, file, more);
  requireEqual(read.end, std::string(), "what is wrong with the framer's file");
  require(read.records == records, "the records differ");
  if (read.positions.empty()) return;
  const Read rest =
      readAll(form, std::string_view(file).substr(read.positions[records.size() % read.positions.size()]), more);
  require(rest.end.empty() && rest.records.size() <= records.size() &&
              std::equal(rest.records.rbegin(), rest.records.rend(), records.rbegin()),
          "the rest of the records differs");
}

inline void checkAnyFraming(Choices& choices) {
  using namespace framing;
  const RecordForm form = anyForm(choices);
  const std::size_t more = choices.upTo(7);
  std::string input;
  while (!choices.isEmpty()) {
    // Small numbers are often lengths.
    const auto byte = choices.any<std::uint8_t>();
    input += static_cast<char>(byte < 128 ? byte % 8 : byte < 192 ? 0 : byte);
  }
  const Read inStretches = readAll(form, input, more);
  const Read atOnce = readAll(form, input, input.size());
  require(inStretches.records == atOnce.records, "records in stretches and at once");
  requireEqual(inStretches.end, atOnce.end, "errors in stretches and at once");
  const InputStart start{{reinterpret_cast<const unsigned char*>(input.data()), input.size()}, input.size()};
  RecordForm layout = form;
  layout.countsHeader.reset();
  for (const Reading& reading : readingsOf(start, layout)) {
    RecordForm found = layout;
    found.framing = reading.framing;
    found.countsHeader = reading.countsHeader;
    const Read all = readAll(found, input, more);
    requireEqual(all.end, std::string(),
                 "what is wrong with an input of the form that was found: " + reading.options());
    requireEqual(all.records.size() - (!input.empty() && input.back() != form.lineFeed &&
                                       input.back() != form.nextLine && reading.framing == Framing::lines),
                 reading.records, "records of the form that was found");
  }
}

}  // namespace oxr::fuzz
