#include "records/options/choice.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

namespace {

// Two hexadecimal digits.
std::optional<unsigned char> byteIn(const std::string& text) {
  if (text.size() != 2 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return std::nullopt;
  return static_cast<unsigned char>(std::stoi(text, nullptr, 16));
}

}  // namespace

void addFillerOption(CLI::App& command, std::optional<unsigned char>& filler) {
  command
      .add_option_function<std::string>(
          "--filler", [&filler](const std::string& text) { filler = byteIn(text); },
          "the byte that stands where no field gives one, such as 40 or 00 [blanks in text, 00 elsewhere]")
      ->check([](const std::string& text) { return byteIn(text) ? "" : "two hexadecimal digits are wanted"; })
      ->type_name("HEX")
      ->group("Fields");
}

}  // namespace oxr::rec
