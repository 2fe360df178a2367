// SPDX-License-Identifier: MIT
//
// The arena: a list of pool blocks, each twice as large as the one before up to a bound.
#include <qpsreader/host/text_arena.hpp>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "host/heap_pool.hpp"

namespace qps {

namespace {

// Whole pool blocks, headers included, are powers of two; a sheet of a few cells stays small, and a
// large one wastes at most a part of the last block.
constexpr std::size_t kFirstBlockBytes = std::size_t{4} << 10;
constexpr std::size_t kLargestBlockBytes = std::size_t{256} << 10;

}  // namespace

TextArena::TextArena(std::shared_ptr<HeapPool> pool) : pool_(std::move(pool)) {}

TextArena::TextArena(TextArena&& other) noexcept
    : pool_(std::move(other.pool_)),
      newest_(std::exchange(other.newest_, nullptr)),
      cursor_(std::exchange(other.cursor_, nullptr)),
      end_(std::exchange(other.end_, nullptr)),
      failed_(std::exchange(other.failed_, false)) {}

TextArena& TextArena::operator=(TextArena&& other) noexcept {
  if (this == &other) return *this;
  release();
  pool_ = std::move(other.pool_);
  newest_ = std::exchange(other.newest_, nullptr);
  cursor_ = std::exchange(other.cursor_, nullptr);
  end_ = std::exchange(other.end_, nullptr);
  failed_ = std::exchange(other.failed_, false);
  return *this;
}

TextArena::~TextArena() {
  release();
}

// Gives back the blocks that are older than this one.
void TextArena::releaseAfter(Block& block) {
  while (block.older != nullptr) {
    Block* const next = block.older->older;
    pool_->free(block.older);
    block.older = next;
  }
}

void TextArena::release() {
  if (newest_ == nullptr) return;
  releaseAfter(*newest_);
  pool_->free(std::exchange(newest_, nullptr));
  cursor_ = end_ = nullptr;
}

void* TextArena::allocateSlow(std::size_t size) {
  constexpr std::size_t kOverhead = sizeof(Block) + kReadableBehind + HeapPool::kBlockHeaderBytes;
  std::size_t whole = kFirstBlockBytes;
  if (newest_ != nullptr) whole = std::min(2 * (newest_->bytes + kOverhead), kLargestBlockBytes);
  const std::size_t bytes = std::max(whole - kOverhead, size);

  const bool possible = pool_ != nullptr && bytes <= std::numeric_limits<std::size_t>::max() / 2;
  void* const memory =
      possible ? pool_->allocate(sizeof(Block) + bytes + kReadableBehind) : nullptr;
  if (memory == nullptr) {
    failed_ = true;
    return nullptr;
  }
  newest_ = new (memory) Block{newest_, bytes};
  cursor_ = newest_->text() + size;
  end_ = newest_->text() + bytes;
  std::memset(cursor_, 0, kReadableBehind);
  return newest_->text();
}

}  // namespace qps
