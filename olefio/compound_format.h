// SPDX-License-Identifier: MIT
//
// The numbers of the compound-document format: sizes, special sector numbers, and the offsets of
// the fields that are read. README.md shows them in a real document. No code here.
#ifndef QPSREADER_OLEFIO_COMPOUND_FORMAT_H
#define QPSREADER_OLEFIO_COMPOUND_FORMAT_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace qps::ole {

inline constexpr std::array<std::uint8_t, 8> kSignature = {0xD0, 0xCF, 0x11, 0xE0,
                                                           0xA1, 0xB1, 0x1A, 0xE1};
inline constexpr std::uint16_t kLittleEndianMark = 0xFFFE;

// A sector's size is 1 << shift. The version fixes the shift; mini sectors are 64 bytes in both.
inline constexpr std::uint16_t kVersion3 = 3;
inline constexpr std::uint16_t kVersion4 = 4;
inline constexpr std::uint16_t kSectorShift3 = 9;
inline constexpr std::uint16_t kSectorShift4 = 12;
inline constexpr std::uint16_t kMiniSectorShift = 6;

// Sector numbers from here on name no sector: 0xFFFFFFFC and 0xFFFFFFFD mark the sectors of the FAT
// and of the DIFAT, 0xFFFFFFFE ends a chain, 0xFFFFFFFF is free.
inline constexpr std::uint32_t kFirstSpecialSector = 0xFFFFFFFB;
inline constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;

// The header: the file's first sector, of which 512 bytes are used in both versions.
inline constexpr std::size_t kHeaderBytes = 512;
inline constexpr std::size_t kHeaderVersion = 26;           // 16 bits, major version
inline constexpr std::size_t kHeaderByteOrder = 28;         // 16 bits
inline constexpr std::size_t kHeaderSectorShift = 30;       // 16 bits
inline constexpr std::size_t kHeaderMiniSectorShift = 32;   // 16 bits
inline constexpr std::size_t kHeaderFirstDirectory = 48;    // sector number
inline constexpr std::size_t kHeaderMiniStreamCutoff = 56;  // 32 bits, bytes
inline constexpr std::size_t kHeaderFirstMiniFat = 60;      // sector number
inline constexpr std::size_t kHeaderFirstDifat = 68;        // sector number
inline constexpr std::size_t kHeaderDifat = 76;             // the FAT's first 109 sectors
inline constexpr std::size_t kHeaderDifatEntries = 109;

// An entry of the FAT, mini FAT or DIFAT: a sector number.
inline constexpr std::size_t kTableEntryBytes = 4;

// A directory entry.
inline constexpr std::size_t kEntryBytes = 128;
inline constexpr std::size_t kEntryName = 0;         // UTF-16, zero-terminated
inline constexpr std::size_t kEntryNameBytes = 64;   // 16 bits: bytes used by it, with the zero
inline constexpr std::size_t kEntryType = 66;        // 8 bits
inline constexpr std::size_t kEntryLeft = 68;        // entry number of a smaller sibling
inline constexpr std::size_t kEntryRight = 72;       // entry number of a greater sibling
inline constexpr std::size_t kEntryChild = 76;       // entry number of the tree of children
inline constexpr std::size_t kEntryStart = 116;      // sector number
inline constexpr std::size_t kEntrySize = 120;       // 64 bits; in version 3 the low 32 count
inline constexpr std::size_t kMaxNameUnits = 31;     // without the zero
inline constexpr std::uint32_t kRootEntry = 0;       // the number of the root storage's entry
inline constexpr std::uint8_t kEntryTypeStream = 2;  // 0 is unused, 1 a storage
inline constexpr std::uint8_t kEntryTypeRoot = 5;

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_COMPOUND_FORMAT_H
