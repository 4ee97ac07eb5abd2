#include "records/copybook/copybook.hpp"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include "records/copybook/entries.hpp"
#include "records/copybook/layoutbuilder.hpp"

namespace oxr::rec {

Layout parseCopybook(std::string_view text, std::string_view fileName, const CopybookOptions& options) {
  const CopybookSource source(text, fileName);
  return buildLayout(source, parseEntries(source, options.format), options.record);
}

Layout readCopybook(const std::filesystem::path& path, const CopybookOptions& options) {
  const std::string name = path.string();
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file.is_open() || file.bad())
    CopybookSource("", name).raise("the copybook can't be read: " + std::generic_category().message(errno));
  return parseCopybook(text, name, options);
}

}  // namespace oxr::rec
