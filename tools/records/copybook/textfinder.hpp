#pragma once

#include <optional>
#include <string>

#include "records/copybook/copybook.hpp"

namespace oxr::rec::copybook {

struct FoundText {
  std::string path;
  std::string text;
};

// Finds what COPY names: in the folder of the text that copies it, then in the folders of CopybookOptions; in each
// under the name as it is, in capitals and in small letters, with each of the usual extensions.
class TextFinder {
 public:
  explicit TextFinder(const CopybookOptions& options) : options_(options) {}

  // `library` is the folder within those folders that OF or IN names; its own name need not be a folder's.
  std::optional<FoundText> find(const std::string& includingFile, const std::string& name,
                                const std::string& library) const;

 private:
  std::optional<FoundText> findIn(const std::filesystem::path& folder, const std::string& name) const;
  std::optional<std::string> read(const std::filesystem::path& path) const;

  const CopybookOptions& options_;
};

// The whole file, or nothing if there is no file of that name. Throws CopybookError, without a place, for a folder or a
// file that can't be read.
std::optional<std::string> readTextFile(const std::filesystem::path& path);

}  // namespace oxr::rec::copybook
