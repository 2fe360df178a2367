// SPDX-License-Identifier: MIT
//
// Writes compound documents: both versions, streams in the mini stream and outside of it, storages,
// chains in any order, a DIFAT chain. A document can be asked where its parts lie, so that a test
// can damage one of them.
#ifndef QPSREADER_TESTS_COMPOUND_WRITER_H
#define QPSREADER_TESTS_COMPOUND_WRITER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qps::test {

struct NamedStream {
  std::string name;  // "NAME" in the root storage, "STORAGE/NAME" in a storage
  std::vector<std::byte> bytes;
};

// In which order a chain's sectors lie in the file; mini sectors likewise.
enum class SectorOrder : unsigned char { kForward, kBackward, kScattered };

// How the entries of a storage hang together: the tree that the format asks for, a tree without any
// order, a list of them in order, or such a list with an entry on its left at each step.
enum class SiblingOrder : unsigned char { kTree, kList, kUnordered, kComb };

struct CompoundOptions {
  unsigned version = 3;  // 3 has sectors of 512 bytes, 4 of 4096
  SectorOrder sectors = SectorOrder::kForward;
  SiblingOrder siblings = SiblingOrder::kTree;
  std::uint32_t freeSectors = 0;          // left free at the front of the file
  std::uint32_t miniStreamCutoff = 4096;  // streams with fewer bytes go to the mini stream
};

// With as many free sectors the FAT of a version 3 document outgrows the list in the header.
inline constexpr std::uint32_t kFreeSectorsForDifatChain = 109 * 128;

using Sectors = std::vector<std::uint32_t>;

class CompoundDocument {
 public:
  CompoundDocument(const CompoundOptions& options, const std::vector<NamedStream>& streams);

  std::vector<std::byte>& bytes() { return bytes_; }
  const std::vector<std::byte>& bytes() const { return bytes_; }

  // The sectors of each part, in the order of its chain. Of a stream: mini sectors when it is
  // small.
  const Sectors& fat() const { return fat_; }
  const Sectors& difat() const { return difat_; }
  const Sectors& directory() const { return directory_; }
  const Sectors& miniFat() const { return miniFat_; }
  const Sectors& miniStream() const { return miniStream_; }
  const Sectors& stream(std::string_view name) const { return streams_.find(name)->second; }

  // Writes the low `width` bytes of `value` at `offset` of the file, of the directory entry of a
  // stream ("" is the root), or of a sector.
  void put(std::size_t offset, std::size_t width, std::uint64_t value);
  void putInEntry(std::string_view name, std::size_t offset, std::size_t width,
                  std::uint64_t value);
  void putInSector(std::uint32_t sector, std::size_t offset, std::size_t width,
                   std::uint64_t value);

  // Makes `next` follow `sector` in the FAT, or in the mini FAT.
  void link(std::uint32_t sector, std::uint32_t next);
  void linkMini(std::uint32_t sector, std::uint32_t next);

 private:
  struct Entry;

  bool isMini(const NamedStream& stream) const {
    return stream.bytes.size() < options_.miniStreamCutoff;
  }
  std::size_t sectorBytes() const { return std::size_t{1} << shift_; }
  std::size_t perSector() const { return sectorBytes() / 4; }
  std::size_t offsetOf(std::uint32_t sector) const { return (std::size_t{sector} + 1) << shift_; }

  void layOutMiniStream(const std::vector<NamedStream>& streams);
  void layOutFile(const std::vector<NamedStream>& streams, std::size_t entryCount);
  std::vector<Entry> makeEntries(const std::vector<NamedStream>& streams) const;
  void linkSiblings(std::vector<Entry>& entries, std::uint32_t storage) const;
  void writeHeader();
  void writeDifat();
  void writeDirectory(const std::vector<Entry>& entries);
  void writeChain(const Sectors& chain, const std::vector<std::byte>& contents);

  CompoundOptions options_;
  unsigned shift_;
  std::vector<std::byte> bytes_;
  std::vector<std::byte> miniContents_;
  Sectors table_;  // the FAT's entries
  Sectors miniTable_;
  Sectors fat_;
  Sectors difat_;
  Sectors directory_;
  Sectors miniFat_;
  Sectors miniStream_;
  std::map<std::string, Sectors, std::less<>> streams_;
  std::map<std::string, std::size_t, std::less<>> entryNumbers_;
};

std::vector<std::byte> writeCompound(const CompoundOptions& options,
                                     const std::vector<NamedStream>& streams);

}  // namespace qps::test

#endif  // QPSREADER_TESTS_COMPOUND_WRITER_H
