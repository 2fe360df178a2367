// SPDX-License-Identifier: MIT
//
// Damaged and hostile documents: each ends in a refusal or in fewer bytes, and costs calls, bytes
// and memory in proportion to the file's real size.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "tests/olefio/library_driver.h"
#include "tests/support/compound_writer.h"

namespace qps::test {
namespace {

using Document = CompoundDocument;

constexpr std::uint32_t kFarAway = 0x00FFFFFF;
constexpr std::uint32_t kNone = 0xFFFFFFFF;
// Offsets in a directory entry.
constexpr std::size_t kNameBytes = 64;
constexpr std::size_t kType = 66;
constexpr std::size_t kLeft = 68;
constexpr std::size_t kRight = 72;
constexpr std::size_t kChild = 76;
constexpr std::size_t kStart = 116;
constexpr std::size_t kSize = 120;

// MAIN takes eleven sectors, and SMALL five mini sectors, the last ones not full. The root's tree
// is SMALL with OTHER before and LARGER after it, and MAIN before OTHER.
struct Base {
  explicit Base(const CompoundOptions& options)
      : sectorBytes(options.version == 3 ? 512 : 4096),
        main(contentsOf(10 * sectorBytes + 100, 1)),
        small(contentsOf(300, 2)),
        document(options, {{"MAIN", main},
                           {"OTHER", contentsOf(12 * sectorBytes, 3)},
                           {"SMALL", small},
                           {"LARGER", contentsOf(70, 4)}}) {}

