#include "records/copybook/copybook.hpp"

#include <cerrno>
#include <system_error>

#include "records/copybook/builder.hpp"
#include "records/copybook/entries.hpp"
#include "records/copybook/expander.hpp"
#include "records/copybook/textfinder.hpp"

namespace oxr::rec {

struct Copybook::Content {
  Content(std::string_view text, std::string_view fileName, const CopybookOptions& copybookOptions)
      : source(std::string(text), std::string(fileName)),
        options(copybookOptions),
        entries(copybook::readEntries(source, copybook::expand(source, options))) {}

  copybook::Source source;
  CopybookOptions options;
  std::vector<copybook::Entry> entries;
};

Copybook::Copybook(std::shared_ptr<const Content> content) : content_(std::move(content)) {}

Copybook Copybook::read(std::string_view text, std::string_view fileName, const CopybookOptions& options) {
  return Copybook(std::make_shared<const Content>(text, fileName, options));
}

Copybook Copybook::readFile(const std::filesystem::path& path, const CopybookOptions& options) {
  const auto text = copybook::readTextFile(path);
  if (!text)
    copybook::Source({}, path.string()).raise("the copybook can't be read: " + std::generic_category().message(ENOENT));
  return read(*text, path.string(), options);
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
