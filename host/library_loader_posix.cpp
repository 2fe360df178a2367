// SPDX-License-Identifier: MIT
//
// The loader over dlopen, which does not search when the name is an absolute path.
#include <dlfcn.h>
#include <link.h>

#include <string_view>
#include <system_error>

#include <qpsreader/qps_reader.h>
#include "host/library_loader.hpp"
#include "host/library_platform.hpp"

namespace qps {

namespace fs = std::filesystem;

fs::path platform::programFile() {
  std::error_code failed;
  return fs::read_symlink("/proc/self/exe", failed);
}

// The link map knows the shared library by the path it was loaded from and has no name for the
// program, whereas the name that dladdr has for the program is whatever its caller called it. A
// program that was linked statically as a whole has no link map.
fs::path platform::readerFile() {
  Dl_info info{};
  void* map = nullptr;
  void* const operation = reinterpret_cast<void*>(&qpsGetSSReaderInterface);
  if (::dladdr1(operation, &info, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr)
    return programFile();
  const std::string_view name = static_cast<const link_map*>(map)->l_name;
  return name.empty() ? programFile() : fs::path(name);
}

void* platform::openLibrary(const fs::path& file) {
  return ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* librarySymbol(void* library, const char* symbol) {
  return ::dlsym(library, symbol);
}

void unloadLibrary(void* library) {
  ::dlclose(library);
}

}  // namespace qps
