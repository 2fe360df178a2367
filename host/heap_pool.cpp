// SPDX-License-Identifier: MIT
//
// The pool over malloc: each block is preceded by a header that holds its whole size, header
// included.
#include "host/heap_pool.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace qps {
namespace {

static_assert(HeapPool::kBlockHeaderBytes >= sizeof(std::size_t));
static_assert(HeapPool::kBlockHeaderBytes % alignof(std::max_align_t) == 0);

char* headerOf(void* block) {
  return static_cast<char*>(block) - HeapPool::kBlockHeaderBytes;
}

std::size_t wholeSize(void* block) {
  std::size_t size = 0;
  std::memcpy(&size, headerOf(block), sizeof size);
  return size;
}

void* blockAfterHeader(void* header, std::size_t size) {
  std::memcpy(header, &size, sizeof size);
  return static_cast<char*>(header) + HeapPool::kBlockHeaderBytes;
}

HeapPool& poolOf(SSMemoryPool* table) {
  return *static_cast<HeapPool*>(table->state);
}

}  // namespace

HeapPool::HeapPool(std::size_t limitBytes)
    : limitBytes_(limitBytes != 0 ? limitBytes : std::numeric_limits<std::size_t>::max()) {}

// Whether a block of `size` bytes fits when `given` bytes of the present ones come back for it.
bool HeapPool::admits(std::size_t size, std::size_t given) const {
  const std::size_t others = bytesInUse_ - given;
  if (others > limitBytes_) return false;
  const std::size_t room = limitBytes_ - others;
  return room >= kBlockHeaderBytes && size <= room - kBlockHeaderBytes;
}

void* HeapPool::refuse() {
  ++refusals_;
  return nullptr;
}

void* HeapPool::allocate(std::size_t size) {
  if (!admits(size, 0)) return refuse();
  const std::size_t whole = size + kBlockHeaderBytes;
  void* const header = std::malloc(whole);
  if (header == nullptr) return refuse();
  bytesInUse_ += whole;
  ++blocksInUse_;
  return blockAfterHeader(header, whole);
}

void* HeapPool::allocateZeroed(std::size_t count, std::size_t size) {
  if (size != 0 && count > std::numeric_limits<std::size_t>::max() / size) return refuse();
  if (!admits(count * size, 0)) return refuse();
  // calloc, for the sake of large blocks that the system hands over zeroed.
  const std::size_t whole = count * size + kBlockHeaderBytes;
  void* const header = std::calloc(1, whole);
  if (header == nullptr) return refuse();
  bytesInUse_ += whole;
  ++blocksInUse_;
  return blockAfterHeader(header, whole);
}

void* HeapPool::resize(void* block, std::size_t size) {
  if (block == nullptr) return allocate(size);
  const std::size_t given = wholeSize(block);
  if (!admits(size, given)) return refuse();
  const std::size_t whole = size + kBlockHeaderBytes;
  void* const header = std::realloc(headerOf(block), whole);
  if (header == nullptr) return refuse();
  bytesInUse_ += whole - given;
  return blockAfterHeader(header, whole);
}

void HeapPool::free(void* block) {
  if (block == nullptr) return;
  bytesInUse_ -= wholeSize(block);
  --blocksInUse_;
  std::free(headerOf(block));
}

SSMemoryPool HeapPool::table() {
  SSMemoryPool pool{};
  pool.state = this;
  pool.alloc = [](SSMemoryPool* table, std::size_t size) { return poolOf(table).allocate(size); };
  pool.free = [](SSMemoryPool* table, void* block) { poolOf(table).free(block); };
  pool.realloc = [](SSMemoryPool* table, void* block, std::size_t size) {
    return poolOf(table).resize(block, size);
  };
  pool.calloc = [](SSMemoryPool* table, std::size_t count, std::size_t size) {
    return poolOf(table).allocateZeroed(count, size);
  };
  return pool;
}

}  // namespace qps
