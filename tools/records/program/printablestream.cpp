#include "records/program/printablestream.hpp"

#include <sstream>

namespace oxr::rec {

std::string printableLines(std::string_view lines) {
  std::ostringstream shown;
  PrintableStream(shown) << lines << std::flush;
  return shown.str();
}

}  // namespace oxr::rec
