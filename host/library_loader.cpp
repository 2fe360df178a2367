// SPDX-License-Identifier: MIT
#include "host/library_loader.hpp"

#include <string_view>

namespace qps {
namespace {

namespace fs = std::filesystem;

// The library that is linked in has its entry point for a handle; null when there is none.
void* linkedLibrary() {
  return reinterpret_cast<void*>(platform::linkedOleInterface());
}

// Separators and the drive mark of every platform are refused on every platform.
bool isBareName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of("/\\:") == std::string_view::npos;
}

void* loadFrom(const fs::path& folder, const char* name) {
  return folder.is_absolute() ? platform::openLibrary(folder / name) : nullptr;
}

}  // namespace

void* loadLibraryByName(const char* name, const fs::path& folder) {
  if (!isBareName(name)) return nullptr;
  if (void* const library = loadFrom(folder, name)) return library;
  if (name == std::string_view(OLE_LIBRARY_NAME) && linkedLibrary() != nullptr)
    return linkedLibrary();
  return loadFrom(platform::readerFile().parent_path(), name);
}

void* librarySymbol(void* library, const char* symbol) {
  if (library != linkedLibrary()) return platform::findSymbol(library, symbol);
  return symbol == std::string_view(OLE_ENTRY_POINT) ? library : nullptr;
}

void unloadLibrary(void* library) {
  if (library != linkedLibrary()) platform::closeLibrary(library);
}

}  // namespace qps
