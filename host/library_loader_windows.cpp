// SPDX-License-Identifier: MIT
//
// The loader over LoadLibraryEx. With an absolute path and these flags the system looks for what
// the library itself needs beside the library and in the system folder only.
#include <windows.h>

#include <array>
#include <string_view>

#include <qpsreader/qps_reader.h>
#include "host/library_loader.hpp"

// Weak: null unless the link of the program brings the library along. The compiler leaves the mark
// out where only the address is taken.
extern "C" [[gnu::weak]] void GetOLEInterface(OLEInterface* table);
__asm__(".weak GetOLEInterface");

namespace qps {
namespace {

namespace fs = std::filesystem;

// The file of a loaded module. Empty when the path is longer than the system's limit for paths.
fs::path moduleFile(HMODULE module) {
  std::array<wchar_t, 32768> path{};
  const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
  if (length == 0 || length == path.size()) return {};
  return fs::path(std::wstring_view(path.data(), length));
}

}  // namespace

fs::path platform::readerFile() {
  HMODULE module = nullptr;
  const auto operation = reinterpret_cast<const wchar_t*>(&qpsGetSSReaderInterface);
  if (GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          operation, &module) == 0)
    return {};
  return moduleFile(module);
}

void* platform::openLibrary(const fs::path& file) {
  const fs::path preferred = fs::path(file).make_preferred();
  return reinterpret_cast<void*>(LoadLibraryExW(
      preferred.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
}

GetOLEInterfaceFunction platform::linkedOleInterface() {
  return &GetOLEInterface;
}

void* platform::findSymbol(void* library, const char* symbol) {
  return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), symbol));
}

void platform::closeLibrary(void* library) {
  FreeLibrary(reinterpret_cast<HMODULE>(library));
}

}  // namespace qps
