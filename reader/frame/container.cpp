// SPDX-License-Identifier: MIT
#include "reader/frame/container.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace qps {

namespace {

constexpr std::array<std::uint8_t, 4> kCompoundSignature{0xD0, 0xCF, 0x11, 0xE0};

// The streams that hold a notebook, in the order in which they are tried.
constexpr const char* kStreamNames[] = {"PerfectOffice_MAIN", "NOVELL_MAIN"};

}  // namespace

bool isCompoundDocument(const std::uint8_t* firstFourBytes) {
  return std::equal(kCompoundSignature.begin(), kCompoundSignature.end(), firstFourBytes);
}

SSStream* openContainer(Container& container, SSHostServices* services, SSStream* file) {
  file->close(file);
  if (services->loadLibrary(services, OLE_LIBRARY_NAME, &container.oleLibrary) == 0) {
    container.oleLibrary = nullptr;
    return nullptr;
  }
  const auto getOleInterface = reinterpret_cast<GetOLEInterfaceFunction>(
      services->getSymbol(services, container.oleLibrary, OLE_ENTRY_POINT));
  if (getOleInterface == nullptr) return nullptr;
  getOleInterface(&container.ole);

  const OLEInterface& ole = container.ole;
  void* document = ole.openContainer(file, &services->pool);
  if (document == nullptr) return nullptr;
  const auto* name = std::find_if(
      std::begin(kStreamNames), std::end(kStreamNames),
      [&](const char* streamName) { return ole.openStream(document, streamName) != 0; });
  if (name == std::end(kStreamNames)) {
    ole.closeContainer(document);
    return nullptr;
  }
  container.container = document;
  container.containerKind = static_cast<std::uint32_t>(name - std::begin(kStreamNames)) + 1;
  return ole.streamObject(document);
}

void closeContainer(Container& container, SSHostServices* services) {
  if (container.containerKind != 0) {
    container.ole.releaseStreamObject(container.container);
    container.ole.closeStream(container.container, kStreamNames[container.containerKind - 1]);
    container.ole.closeContainer(container.container);
    container.containerKind = 0;
  }
  if (container.oleLibrary != nullptr) {
    services->freeLibrary(services, container.oleLibrary);
    container.oleLibrary = nullptr;
  }
}

}  // namespace qps
