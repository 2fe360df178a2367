// SPDX-License-Identifier: MIT
//
// Positioned reads through the host's stream, and the search for its end.
#include "olefio/host_file.h"

#include <algorithm>

#include "olefio/compound_format.h"

namespace qps::ole {

HostFile::HostFile(SSStream& stream) : stream_(stream.open(&stream) != 0 ? &stream : nullptr) {}

HostFile::~HostFile() {
  if (stream_ != nullptr) stream_->close(stream_);
}

std::size_t HostFile::readAt(std::uint64_t offset, std::span<std::byte> target) {
  if (offset > static_cast<std::uint64_t>(PTRDIFF_MAX)) return 0;
  if (offset != position_) {
    position_ = kUnknown;
    if (stream_->seek(stream_, static_cast<std::ptrdiff_t>(offset), SSSeekFromStart) == 0) return 0;
  }
  const std::size_t bytes =
      std::min(stream_->read(stream_, target.data(), target.size()), target.size());
  // After a failure the host may stand anywhere.
  position_ = bytes == target.size() ? offset + bytes : kUnknown;
  return bytes;
}

bool HostFile::hasSector(std::uint64_t sector, unsigned shift) {
  std::byte first;
  return readAt((sector + 1) << shift, {&first, 1}) == 1;
}

std::uint32_t HostFile::countSectors(unsigned shift) {
  std::uint64_t least = 0;
  std::uint64_t most = 0;
  for (std::uint64_t next = 1; next <= kFirstSpecialSector && hasSector(most, shift); next *= 2) {
    least = next;
    most = next * 2 - 1;
  }
  most = std::min<std::uint64_t>(most, kFirstSpecialSector);
  while (least < most) {
    const std::uint64_t middle = least + (most - least) / 2;
    if (hasSector(middle, shift)) {
      least = middle + 1;
    } else {
      most = middle;
    }
  }
  return static_cast<std::uint32_t>(least);
}

}  // namespace qps::ole
