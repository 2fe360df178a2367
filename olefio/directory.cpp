// SPDX-License-Identifier: MIT
//
// Reading directory entries and searching the root's children.
#include "olefio/directory.h"

#include <algorithm>
#include <array>

#include "olefio/bytes.h"
#include "olefio/compound_format.h"
#include "olefio/number_set.h"
#include "olefio/pool.h"

namespace qps::ole {

bool Directory::open(SectorSpace& sectors, const Header& header) {
  // Writers of version 3 may leave anything in the upper half of a size.
  sizeMask_ = header.version == kVersion3 ? UINT32_MAX : UINT64_MAX;
  if (!sectors.follow(header.firstDirectory, UINT64_MAX, entries_)) return false;
  const std::optional<DirectoryEntry> root = read(kRootEntry);
  if (!root || root->type != kEntryTypeRoot) return false;
  root_ = *root;
  return true;
}

std::optional<DirectoryEntry> Directory::read(std::uint32_t entry) {
  std::array<std::byte, kEntryBytes> block;
  if (entries_.readRun(file_, std::uint64_t{entry} * kEntryBytes, block) != block.size()) {
    return std::nullopt;
  }
  const std::span<const std::byte, kEntryBytes> bytes = block;
  return DirectoryEntry{.name = EntryName(bytes),
                        .type = field<std::uint8_t, kEntryType>(bytes),
                        .left = field<std::uint32_t, kEntryLeft>(bytes),
                        .right = field<std::uint32_t, kEntryRight>(bytes),
                        .child = field<std::uint32_t, kEntryChild>(bytes),
                        .start = field<std::uint32_t, kEntryStart>(bytes),
                        .bytes = field<std::uint64_t, kEntrySize>(bytes) & sizeMask_};
}

std::optional<DirectoryEntry> Directory::find(const EntryName& name) {
  NumberSet met(pool_);
  PoolArray<std::uint32_t> waiting(pool_);  // the entry to look at next is the last one
  const std::uint64_t count = entries_.size() / kEntryBytes;
  if (!met.reserve(static_cast<std::uint32_t>(std::min<std::uint64_t>(count, UINT32_MAX)))) {
    return std::nullopt;
  }
  const auto visitLater = [&](std::uint32_t entry) {
    return !met.insert(entry) || waiting.push(entry);
  };

  if (name.isEmpty() || !visitLater(root_.child)) return std::nullopt;
  while (!waiting.isEmpty()) {
    const std::optional<DirectoryEntry> entry = read(waiting.pop());
    if (!entry) continue;
    if (entry->name == name && entry->type == kEntryTypeStream) return entry;
    const bool isBefore = name < entry->name;
    if (!visitLater(isBefore ? entry->right : entry->left) ||
        !visitLater(isBefore ? entry->left : entry->right)) {
      return std::nullopt;
    }
  }
  return std::nullopt;
}

}  // namespace qps::ole
