// SPDX-License-Identifier: MIT
//
// A file chooses its styles: those that meet in one place of the standard library's hash table cost
// no more than others.
#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <functional>
#include <random>
#include <string_view>
#include <vector>

#include "tool/style_table.h"

namespace qps {
namespace {

constexpr std::size_t kFirst = offsetof(SSItemCell, alignment);
constexpr std::size_t kNameBlocks = 48;  // two blocks of eight bytes from here are the font's name

std::string_view hashedBytes(const SSItemCell& cell) {
  return {reinterpret_cast<const char*>(&cell) + kFirst, sizeof cell - kFirst};
}

// libstdc++'s std::hash takes eight bytes after the other: hash = (hash ^ mixed(block)) * kFactor.
constexpr std::uint64_t kFactor = 0xC6A4A7935BD1E995;
constexpr std::uint64_t kSeed = 0xC70F6907;

constexpr std::uint64_t inverse(std::uint64_t odd) {
  std::uint64_t result = odd;
  for (int i = 0; i < 6; ++i)
    result *= 2 - odd * result;
  return result;
}
constexpr std::uint64_t folded(std::uint64_t value) {
  return value ^ value >> 47;
}
constexpr std::uint64_t mixed(std::uint64_t block) {
  return folded(block * kFactor) * kFactor;
}
constexpr std::uint64_t unmixed(std::uint64_t value) {
  return folded(value * inverse(kFactor)) * inverse(kFactor);
}

// Styles of which the first block of the name is any, and the second brings all to one hash.
std::vector<SSItemCell> styles(std::size_t count, bool meet) {
  std::mt19937_64 random(1);
  std::vector<SSItemCell> result(count);
  for (SSItemCell& cell : result) {
    std::uint64_t blocks[] = {random(), random()};
    const std::string_view bytes = hashedBytes(cell);
    if (meet) {
      std::uint64_t hash = kSeed ^ bytes.size() * kFactor;
      for (std::size_t i = 0; i < kNameBlocks; i += 8)
        hash = (hash ^ mixed(0)) * kFactor;
      blocks[1] = unmixed((hash ^ mixed(blocks[0])) * kFactor ^ 12345);
    }
    std::memcpy(reinterpret_cast<char*>(&cell) + kFirst + kNameBlocks, blocks, sizeof blocks);
  }
  return result;
}

double processorTime(const std::vector<SSItemCell>& cells) {
  const std::clock_t start = std::clock();
  StyleTable table;
  for (const SSItemCell& cell : cells)
    table.numberOf(cell);
  EXPECT_EQ(table.size(), cells.size());
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(StyleTable, StylesThatMeetInAHashTableCostNoMore) {
  constexpr std::size_t kCount = 30000;
  const std::vector<SSItemCell> meeting = styles(kCount, true);
  const std::hash<std::string_view> hash;
  if (hash(hashedBytes(meeting[0])) != hash(hashedBytes(meeting[1])))
    GTEST_SKIP() << "another standard library, another hash";
  const double usual = processorTime(styles(kCount, false));
  EXPECT_LT(processorTime(meeting), 10 * usual + 0.02);
}

}  // namespace
}  // namespace qps
