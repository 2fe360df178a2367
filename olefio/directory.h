// SPDX-License-Identifier: MIT
//
// The directory: entries of 128 bytes, and the search for a stream in the root storage.
//
// The children of a storage form a binary tree ordered by name. The search lets the order decide
// where to look first, so that a well-formed directory is searched in a logarithmic number of
// steps; it does not rely on it, because writers exist that order names differently or make a list,
// and a damaged entry must not hide the streams behind it. What the order puts elsewhere is visited
// afterwards, each entry once: a name that is not there costs one reading of the siblings.
#ifndef QPSREADER_OLEFIO_DIRECTORY_H
#define QPSREADER_OLEFIO_DIRECTORY_H

#include <cstdint>
#include <optional>

#include "olefio/entry_name.h"
#include "olefio/extents.h"
#include "olefio/header.h"
#include "olefio/host_file.h"
#include "olefio/sector_space.h"

namespace qps::ole {

struct DirectoryEntry {
  EntryName name;
  std::uint8_t type = 0;
  std::uint32_t left = 0;
  std::uint32_t right = 0;
  std::uint32_t child = 0;
  std::uint32_t start = 0;  // first sector
  std::uint64_t bytes = 0;  // as claimed
};

class Directory {
 public:
  Directory(HostFile& file, SSMemoryPool& pool) : file_(file), pool_(pool), entries_(pool) {}

  // False when there is no root storage or the pool has no block.
  [[nodiscard]] bool open(SectorSpace& sectors, const Header& header);

  // The root storage's entry: its chain is the mini stream.
  const DirectoryEntry& root() const { return root_; }

  // The stream with this name in the root storage.
  std::optional<DirectoryEntry> find(const EntryName& name);

 private:
  std::optional<DirectoryEntry> read(std::uint32_t entry);

  HostFile& file_;
  SSMemoryPool& pool_;
  Extents entries_;
  DirectoryEntry root_;
  std::uint64_t sizeMask_ = 0;
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_DIRECTORY_H
