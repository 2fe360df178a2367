// SPDX-License-Identifier: MIT
//
// Counts the sectors of every part, numbers them in the order asked for, and writes the parts into
// them. It shares no code with the library that reads such documents: a mistake in one of them
// shows.
#include "tests/support/compound_writer.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <span>
#include <utility>

namespace qps::test {

namespace {

constexpr std::uint32_t kDifatSector = 0xFFFFFFFC;
constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::size_t kEntryBytes = 128;
constexpr std::size_t kMiniSectorBytes = 64;
constexpr std::size_t kFatSectorsInHeader = 109;

enum EntryType : std::uint8_t { kUnused = 0, kStorage = 1, kStream = 2, kRoot = 5 };

std::size_t divideUp(std::size_t value, std::size_t by) {
  return (value + by - 1) / by;
}

// The numbers from 0 on in the order asked for. Scattered ones are so far from their neighbours
// that the next one's place in a version 3 FAT lies in another sector of it.
Sectors numbersIn(SectorOrder order, std::size_t count) {
  constexpr std::size_t kFarStride = 129;
  const std::size_t far = count > kFarStride ? kFarStride : count * 5 / 8;
  std::size_t stride = order == SectorOrder::kScattered ? far : 1;
  while (std::gcd(stride, count) > 1)
    ++stride;
  Sectors numbers(count);
  for (std::size_t i = 0; i < count; ++i) {
    numbers[i] = static_cast<std::uint32_t>(i * stride % count);
  }
  if (order == SectorOrder::kBackward) std::ranges::reverse(numbers);
  return numbers;
}

void linkChain(Sectors& table, const Sectors& chain) {
  for (std::size_t i = 0; i < chain.size(); ++i) {
    table.at(chain[i]) = i + 1 < chain.size() ? chain[i + 1] : kEndOfChain;
  }
}

std::uint32_t firstOf(const Sectors& chain) {
  return chain.empty() ? kEndOfChain : chain.front();
}

bool nameIsLess(const std::string& a, const std::string& b) {
  const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; };
  if (a.size() != b.size()) return a.size() < b.size();
  return std::ranges::lexicographical_compare(a, b, {}, upper, upper);
}

}  // namespace

struct CompoundDocument::Entry {
  std::string path;  // "" for the root
  EntryType type = kUnused;
  bool isBlack = true;
  std::uint32_t left = kNone;
  std::uint32_t right = kNone;
  std::uint32_t child = kNone;
  std::uint32_t start = kEndOfChain;
  std::uint64_t bytes = 0;

  std::string storage() const { return path.substr(0, path.find('/') + 1); }  // "" or "STORAGE/"
  std::string name() const { return type == kRoot ? "Root Entry" : path.substr(storage().size()); }
};

CompoundDocument::CompoundDocument(const CompoundOptions& options,
                                   const std::vector<NamedStream>& streams)
    : options_(options), shift_(options.version == 3 ? 9 : 12) {
  layOutMiniStream(streams);
  std::vector<Entry> entries = makeEntries(streams);
  layOutFile(streams, entries.size());
  for (Entry& entry : entries) {
    entryNumbers_[entry.path] = static_cast<std::size_t>(&entry - entries.data());
    if (entry.type == kStream) entry.start = firstOf(stream(entry.path));
  }
  entries[0].start = firstOf(miniStream_);
  entries[0].bytes = miniContents_.size();

  for (const NamedStream& stream : streams) {
    if (!isMini(stream)) writeChain(streams_[stream.name], stream.bytes);
  }
  writeChain(miniStream_, miniContents_);
  writeDirectory(entries);
  for (std::uint32_t i = 0; i < table_.size(); ++i)
    link(i, table_[i]);
  for (std::uint32_t i = 0; i < miniTable_.size(); ++i)
    linkMini(i, miniTable_[i]);
  writeDifat();
  writeHeader();
}

void CompoundDocument::layOutMiniStream(const std::vector<NamedStream>& streams) {
  std::size_t count = 0;
  for (const NamedStream& stream : streams) {
    if (isMini(stream)) count += divideUp(stream.bytes.size(), kMiniSectorBytes);
  }
  const Sectors numbers = numbersIn(options_.sectors, count);
  auto next = numbers.begin();
  miniContents_.resize(count * kMiniSectorBytes);
  miniTable_.resize(divideUp(count, perSector()) * perSector(), kNone);
  for (const NamedStream& stream : streams) {
    if (!isMini(stream)) continue;
    Sectors& chain = streams_[stream.name];
    for (std::size_t done = 0; done < stream.bytes.size(); done += kMiniSectorBytes) {
      const std::size_t bytes = std::min(kMiniSectorBytes, stream.bytes.size() - done);
      std::memcpy(&miniContents_[*next * kMiniSectorBytes], &stream.bytes[done], bytes);
      chain.push_back(*next++);
    }
    linkChain(miniTable_, chain);
  }
}

