// SPDX-License-Identifier: MIT
//
// The document's header, and the list of the FAT's sectors that begins in it.
#ifndef QPSREADER_OLEFIO_HEADER_H
#define QPSREADER_OLEFIO_HEADER_H

#include <array>
#include <cstdint>
#include <optional>

#include "olefio/compound_format.h"
#include "olefio/extents.h"
#include "olefio/host_file.h"

namespace qps::ole {

struct Header {
  std::uint16_t version = 0;
  std::uint16_t sectorShift = 0;
  std::uint32_t firstDirectory = 0;
  std::uint32_t miniStreamCutoff = 0;  // streams of fewer bytes lie in the mini stream
  std::uint32_t firstMiniFat = 0;
  std::uint32_t firstDifat = 0;
  std::array<std::uint32_t, kHeaderDifatEntries> fat{};  // the FAT's first sectors
};

// None when the file is too short for a header or this is not one. Its counts of sectors are not
// taken: chains say where they end, and the file's size says how long they can be.
std::optional<Header> readHeader(HostFile& file);

// Appends to `fat` where the FAT's sectors lie, no more of them than `sectorCount` sectors need:
// those that the header lists, then those of the DIFAT chain, up to the first number that names no
// sector. False when the pool has no block.
[[nodiscard]] bool listFat(HostFile& file, const Header& header, std::uint32_t sectorCount,
                           Extents& fat);

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_HEADER_H
