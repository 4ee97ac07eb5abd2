#include "records/options/choice.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

void addOutputOption(CLI::App& command, std::string& path) {
  command.add_option("-o,--output", path, "where the result goes, - (as if not given) for standard output")
      ->type_name("FILE")
      ->group("Output");
}

}  // namespace oxr::rec
