// SPDX-License-Identifier: MIT
//
// The loader over dlopen, which does not search when the name is an absolute path.
#include <dlfcn.h>
#include <link.h>

#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include <qpsreader/qps_reader.h>
#include "host/library_loader.hpp"

// Weak: null unless the link of the program brings the library along. Hidden: a library that
// happens to be loaded and has this name is not meant.
extern "C" [[gnu::weak, gnu::visibility("hidden")]] void GetOLEInterface(OLEInterface* table);

namespace qps {

namespace fs = std::filesystem;

namespace {

// The file that is mapped where this address is, as the system knows it: an absolute path.
fs::path mappedFile(std::uintptr_t address) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> maps(std::fopen("/proc/self/maps", "re"),
                                                             &std::fclose);
  std::array<char, 8192> line{};
  while (maps && std::fgets(line.data(), line.size(), maps.get()) != nullptr) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    if (std::sscanf(line.data(), "%" SCNxPTR "-%" SCNxPTR, &begin, &end) != 2) continue;
    if (address < begin || address >= end) continue;
    const char* const path = std::strchr(line.data(), '/');  // no column before has one
    return path == nullptr ? fs::path()
                           : fs::path(std::string_view(path, std::strcspn(path, "\n")));
  }
  return {};
}

}  // namespace

// The link map knows a shared library by the path that it was found by, which is relative where a
// folder of LD_LIBRARY_PATH is; it has no name for the program, and a program that was linked
// statically as a whole has no link map. (dladdr's own name for a program is what its caller says.)
fs::path platform::readerFile() {
  void* const operation = reinterpret_cast<void*>(&qpsGetSSReaderInterface);
  Dl_info info{};
  void* map = nullptr;
  if (::dladdr1(operation, &info, &map, RTLD_DL_LINKMAP) != 0 && map != nullptr) {
    fs::path file = static_cast<const link_map*>(map)->l_name;
    if (file.is_absolute()) return file;
  }
  return mappedFile(reinterpret_cast<std::uintptr_t>(operation));
}

GetOLEInterfaceFunction platform::linkedOleInterface() {
  return &GetOLEInterface;
}

void* platform::openLibrary(const fs::path& file) {
  return ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* platform::findSymbol(void* library, const char* symbol) {
  return ::dlsym(library, symbol);
}

void platform::closeLibrary(void* library) {
  ::dlclose(library);
}

}  // namespace qps
