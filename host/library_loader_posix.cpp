// SPDX-License-Identifier: MIT
//
// The loader over dlopen, which does not search when the name is an absolute path.
#include <dlfcn.h>
#include <link.h>

#include <string_view>
#include <system_error>

#include "host/library_loader.hpp"
#include "reader/qps_reader.h"

namespace qps {
namespace {

namespace fs = std::filesystem;

fs::path programFile() {
  std::error_code failed;
  return fs::read_symlink("/proc/self/exe", failed);
}

// The file that holds the reader's operations: the shared library, or the program itself. The link
// map knows it by the path it was loaded from and has no name for the program, whereas the name
// that dladdr has for the program is whatever its caller called it.
fs::path readerFile() {
  Dl_info info{};
  void* map = nullptr;
  void* const operation = reinterpret_cast<void*>(&qpsGetSSReaderInterface);
  if (::dladdr1(operation, &info, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr) return {};
  const std::string_view name = static_cast<const link_map*>(map)->l_name;
  return name.empty() ? programFile() : fs::path(name);
}

}  // namespace

std::vector<fs::path> librarySearchFolders() {
  std::vector<fs::path> folders;
  const auto add = [&folders](const fs::path& folder) {
    if (folder.is_absolute()) folders.push_back(folder);
  };
  add(readerFile().parent_path());
  const fs::path programFolder = programFile().parent_path();
  if (programFolder.filename() == "bin") add(programFolder.parent_path() / "lib");
  add(QPS_INSTALLED_LIBRARY_FOLDER);
  return folders;
}

void* loadLibraryByName(const char* name) {
  const std::string_view bare = name;
  if (bare.empty() || bare == "." || bare == ".." || bare.find_first_of("/\\") != bare.npos)
    return nullptr;
  for (const fs::path& folder : librarySearchFolders()) {
    void* const library = ::dlopen((folder / bare).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library != nullptr) return library;
  }
  return nullptr;
}

void* librarySymbol(void* library, const char* symbol) {
  return ::dlsym(library, symbol);
}

void unloadLibrary(void* library) {
  ::dlclose(library);
}

}  // namespace qps
