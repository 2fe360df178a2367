// SPDX-License-Identifier: MIT
//
// Opens a document in the order in which its parts lead to each other: header, FAT, directory; and
// a stream by its directory entry and its chain.
#include "olefio/container.h"

#include <utility>

#include "olefio/pool.h"

namespace qps::ole {

Container* Container::open(SSStream& stream, SSMemoryPool& pool) {
  HostFile file(stream);
  if (!file.isOpen()) return nullptr;
  const std::optional<Header> header = readHeader(file);
  if (!header) return nullptr;
  auto* container = makeInPool<Container>(pool, std::move(file), *header, pool);
  if (container != nullptr && !container->load()) {
    close(container);
    return nullptr;
  }
  return container;
}

void Container::close(Container* container) {
  destroyInPool(container->pool_, container);
}

Container::Container(HostFile file, const Header& header, SSMemoryPool& pool)
    : pool_(pool),
      file_(std::move(file)),
      header_(header),
      sectors_(file_, pool),
      directory_(file_, pool),
      stream_(file_, pool) {}

bool Container::load() {
  const unsigned shift = header_.sectorShift;
  const std::uint32_t sectorCount = file_.countSectors(shift);
  Extents sectors(pool_);
  Extents fat(pool_);
  return sectors.append({.fileOffset = std::uint64_t{1} << shift,
                         .bytes = std::uint64_t{sectorCount} << shift}) &&
         listFat(file_, header_, sectorCount, fat) &&
         sectors_.open(std::move(sectors), std::move(fat), shift) &&
         directory_.open(sectors_, header_);
}

bool Container::openStream(const char* name) {
  stream_.detach();
  openName_ = {};
  const EntryName wanted(name);
  const std::optional<DirectoryEntry> entry = directory_.find(wanted);
  Extents bytes(pool_);
  if (!entry || !locate(*entry, bytes)) return false;
  const bool isLost = bytes.size() == 0 && entry->bytes != 0;
  if (isLost || !stream_.attach(std::move(bytes))) return false;
  openName_ = wanted;
  return true;
}

bool Container::locate(const DirectoryEntry& entry, Extents& bytes) {
  return entry.bytes < header_.miniStreamCutoff ? locateInMiniStream(entry, bytes)
                                                : sectors_.follow(entry.start, entry.bytes, bytes);
}

// The mini stream and its table are looked up for each stream in it: the reader opens one, and a
// document whose mini stream is damaged then still gives its other streams.
bool Container::locateInMiniStream(const DirectoryEntry& entry, Extents& bytes) {
  Extents miniStream(pool_);
  if (!sectors_.follow(directory_.root().start, directory_.root().bytes, miniStream)) return false;
  const std::uint64_t tableBytes =
      sectorsFor(miniStream.size(), kMiniSectorShift) * kTableEntryBytes;
  Extents miniFat(pool_);
  SectorSpace miniSectors(file_, pool_);
  return sectors_.follow(header_.firstMiniFat, tableBytes, miniFat) &&
         miniSectors.open(std::move(miniStream), std::move(miniFat), kMiniSectorShift) &&
         miniSectors.follow(entry.start, entry.bytes, bytes);
}

void Container::closeStream(const char* name) {
  if (openName_.isEmpty() || EntryName(name) != openName_) return;
  stream_.detach();
  openName_ = {};
}

SSStream* Container::streamObject() {
  return stream_.rewind() ? &stream_ : nullptr;
}

void Container::releaseStreamObject() {
  stream_.endReading();
}

}  // namespace qps::ole
