// SPDX-License-Identifier: MIT
//
// A memory pool for the reader over the C heap. It counts what is outstanding and can be limited,
// so that a hostile file meets a stated bound and not the machine's.
#ifndef QPSREADER_HOST_HEAP_POOL_HPP
#define QPSREADER_HOST_HEAP_POOL_HPP

#include <cstddef>
#include <cstdint>

#include <qpsreader/host_tables.h>

namespace qps {

// Every block costs its size and kBlockHeaderBytes, in the counts and towards the limit. Blocks
// that are still out when the pool ends are the caller's leak: the pool keeps no list of them.
class HeapPool {
 public:
  static constexpr std::size_t kBlockHeaderBytes = 16;  // keeps malloc's alignment

  // `limitBytes` is the most that may be outstanding at a time; 0 is no limit.
  explicit HeapPool(std::size_t limitBytes = 0);
  HeapPool(const HeapPool&) = delete;
  HeapPool& operator=(const HeapPool&) = delete;

  // As the slots of SSMemoryPool, but tolerant: free takes null, and resize of null allocates.
  void* allocate(std::size_t size);
  void* allocateZeroed(std::size_t count, std::size_t size);
  void* resize(void* block, std::size_t size);
  void free(void* block);

  // The table for SSHostServices. The pool must stay in place as long as the table is used.
  SSMemoryPool table();

  std::size_t bytesInUse() const { return bytesInUse_; }
  std::size_t blocksInUse() const { return blocksInUse_; }

  // How often a block was refused, because of the limit or by malloc.
  std::uint64_t refusals() const { return refusals_; }
  bool limitHit() const { return refusals_ != 0; }

 private:
  bool admits(std::size_t size, std::size_t given) const;
  void* refuse();

  std::size_t limitBytes_;
  std::size_t bytesInUse_ = 0;
  std::size_t blocksInUse_ = 0;
  std::uint64_t refusals_ = 0;
};

}  // namespace qps

#endif  // QPSREADER_HOST_HEAP_POOL_HPP
