// SPDX-License-Identifier: MIT
//
// The list of runs: built from the front, searched by position.
#include "olefio/extents.h"

#include <algorithm>

namespace qps::ole {

bool Extents::append(Run piece) {
  if (!runs_.isEmpty()) {
    const Start& last = runs_.back();
    if (last.fileOffset + (size_ - last.position) == piece.fileOffset) {
      size_ += piece.bytes;
      return true;
    }
  }
  if (!runs_.push({.position = size_, .fileOffset = piece.fileOffset})) return false;
  size_ += piece.bytes;
  return true;
}

void Extents::cutTo(std::uint64_t bytes) {
  size_ = std::min(size_, bytes);
}

std::uint64_t Extents::endOfRun(std::size_t run) const {
  return run + 1 < runs_.size() ? runs_[run + 1].position : size_;
}

std::size_t Extents::findRun(std::uint64_t position) const {
  for (std::size_t run = lastFound_; run < std::min(lastFound_ + 2, runs_.size()); ++run) {
    if (position >= runs_[run].position && position < endOfRun(run)) return run;
  }
  const auto runs = runs_.items();
  const auto after = std::upper_bound(
      runs.begin(), runs.end(), position,
      [](std::uint64_t wanted, const Start& start) { return wanted < start.position; });
  return static_cast<std::size_t>(after - runs.begin()) - 1;
}

Run Extents::at(std::uint64_t position) const {
  if (position >= size_) return {};
  lastFound_ = findRun(position);
  const Start& start = runs_[lastFound_];
  return {.fileOffset = start.fileOffset + (position - start.position),
          .bytes = endOfRun(lastFound_) - position};
}

std::size_t Extents::readRun(HostFile& file, std::uint64_t position,
                             std::span<std::byte> target) const {
  const Run run = at(position);
  const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(run.bytes, target.size()));
  return bytes == 0 ? 0 : file.readAt(run.fileOffset, target.first(bytes));
}

}  // namespace qps::ole
