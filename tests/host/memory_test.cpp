// SPDX-License-Identifier: MIT
//
// The pool's counts and limit, and the arena on top of it.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <qpsreader/host/text_arena.hpp>
#include "host/heap_pool.hpp"

namespace qps::test {
namespace {

constexpr std::size_t kHeader = HeapPool::kBlockHeaderBytes;
constexpr std::size_t kHuge = std::numeric_limits<std::size_t>::max();

TEST(HeapPool, CountsWhatIsOutstanding) {
  HeapPool heap;
  SSMemoryPool pool = heap.table();
  void* const first = pool.alloc(&pool, 100);
  auto* const zeroed = static_cast<unsigned char*>(pool.calloc(&pool, 10, 5));
  ASSERT_TRUE(first != nullptr && zeroed != nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % alignof(std::max_align_t), 0u);
  EXPECT_EQ(std::vector<unsigned char>(zeroed, zeroed + 50), std::vector<unsigned char>(50));
  EXPECT_EQ(heap.blocksInUse(), 2u);
  EXPECT_EQ(heap.bytesInUse(), 150 + 2 * kHeader);

  std::memset(first, 'x', 100);
  auto* const grown = static_cast<char*>(pool.realloc(&pool, first, 1000));
  ASSERT_NE(grown, nullptr);
  EXPECT_EQ(std::string(grown, 100), std::string(100, 'x'));
  EXPECT_EQ(heap.bytesInUse(), 1050 + 2 * kHeader);

  pool.free(&pool, grown);
  pool.free(&pool, zeroed);
  EXPECT_EQ(heap.blocksInUse(), 0u);
  EXPECT_EQ(heap.bytesInUse(), 0u);
  EXPECT_FALSE(heap.limitHit());
}

TEST(HeapPool, RefusesWhatGoesBeyondItsLimit) {
  HeapPool heap(1000);
  void* const all = heap.allocate(1000 - kHeader);
  ASSERT_NE(all, nullptr);
  EXPECT_EQ(heap.allocate(1), nullptr);
  EXPECT_EQ(heap.allocateZeroed(1, 1), nullptr);
  EXPECT_EQ(heap.resize(all, 1001 - kHeader), nullptr) << "the old block stays valid";
  EXPECT_EQ(heap.refusals(), 3u);
  EXPECT_EQ(heap.bytesInUse(), 1000u);

  void* const smaller = heap.resize(all, 500);
  ASSERT_NE(smaller, nullptr);
  void* const second = heap.allocate(500 - 2 * kHeader);
  EXPECT_NE(second, nullptr);
  heap.free(second);
  heap.free(smaller);
  EXPECT_EQ(heap.bytesInUse(), 0u);
  EXPECT_TRUE(heap.limitHit());
}

TEST(HeapPool, RefusesSizesThatWrapAround) {
  HeapPool heap;
  void* block = heap.allocate(1);
  EXPECT_EQ(heap.allocate(kHuge), nullptr);
  EXPECT_EQ(heap.allocate(kHuge - kHeader + 1), nullptr);
  EXPECT_EQ(heap.allocateZeroed(kHuge / 2, 3), nullptr);
  EXPECT_EQ(heap.allocateZeroed(kHuge, 1), nullptr);
  EXPECT_EQ(heap.resize(block, kHuge), nullptr);
  EXPECT_EQ(heap.refusals(), 5u);
  heap.free(block);
  EXPECT_EQ(heap.bytesInUse(), 0u);
}

TEST(TextArena, KeepsEveryTextWhereItIs) {
  const auto heap = std::make_shared<HeapPool>();
  {
    TextArena arena(heap);
    std::vector<char*> texts;
    std::size_t total = 0;
    for (std::size_t i = 0; i < 3000; ++i) {
      const std::size_t size = i == 1500 ? 400000 : 1 + i % 300;
      auto* const text = static_cast<char*>(arena.allocate(size));
      ASSERT_NE(text, nullptr);
      std::memset(text, static_cast<int>(i % 127), size);
      texts.push_back(text);
      total += size;
    }
    EXPECT_LT(heap->bytesInUse(), total + 600000) << "at most the unused part of two blocks";
    TextArena moved = std::move(arena);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const std::size_t size = i == 1500 ? 400000 : 1 + i % 300;
      for (std::size_t at = 0; at < size; ++at)
        ASSERT_EQ(texts[i][at], static_cast<char>(i % 127));
    }
    EXPECT_EQ(arena.allocate(1), nullptr);  // NOLINT(bugprone-use-after-move): what it is about
    EXPECT_TRUE(arena.failed());
    EXPECT_FALSE(moved.failed());

    moved.clear();
    EXPECT_EQ(heap->blocksInUse(), 1u);
    EXPECT_NE(moved.allocate(100), nullptr);
    arena = std::move(moved);
    EXPECT_EQ(heap->blocksInUse(), 1u);
  }
  EXPECT_EQ(heap->bytesInUse(), 0u);
}

TEST(TextArena, CountsTowardsTheLimit) {
  const auto heap = std::make_shared<HeapPool>(20000);
  TextArena arena(heap);
  std::size_t given = 0;
  while (arena.allocate(100) != nullptr)
    given += 100;
  EXPECT_GT(given, 10000u);
  EXPECT_LE(heap->bytesInUse(), 20000u);
  EXPECT_TRUE(arena.failed());
  EXPECT_EQ(arena.allocate(kHuge), nullptr);
  EXPECT_EQ(arena.allocate(kHuge - 100), nullptr);
}

}  // namespace
}  // namespace qps::test
