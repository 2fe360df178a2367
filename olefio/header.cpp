// SPDX-License-Identifier: MIT
//
// Reads the header, and the DIFAT: the list of the sectors that the FAT is made of.
#include "olefio/header.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "olefio/bytes.h"

namespace qps::ole {

namespace {

using HeaderBytes = std::span<const std::byte, kHeaderBytes>;

bool hasSignature(HeaderBytes bytes) {
  return std::equal(kSignature.begin(), kSignature.end(), bytes.begin(),
                    [](std::uint8_t expected, std::byte found) {
                      return expected == std::to_integer<std::uint8_t>(found);
                    });
}

bool hasKnownGeometry(HeaderBytes bytes) {
  const auto version = field<std::uint16_t, kHeaderVersion>(bytes);
  const auto shift = field<std::uint16_t, kHeaderSectorShift>(bytes);
  const bool shiftFits = (version == kVersion3 && shift == kSectorShift3) ||
                         (version == kVersion4 && shift == kSectorShift4);
  return shiftFits && field<std::uint16_t, kHeaderMiniSectorShift>(bytes) == kMiniSectorShift &&
         field<std::uint16_t, kHeaderByteOrder>(bytes) == kLittleEndianMark;
}

// The entries of the DIFAT one after the other. A sector of the chain holds as many as fit, and in
// place of the last one the number of the next sector.
class DifatEntries {
 public:
  DifatEntries(HostFile& file, const Header& header)
      : file_(file),
        header_(header),
        perSector_((std::size_t{1} << header.sectorShift) / kTableEntryBytes - 1),
        inSector_(perSector_),
        nextSector_(header.firstDifat) {}

  // The next entry; beyond the last one, a number that names no sector.
  std::uint32_t take() {
    if (inHeader_ < header_.fat.size()) return header_.fat[inHeader_++];
    if (inSector_ == perSector_) loadSector();
    return element<std::uint32_t>(sector_, inSector_++);
  }

 private:
  // What the file does not hold, all of it after the chain's end, reads as free entries.
  void loadSector() {
    const auto target = std::span(sector_).first(std::size_t{1} << header_.sectorShift);
    const std::uint64_t offset = (std::uint64_t{nextSector_} + 1) << header_.sectorShift;
    std::ranges::fill(target.subspan(file_.readAt(offset, target)), std::byte{0xFF});
    nextSector_ = element<std::uint32_t>(sector_, perSector_);
    inSector_ = 0;
  }

  HostFile& file_;
  const Header& header_;
  std::array<std::byte, std::size_t{1} << kSectorShift4> sector_;
  std::size_t perSector_;
  std::size_t inSector_;
  std::size_t inHeader_ = 0;
  std::uint32_t nextSector_;
};

}  // namespace

std::optional<Header> readHeader(HostFile& file) {
  std::array<std::byte, kHeaderBytes> block;
  if (file.readAt(0, block) != block.size()) return std::nullopt;
  const HeaderBytes bytes = block;
  if (!hasSignature(bytes) || !hasKnownGeometry(bytes)) return std::nullopt;

  Header header;
  header.version = field<std::uint16_t, kHeaderVersion>(bytes);
  header.sectorShift = field<std::uint16_t, kHeaderSectorShift>(bytes);
  header.firstDirectory = field<std::uint32_t, kHeaderFirstDirectory>(bytes);
  header.miniStreamCutoff = field<std::uint32_t, kHeaderMiniStreamCutoff>(bytes);
  header.firstMiniFat = field<std::uint32_t, kHeaderFirstMiniFat>(bytes);
  header.firstDifat = field<std::uint32_t, kHeaderFirstDifat>(bytes);
  for (std::size_t i = 0; i < header.fat.size(); ++i) {
    header.fat[i] = element<std::uint32_t>(bytes.subspan<kHeaderDifat>(), i);
  }
  return header;
}

bool listFat(HostFile& file, const Header& header, std::uint32_t sectorCount, Extents& fat) {
  const std::uint64_t sectorBytes = std::uint64_t{1} << header.sectorShift;
  DifatEntries entries(file, header);
  while (fat.size() < std::uint64_t{sectorCount} * kTableEntryBytes) {
    const std::uint32_t sector = entries.take();
    if (sector >= sectorCount) break;
    if (!fat.append(
            {.fileOffset = (std::uint64_t{sector} + 1) * sectorBytes, .bytes = sectorBytes})) {
      return false;
    }
  }
  return true;
}

}  // namespace qps::ole
