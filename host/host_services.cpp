// SPDX-License-Identifier: MIT
//
// The services table: its slots find the object through the table's address.
#include "host/host_services.hpp"

#include <exception>
#include <utility>

#include "host/library_loader.hpp"

namespace qps {
namespace {

// By the code, not by the process's locale: the reader converts English names only.
char asciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
char asciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

template <char (*kConvert)(char)>
char* convertText(SSHostServices*, char* text) {
  for (char* c = text; *c != '\0'; ++c)
    *c = kConvert(*c);
  return text;
}

}  // namespace

HostServices::HostServices(HeapPool& heapPool, std::filesystem::path libraryFolder)
    : SSHostServices{}, heapPool_(heapPool), libraryFolder_(std::move(libraryFolder)) {
  loadLibrary = [](SSHostServices* services, const char* name, void** handle) -> std::int32_t {
    *handle = static_cast<HostServices*>(services)->load(name);
    return *handle != nullptr ? 1 : 0;
  };
  getSymbol = [](SSHostServices*, void* library, const char* symbol) {
    return librarySymbol(library, symbol);
  };
  freeLibrary = [](SSHostServices* services, void* library) {
    static_cast<HostServices*>(services)->unload(library);
  };
  pool = heapPool.table();
  toLowerText = convertText<asciiLower>;
  toUpperText = convertText<asciiUpper>;
}

HostServices::~HostServices() {
  if (library_ != nullptr) unloadLibrary(library_);
}

// The callers of a slot know no exceptions: no memory for the search is a library not found.
void* HostServices::load(const char* name) try {
  if (library_ != nullptr && libraryName_ == name) return library_;
  void* const library = loadLibraryByName(name, libraryFolder_);
  if (library != nullptr && library_ == nullptr) {
    libraryName_ = name;
    library_ = library;
  }
  return library;
} catch (const std::exception&) {
  return nullptr;
}

void HostServices::unload(void* library) {
  if (library != library_) unloadLibrary(library);
}

}  // namespace qps
