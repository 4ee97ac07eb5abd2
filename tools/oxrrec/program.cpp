#include "oxrrec/program.hpp"

#include "oxrrec/options.hpp"

namespace oxr::rec {

namespace {

int give(const Notice& notice, const Console& console) {
  if (notice.isError) {
    console.messages << notice.text;
    return kFailed;
  }
  try {
    openOutput(kStandardStream, console, -1).write(notice.text);
    return kDone;
  } catch (const OutputError& error) {
    console.messages << "oxrrec: " << error.what() << '\n';
    return kFailed;
  }
}

}  // namespace

int run(std::span<const char* const> arguments, const Console& console) {
  const auto request = readOptions(arguments);
  if (const auto* const notice = std::get_if<Notice>(&request)) return give(*notice, console);
  return decode(std::get<DecodeOptions>(request), console);
}

}  // namespace oxr::rec
