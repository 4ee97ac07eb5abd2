#include "records/copybook/copybook.hpp"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include "records/copybook/builder.hpp"
#include "records/copybook/entries.hpp"

namespace oxr::rec {

Layout readCopybook(std::string_view text, std::string_view fileName, const CopybookOptions& options) {
  const copybook::Source source(text, fileName);
  return copybook::buildLayout(source, copybook::readEntries(source, options.format), options.record);
}

Layout readCopybookFile(const std::filesystem::path& path, const CopybookOptions& options) {
  const std::string name = path.string();
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file.is_open() || file.bad())
    copybook::Source("", name).raise("the copybook can't be read: " + std::generic_category().message(errno));
  return readCopybook(text, name, options);
}

}  // namespace oxr::rec
