// SPDX-License-Identifier: MIT
//
// WebAssembly loads no libraries: the compound-document library is linked in.
#include "host/library_loader.hpp"

extern "C" void GetOLEInterface(OLEInterface* table);

namespace qps {

std::filesystem::path platform::readerFile() {
  return {};
}

GetOLEInterfaceFunction platform::linkedOleInterface() {
  return &GetOLEInterface;
}

void* platform::openLibrary(const std::filesystem::path&) {
  return nullptr;
}

void* platform::findSymbol(void*, const char*) {
  return nullptr;
}

void platform::closeLibrary(void*) {}

}  // namespace qps
