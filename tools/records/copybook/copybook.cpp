#include "records/copybook/copybook.hpp"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include "records/copybook/builder.hpp"
#include "records/copybook/entries.hpp"

namespace oxr::rec {

// The source keeps views of the text and the name, and so must lie where they do.
struct Copybook::Content {
  Content(std::string_view copybookText, std::string_view name, const CopybookOptions& copybookOptions)
      : text(copybookText),
        fileName(name),
        source(text, fileName),
        options(copybookOptions),
        entries(copybook::readEntries(source, options.format)) {}

  std::string text;
  std::string fileName;
  copybook::Source source;
  CopybookOptions options;
  std::vector<copybook::Entry> entries;
};

Copybook::Copybook(std::shared_ptr<const Content> content) : content_(std::move(content)) {}

Copybook Copybook::read(std::string_view text, std::string_view fileName, const CopybookOptions& options) {
  return Copybook(std::make_shared<const Content>(text, fileName, options));
}

Copybook Copybook::readFile(const std::filesystem::path& path, const CopybookOptions& options) {
  const std::string name = path.string();
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file.is_open() || file.bad())
    copybook::Source("", name).raise("the copybook can't be read: " + std::generic_category().message(errno));
  return read(text, name, options);
}

std::vector<std::string> Copybook::recordNames() const {
  return copybook::recordNames(content_->entries);
}

Layout Copybook::layout(std::string_view recordName) const {
  return copybook::buildLayout(content_->source, content_->entries, recordName, content_->options);
}

Layout readCopybook(std::string_view text, std::string_view fileName, const CopybookOptions& options) {
  return Copybook::read(text, fileName, options).layout(options.record);
}

Layout readCopybookFile(const std::filesystem::path& path, const CopybookOptions& options) {
  return Copybook::readFile(path, options).layout(options.record);
}

}  // namespace oxr::rec
