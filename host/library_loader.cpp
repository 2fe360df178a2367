// SPDX-License-Identifier: MIT
#include "host/library_loader.hpp"

#include <string_view>

#include "host/library_platform.hpp"

namespace qps {
namespace {

namespace fs = std::filesystem;

// Separators and the drive mark of every platform are refused on every platform.
bool isBareName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of("/\\:") == std::string_view::npos;
}

}  // namespace

std::vector<fs::path> librarySearchFolders() {
  std::vector<fs::path> folders;
  const auto add = [&folders](const fs::path& folder) {
    if (folder.is_absolute()) folders.push_back(folder);
  };
  add(platform::readerFile().parent_path());
  const fs::path programFolder = platform::programFile().parent_path();
  if (programFolder.filename() == "bin") add(programFolder.parent_path() / "lib");
  add(QPS_INSTALLED_LIBRARY_FOLDER);
  return folders;
}

void* loadLibraryByName(const char* name) {
  if (!isBareName(name)) return nullptr;
  for (const fs::path& folder : librarySearchFolders()) {
    if (void* const library = platform::openLibrary(folder / name)) return library;
  }
  return nullptr;
}

}  // namespace qps
