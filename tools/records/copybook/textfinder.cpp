#include "records/copybook/textfinder.hpp"

#include <system_error>

#include "records/copybook/ascii.hpp"
#include "records/smallfile.hpp"

namespace oxr::rec::copybook {

namespace {

constexpr const char* kExtensions[] = {"", ".cpy", ".CPY", ".cob", ".COB", ".cbl", ".CBL"};

[[noreturn]] void raiseUnreadable(const std::filesystem::path& path, const std::string& reason) {
  const std::string message = "the copybook can't be read: " + reason;
  throw CopybookError(path.string() + ": " + message, path.string(), 0, 0, message);
}

}  // namespace

std::optional<std::string> readTextFile(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) return std::nullopt;
  try {
    return readSmallFile(path, kMaxCopybookBytes);
  } catch (const SmallFileError& fault) {
    raiseUnreadable(path, fault.what());
  }
}

std::optional<FoundText> TextFinder::find(const std::string& includingFile, const std::string& name,
                                          const std::string& library) const {
  std::vector<std::filesystem::path> folders{std::filesystem::path(includingFile).parent_path()};
  folders.insert(folders.end(), options_.includeFolders.begin(), options_.includeFolders.end());
  for (const auto& folder : folders) {
    for (const std::string& inner : {library, lowerCase(library)})
      if (!library.empty())
        if (auto found = findIn(folder / inner, name)) return found;
    if (auto found = findIn(folder, name)) return found;
  }
  return std::nullopt;
}

std::optional<FoundText> TextFinder::findIn(const std::filesystem::path& folder, const std::string& name) const {
  for (const std::string& spelling : {name, upperCase(name), lowerCase(name)}) {
    for (const char* const extension : kExtensions) {
      const auto path = folder / (spelling + extension);
      if (auto text = read(path)) return FoundText{path.string(), std::move(*text)};
    }
  }
  return std::nullopt;
}

std::optional<std::string> TextFinder::read(const std::filesystem::path& path) const {
  if (options_.readText) return options_.readText(path);
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  return readTextFile(path);
}

}  // namespace oxr::rec::copybook