void CompoundDocument::layOutFile(const std::vector<NamedStream>& streams, std::size_t entryCount) {
  struct Part {
    Sectors* chain;
    std::size_t sectors;
    std::uint32_t mark = kNone;  // what stands in the FAT when these sectors make no chain in it
  };
  const auto sectorsFor = [&](std::size_t bytes) { return divideUp(bytes, sectorBytes()); };
  std::vector<Part> parts = {{&directory_, sectorsFor(entryCount * kEntryBytes)},
                             {&miniFat_, miniTable_.size() / perSector()},
                             {&miniStream_, sectorsFor(miniContents_.size())}};
  for (const NamedStream& stream : streams) {
    if (!isMini(stream)) parts.push_back({&streams_[stream.name], sectorsFor(stream.bytes.size())});
  }
  std::size_t used = 0;
  for (const Part& part : parts)
    used += part.sectors;

  // The FAT and the DIFAT cover themselves too.
  std::size_t fat = 0;
  std::size_t difat = 0;
  while (fat * perSector() < options_.freeSectors + used + fat + difat) {
    ++fat;
    difat = fat <= kFatSectorsInHeader ? 0 : divideUp(fat - kFatSectorsInHeader, perSector() - 1);
  }
  parts.push_back({&fat_, fat, kFatSector});
  parts.push_back({&difat_, difat, kDifatSector});
  used += fat + difat;

  const Sectors numbers = numbersIn(options_.sectors, used);
  auto next = numbers.begin();
  table_.resize(fat * perSector(), kNone);
  for (const Part& part : parts) {
    for (std::size_t i = 0; i < part.sectors; ++i) {
      part.chain->push_back(options_.freeSectors + *next++);
      table_.at(part.chain->back()) = part.mark;
    }
    if (part.mark == kNone) linkChain(table_, *part.chain);
  }
  bytes_.resize((1 + options_.freeSectors + used) << shift_);
}

std::vector<CompoundDocument::Entry> CompoundDocument::makeEntries(
    const std::vector<NamedStream>& streams) const {
  std::vector<Entry> entries = {{.path = "", .type = kRoot}};
  std::map<std::string, std::uint32_t> storages = {{"", 0}};
  for (const NamedStream& stream : streams) {
    entries.push_back({.path = stream.name, .type = kStream, .bytes = stream.bytes.size()});
    const std::string storage = entries.back().storage();
    if (storages.try_emplace(storage, static_cast<std::uint32_t>(entries.size())).second) {
      entries.push_back({.path = storage.substr(0, storage.size() - 1), .type = kStorage});
    }
  }
  for (const auto& [path, entry] : storages)
    linkSiblings(entries, entry);
  return entries;
}

// Halves the ordered siblings again and again: all paths have the same length but for the deepest
// level, whose entries are red.
void CompoundDocument::linkSiblings(std::vector<Entry>& entries, std::uint32_t storage) const {
  const std::string path = entries[storage].path + (storage == 0 ? "" : "/");
  Sectors siblings;
  for (std::uint32_t i = 1; i < entries.size(); ++i) {
    if (entries[i].storage() == path) siblings.push_back(i);
  }
  std::ranges::sort(siblings, [&](std::uint32_t a, std::uint32_t b) {
    return nameIsLess(entries[a].name(), entries[b].name());
  });
  if (options_.siblings == SiblingOrder::kUnordered) {
    const Sectors ordered = siblings;
    const Sectors numbers = numbersIn(SectorOrder::kScattered, siblings.size());
    for (std::size_t i = 0; i < siblings.size(); ++i)
      siblings[i] = ordered[numbers[i]];
  }
  std::size_t perfect = 1;  // the size of the tree without its deepest level, plus one
  while (perfect * 2 <= siblings.size())
    perfect *= 2;

  const std::size_t mostBefore = options_.siblings == SiblingOrder::kList   ? 0
                                 : options_.siblings == SiblingOrder::kComb ? 1
                                                                            : siblings.size();

  struct Subtree {
    std::uint32_t* parent;
    std::span<const std::uint32_t> siblings;
    std::size_t level;
  };
  std::vector<Subtree> rest = {{&entries[storage].child, siblings, 1}};
  while (!rest.empty()) {
    const Subtree tree = rest.back();
    rest.pop_back();
    if (tree.siblings.empty()) continue;
    const std::size_t middle = std::min(mostBefore, tree.siblings.size() / 2);
    *tree.parent = tree.siblings[middle];
    Entry& entry = entries[*tree.parent];
    entry.isBlack = tree.level == 1 || tree.level != perfect;
    rest.push_back({&entry.left, tree.siblings.first(middle), tree.level * 2});
    rest.push_back({&entry.right, tree.siblings.subspan(middle + 1), tree.level * 2});
  }
}

