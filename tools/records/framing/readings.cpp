#include <algorithm>

#include "records/counted.hpp"
#include "records/framing/detect.hpp"
#include "records/framing/errors.hpp"
#include "records/framing/recordheader.hpp"

// What is said of a reading.

namespace oxr::rec {

namespace {

struct Words {
  const char* option;
  const char* text;
};

// In the order of Framing.
constexpr Words kWords[] = {
    {"fixed", "records without headers"},
    {"rdw", "records with 4-byte headers, length most significant byte first"},
    {"rdw-le", "records with 4-byte headers, length least significant byte first"},
    {"bdw", "blocks of records, both with 4-byte headers"},
    {"spanned", "blocks of records that go on from one block to the next"},
    {"length2", "records with a length of 2 bytes in front, most significant byte first"},
    {"length2-le", "records with a length of 2 bytes in front, least significant byte first"},
    {"length4", "records with a length of 4 bytes in front, most significant byte first"},
    {"length4-le", "records with a length of 4 bytes in front, least significant byte first"},
    {"lines", "lines of text"},
};
static_assert(std::size(kWords) == static_cast<std::size_t>(Framing::automatic));

const Words& wordsOf(const Reading& reading) {
  return kWords[static_cast<std::size_t>(reading.framing)];
}

std::string shown(const Reading& reading) {
  return reading.description() + " (" + reading.options() + ')';
}

bool isSame(const Reading& reading, const RecordForm& form) {
  const bool usual = headerShape(form.framing).countsHeader;
  return reading.framing == form.framing && reading.countsHeader.value_or(usual) == form.countsHeader.value_or(usual);
}

// Of lines that their code page hides; empty if there are none.
std::string otherPageText(const InputStart& start, const RecordForm& layout) {
  const auto isEbcdic = linesOfOtherPage(start, layout);
  if (!isEbcdic) return {};
  return *isEbcdic ? "it is lines of text in an EBCDIC code page: --ccsid 37, or another one"
                   : "it is lines of text in no EBCDIC code page: --ccsid 819, 1208 or another one";
}

// Whether a line end stands behind each record of full size.
bool haveLineEnds(const InputStart& start, const RecordForm& layout) {
  const std::size_t pitch = std::size_t{layout.maxSize} + 1;
  if (start.bytes.size() < pitch || start.size.value_or(0) % pitch != 0) return false;
  for (std::size_t at = layout.maxSize; at < start.bytes.size(); at += pitch)
    if (start.bytes[at] != layout.lineFeed && start.bytes[at] != layout.nextLine) return false;
  return true;
}

// What may be wrong where there is no reading.
std::string clueFor(const InputStart& start, const RecordForm& layout) {
  if (!start.size || *start.size < layout.maxSize || layout.maxSize == 0) return {};
  if (haveLineEnds(start, layout))
    return "; a line end stands behind each record: --records lines reads them if their values hold none";
  return " but " + std::to_string(*start.size % layout.maxSize) +
         " more: --skip-header or --skip-trailer leaves out what is no record";
}

// Why there is no reading.
std::string whyNone(const InputStart& start, const RecordForm& layout) {
  const std::string text = "there are neither headers nor lines of text, ";
  if (start.counted) return text + "nor do records lie as their counts say: " + start.counted->fault;
  return text + "and " + counted(start.size.value_or(0), "byte") + " are no multiple of the " +
         std::to_string(layout.maxSize) + " of a record" + clueFor(start, layout);
}

// Few small records are a multiple of anything.
constexpr double kWorthTelling = 4;
constexpr std::uint32_t kLargeEnough = 16;

}  // namespace

std::string Reading::description() const {
  std::string text = wordsOf(*this).text;
  if (countsHeader)
    text += *countsHeader        ? ", which counts itself"
            : isBlocked(framing) ? ", lengths do not count the headers"
                                 : ", which does not count the header";
  if (framing == Framing::fixed && isVariable) {
    text += ", as long as their counts say";
    if (records == 0) return text;
  }
  text += ", " + std::to_string(records) + " of them fit the ";
  return text + (isWhole ? "input" : "first " + std::to_string(kDetectBytes >> 10) + " KiB") + " exactly";
}

std::string Reading::options() const {
  std::string text = std::string("--records ") + wordsOf(*this).option;
  if (countsHeader) text += std::string(" --length-includes-header ") + (*countsHeader ? "yes" : "no");
  return text;
}

Reading onlyReading(const InputStart& start, const RecordForm& layout) {
  const std::vector<Reading> readings = readingsOf(start, layout);
  if (const std::string other = otherPageText(start, layout); readings.empty() && !other.empty())
    throw ToolError("how the records lie cannot be told: " + other);
  if (readings.empty()) throw ToolError("how the records lie cannot be told: " + whyNone(start, layout));
  if (readings.size() == 1) return readings.front();
  std::string all;
  for (const Reading& reading : readings)
    all += (all.empty() ? "" : "; or ") + shown(reading);
  throw ToolError("the records may lie in " + std::to_string(readings.size()) + " ways, say which: " + all);
}

std::string hintFor(const RecordForm& form, const InputStart& start) {
  RecordForm any = form;
  any.countsHeader.reset();
  const std::vector<Reading> readings = readingsOf(start, any);
  if (form.framing == Framing::fixed && form.isVariable && form.maxSize >= kLargeEnough && start.size &&
      *start.size % form.maxSize == 0 && !readings.empty() && readings.front().framing == Framing::fixed)
    return "; --odo fixed fits: the input is " + counted(*start.size / form.maxSize, "time") + " the largest size, " +
           counted(form.maxSize, "byte");
  if (std::any_of(readings.begin(), readings.end(), [&](const Reading& r) { return isSame(r, form); })) return {};
  if (const std::string other = otherPageText(start, any); readings.empty() && !other.empty()) return "; " + other;
  if (readings.size() != 1 || readings[0].evidence <= kWorthTelling) return {};
  return "; " + readings[0].options() + " fits: " + readings[0].description();
}

}  // namespace oxr::rec