  std::size_t sectorBytes;
  Bytes main;
  Bytes small;
  Document document;
};

void expectBoundedCost(const RecordingHost& host, std::size_t fileBytes) {
  EXPECT_EQ(host.state(), "clean");
  EXPECT_LE(host.hostCalls(), fileBytes / 16 + 300);
  EXPECT_LE(host.bytesRead(), 3 * fileBytes + 4096);
  EXPECT_LE(host.peakPoolBytes(), fileBytes + 16384);
}

// "no document", "no stream", "whole", or how many sectors came, begun ones included: "first 3" of
// the stream's own, or "3 others".
std::string outcomeOf(const Base& base, const std::string& stream) {
  const bool isSmall = stream == "SMALL";
  const Bytes& original = isSmall ? base.small : base.main;
  const std::size_t sectorBytes = isSmall ? 64 : base.sectorBytes;
  RecordingHost host(base.document.bytes());
  host.seekBeyondEnd = true;
  const Reading reading = readStream(host, stream.c_str());
  expectBoundedCost(host, base.document.bytes().size());
  if (reading.found == Found::kNoDocument) return "no document";
  if (reading.found == Found::kNoStream) return "no stream";
  if (reading.bytes == original) return "whole";
  const auto sectors = std::to_string((reading.bytes.size() + sectorBytes - 1) / sectorBytes);
  const bool isPrefix = reading.bytes.size() < original.size() &&
                        std::equal(reading.bytes.begin(), reading.bytes.end(), original.begin());
  return isPrefix ? "first " + sectors : sectors + " others";
}

struct Damage {
  const char* what;
  const char* stream;
  const char* outcome;
  void (*apply)(Document&);
  const char* outcome4 = nullptr;  // in version 4, when it is another one
};

const Damage kDamages[] = {
    {"signature", "MAIN", "no document", [](Document& d) { d.put(4, 1, 0); }},
    {"version 2", "MAIN", "no document", [](Document& d) { d.put(26, 2, 2); }},
    {"byte order", "MAIN", "no document", [](Document& d) { d.put(28, 2, 0xFEFF); }},
    {"mini sector shift", "MAIN", "no document", [](Document& d) { d.put(32, 2, 7); }},
    {"counts of sectors", "MAIN", "whole",
     [](Document& d) {
       for (const std::size_t offset : {40u, 44u, 64u, 72u})
         d.put(offset, 4, kNone);
     }},
    {"cutoff 0", "MAIN", "whole", [](Document& d) { d.put(56, 4, 0); }},

    {"FAT beyond the file", "MAIN", "first 1", [](Document& d) { d.put(76, 4, kFarAway); }},
    {"FAT in a stream", "MAIN", "first 1", [](Document& d) { d.put(76, 4, d.stream("OTHER")[0]); }},
    {"DIFAT that is not needed", "MAIN", "whole", [](Document& d) { d.put(68, 4, 0); }},

    {"chain stays", "MAIN", "first 1",
     [](Document& d) { d.link(d.stream("MAIN")[0], d.stream("MAIN")[0]); }},
    {"chain returns", "MAIN", "first 4",
     [](Document& d) { d.link(d.stream("MAIN")[3], d.stream("MAIN")[0]); }},
    {"chain leaves the file", "MAIN", "first 2",
     [](Document& d) { d.link(d.stream("MAIN")[1], kFarAway); }},
    {"chain meets a special number", "MAIN", "first 2",
     [](Document& d) { d.link(d.stream("MAIN")[1], 0xFFFFFFFC); }},
    {"chain crosses another", "MAIN", "11 others",
     [](Document& d) { d.link(d.stream("MAIN")[1], d.stream("OTHER")[0]); }},
    {"chain goes on", "MAIN", "whole",
     [](Document& d) { d.link(d.stream("MAIN")[10], d.stream("OTHER")[0]); }},
    {"stream beyond the file", "MAIN", "no stream",
     [](Document& d) { d.putInEntry("MAIN", kStart, 4, kFarAway); }},
    {"stream right behind the file", "MAIN", "no stream",
     [](Document& d) {
       const auto shift = std::to_integer<unsigned>(d.bytes()[30]);
       d.putInEntry("MAIN", kStart, 4, (d.bytes().size() >> shift) - 1);
     }},
    {"empty stream with a start", "MAIN", "first 0",
     [](Document& d) { d.putInEntry("MAIN", kSize, 8, 0); }},
    {"size of 2^63", "MAIN", "whole",  // version 3 takes the lower half
     [](Document& d) { d.putInEntry("MAIN", kSize + 4, 4, 0x80000000); }, "11 others"},
    {"size of 2^64 - 1", "MAIN", "11 others",
     [](Document& d) { d.putInEntry("MAIN", kSize, 8, UINT64_MAX); }},

    {"mini chain stays", "SMALL", "first 1",
     [](Document& d) { d.linkMini(d.stream("SMALL")[0], d.stream("SMALL")[0]); }},
    {"mini chain returns", "SMALL", "first 4",
     [](Document& d) { d.linkMini(d.stream("SMALL")[3], d.stream("SMALL")[1]); }},
    {"mini chain leaves the mini stream", "SMALL", "first 2",
     [](Document& d) { d.linkMini(d.stream("SMALL")[1], 7); }},
    {"mini chain crosses another", "SMALL", "3 others",
     [](Document& d) { d.linkMini(d.stream("SMALL")[0], d.stream("LARGER")[0]); }},
    {"mini stream beyond the file", "SMALL", "no stream",
     [](Document& d) { d.putInEntry("", kStart, 4, kFarAway); }},
    {"mini stream of no bytes", "SMALL", "no stream",
     [](Document& d) { d.putInEntry("", kSize, 8, 0); }},
    {"mini stream of 2^64 - 1", "SMALL", "whole",
     [](Document& d) { d.putInEntry("", kSize, 8, UINT64_MAX); }},
    {"mini stream returns", "SMALL", "whole",
     [](Document& d) { d.link(d.miniStream()[0], d.miniStream()[0]); }},
    {"mini FAT beyond the file", "SMALL", "first 1", [](Document& d) { d.put(60, 4, kFarAway); }},
    {"mini FAT returns", "SMALL", "whole",
     [](Document& d) { d.link(d.miniFat()[0], d.miniFat()[0]); }},
    {"mini FAT is the FAT", "MAIN", "whole", [](Document& d) { d.put(60, 4, d.fat()[0]); }},

    {"directory beyond the file", "MAIN", "no document",
     [](Document& d) { d.put(48, 4, kFarAway); }},
    {"directory in a stream", "MAIN", "no document",
     [](Document& d) { d.put(48, 4, d.stream("MAIN")[0]); }},
    {"directory returns", "MAIN", "whole",
     [](Document& d) { d.link(d.directory().back(), d.directory()[0]); }},
    {"directory returns, name missing", "NONE", "no stream",
     [](Document& d) { d.link(d.directory().back(), d.directory()[0]); }},
    {"root is a stream", "MAIN", "no document", [](Document& d) { d.putInEntry("", kType, 1, 2); }},
    {"root is its own child", "MAIN", "no stream",
     [](Document& d) { d.putInEntry("", kChild, 4, 0); }},
    {"children beyond the directory", "MAIN", "no stream",
     [](Document& d) { d.putInEntry("", kChild, 4, 0x01000000); }},
    {"siblings return", "NONE", "no stream",
     [](Document& d) {
       d.putInEntry("MAIN", kLeft, 4, 2);
       d.putInEntry("MAIN", kRight, 4, 3);
     }},
    {"siblings in the wrong order", "MAIN", "whole",
     [](Document& d) {
       d.putInEntry("OTHER", kLeft, 4, kNone);
       d.putInEntry("OTHER", kRight, 4, 1);
     }},
    {"sibling with an endless name", "MAIN", "whole",
     [](Document& d) { d.putInEntry("OTHER", kNameBytes, 2, 0xFFFF); }},
    {"odd name", "MAIN", "no stream", [](Document& d) { d.putInEntry("MAIN", kNameBytes, 2, 11); }},
    {"no name", "MAIN", "no stream", [](Document& d) { d.putInEntry("MAIN", kNameBytes, 2, 0); }},
    {"no name, and none asked for", "", "no stream",
     [](Document& d) { d.putInEntry("MAIN", kNameBytes, 2, 2); }},
    {"storage with the name", "MAIN", "no stream",
     [](Document& d) { d.putInEntry("MAIN", kType, 1, 1); }},
};

TEST(Hostile, EachDamageHasItsOutcome) {
  for (const unsigned version : {3u, 4u}) {
    for (const SectorOrder order :
         {SectorOrder::kForward, SectorOrder::kBackward, SectorOrder::kScattered}) {
      for (const Damage& damage : kDamages) {
        SCOPED_TRACE(std::string(damage.what) + ", version " + std::to_string(version));
        Base base({.version = version, .sectors = order});
        ASSERT_EQ(outcomeOf(base, "MAIN") + outcomeOf(base, "SMALL"), "wholewhole");
        damage.apply(base.document);
        const bool isOther = version == 4 && damage.outcome4 != nullptr;
        EXPECT_EQ(outcomeOf(base, damage.stream), isOther ? damage.outcome4 : damage.outcome);
      }
    }
  }
}

TEST(Hostile, AMiniStreamMayEndInsideOfASector) {
  Base base({});
  base.document.putInEntry("", kSize, 8, 100);
  RecordingHost host(base.document.bytes());
  EXPECT_EQ(readStream(host, "SMALL").bytes, Bytes(base.small.begin(), base.small.begin() + 100));
}

TEST(Hostile, OnlyTheShiftsOfTheVersionsAreTaken) {
  for (unsigned shift = 0; shift <= UINT16_MAX; ++shift) {
    for (const unsigned version : {3u, 4u}) {
      RecordingHost host(Bytes(1 << 14));
      static const Bytes kHeaders[] = {writeCompound({.version = 3}, {}),
                                       writeCompound({.version = 4}, {})};
      host.file().bytes() = kHeaders[version - 3];
      host.file().bytes()[30] = static_cast<std::byte>(shift);
      host.file().bytes()[31] = static_cast<std::byte>(shift >> 8);
      const bool isOpened = readStream(host, "MAIN").found != Found::kNoDocument;
      ASSERT_EQ(isOpened, shift == (version == 3 ? 9 : 12)) << shift;
      ASSERT_EQ(host.state(), "clean");
    }
  }
}

TEST(Hostile, ADifatChainEndsWhereItReturnsOrLeavesTheFile) {
  const Base whole({.freeSectors = 3 * kFreeSectorsForDifatChain});
  ASSERT_EQ(whole.document.difat().size(), 2u);
  const std::uint32_t first = whole.document.difat()[0];
  for (const std::uint32_t next : {first, kFarAway, kNone, whole.document.stream("MAIN")[0]}) {
    Base base = whole;
    base.document.putInSector(first, 508, 4, next);
    // The FAT's last sectors, which chain the stream and the directory, are out of reach.
    EXPECT_EQ(outcomeOf(base, "MAIN"), "first 1") << next;
  }
  // The file's last sector is the DIFAT's second, and its last entries are free.
  for (const auto& [cut, outcome] : {std::pair{0, "whole"}, {4, "whole"}, {508, "first 1"}}) {
    Base base = whole;
    base.document.bytes().resize(base.document.bytes().size() - static_cast<std::size_t>(cut));
    EXPECT_EQ(outcomeOf(base, "MAIN"), outcome) << "without the last " << cut << " bytes";
  }
}

// Each word of the header, the FAT, the mini FAT and the directory in turn takes values that hurt.
TEST(Hostile, AnyWordOfTheTablesMayHoldAnything) {
  Base base({.sectors = SectorOrder::kScattered});
  std::vector<std::size_t> starts = {0};
  for (const Sectors* part :
       {&base.document.fat(), &base.document.miniFat(), &base.document.directory()}) {
    for (const std::uint32_t sector : *part)
      starts.push_back((sector + 1) * 512);
  }
  const Bytes original = base.document.bytes();
  for (const std::size_t start : starts) {
    for (std::size_t offset = start; offset < start + 512; offset += 4) {
      for (const std::uint32_t value : {0u, 1u, 6u, 0x80000000u, 0xFFFFFFFEu, kNone}) {
        base.document.put(offset, 4, value);
        for (const char* stream : {"MAIN", "SMALL"})
          outcomeOf(base, stream);
        if (testing::Test::HasFailure()) FAIL() << value << " at " << offset;
      }
      base.document.bytes() = original;
    }
  }
}

// Each step of the chain needs another block of the table, and no two sectors are neighbours.
TEST(Hostile, AChainThatJumpsCostsNoMoreThanTheFile) {
  const Bytes original = contentsOf(6 << 20, 1);
  for (const unsigned version : {3u, 4u}) {
    for (const std::uint32_t cutoff : {std::uint32_t{4096}, UINT32_MAX}) {
      RecordingHost host(writeCompound(
          {.version = version, .sectors = SectorOrder::kScattered, .miniStreamCutoff = cutoff},
          {{"MAIN", original}}));
      EXPECT_EQ(readStream(host, "MAIN").bytes, original);
      expectBoundedCost(host, host.file().bytes().size());
    }
  }
}

}  // namespace
}  // namespace qps::test