void CompoundDocument::writeChain(const Sectors& chain, const std::vector<std::byte>& contents) {
  std::size_t done = 0;
  for (const std::uint32_t sector : chain) {
    const std::size_t bytes = std::min(sectorBytes(), contents.size() - done);
    std::memcpy(&bytes_[offsetOf(sector)], &contents[done], bytes);
    done += bytes;
  }
}

void CompoundDocument::writeDirectory(const std::vector<Entry>& entries) {
  const std::size_t perDirectorySector = sectorBytes() / kEntryBytes;
  for (std::size_t i = 0; i < directory_.size() * perDirectorySector; ++i) {
    const Entry entry = i < entries.size() ? entries[i] : Entry{.path = "", .start = 0};
    const std::size_t at =
        offsetOf(directory_[i / perDirectorySector]) + i % perDirectorySector * kEntryBytes;
    const std::string name = entry.name();
    for (std::size_t unit = 0; unit < name.size(); ++unit) {
      put(at + 2 * unit, 2, static_cast<unsigned char>(name[unit]));
    }
    put(at + 64, 2, entry.type == kUnused ? 0 : 2 * (name.size() + 1));
    put(at + 66, 1, entry.type);
    put(at + 67, 1, entry.isBlack ? 1 : 0);
    put(at + 68, 4, entry.left);
    put(at + 72, 4, entry.right);
    put(at + 76, 4, entry.child);
    put(at + 116, 4, entry.type == kStorage ? 0 : entry.start);
    put(at + 120, 8, entry.bytes);
  }
}

void CompoundDocument::writeDifat() {
  for (std::size_t i = 0; i < kFatSectorsInHeader; ++i) {
    put(76 + 4 * i, 4, i < fat_.size() ? fat_[i] : kNone);
  }
  std::size_t listed = kFatSectorsInHeader;
  for (std::size_t i = 0; i < difat_.size(); ++i) {
    for (std::size_t entry = 0; entry + 1 < perSector(); ++entry, ++listed) {
      putInSector(difat_[i], 4 * entry, 4, listed < fat_.size() ? fat_[listed] : kNone);
    }
    putInSector(difat_[i], sectorBytes() - 4, 4,
                i + 1 < difat_.size() ? difat_[i + 1] : kEndOfChain);
  }
}

void CompoundDocument::writeHeader() {
  put(0, 8, 0xE11AB1A1E011CFD0);
  put(24, 2, 0x3E);
  put(26, 2, options_.version);
  put(28, 2, 0xFFFE);
  put(30, 2, shift_);
  put(32, 2, 6);
  put(40, 4, options_.version == 3 ? 0 : directory_.size());
  put(44, 4, fat_.size());
  put(48, 4, firstOf(directory_));
  put(56, 4, options_.miniStreamCutoff);
  put(60, 4, firstOf(miniFat_));
  put(64, 4, miniFat_.size());
  put(68, 4, firstOf(difat_));
  put(72, 4, difat_.size());
}

void CompoundDocument::put(std::size_t offset, std::size_t width, std::uint64_t value) {
  for (std::size_t i = 0; i < width; ++i) {
    bytes_.at(offset + i) = static_cast<std::byte>(value >> (8 * i));
  }
}

void CompoundDocument::putInSector(std::uint32_t sector, std::size_t offset, std::size_t width,
                                   std::uint64_t value) {
  put(offsetOf(sector) + offset, width, value);
}

void CompoundDocument::putInEntry(std::string_view name, std::size_t offset, std::size_t width,
                                  std::uint64_t value) {
  const std::size_t at = entryNumbers_.find(name)->second * kEntryBytes;
  putInSector(directory_[at / sectorBytes()], at % sectorBytes() + offset, width, value);
}

void CompoundDocument::link(std::uint32_t sector, std::uint32_t next) {
  putInSector(fat_.at(sector / perSector()), sector % perSector() * 4, 4, next);
}

void CompoundDocument::linkMini(std::uint32_t sector, std::uint32_t next) {
  putInSector(miniFat_.at(sector / perSector()), sector % perSector() * 4, 4, next);
}

std::vector<std::byte> writeCompound(const CompoundOptions& options,
                                     const std::vector<NamedStream>& streams) {
  return std::move(CompoundDocument(options, streams).bytes());
}

}  // namespace qps::test
