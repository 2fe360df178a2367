// SPDX-License-Identifier: MIT
//
// Blocks from the host's pool. Everything that the reader keeps comes from here.
#ifndef QPSREADER_READER_POOL_H
#define QPSREADER_READER_POOL_H

#include <cstring>
#include <string_view>
#include <type_traits>

#include <qpsreader/host_tables.h>

namespace qps {

// `size` bytes of any contents, or null.
[[nodiscard]] inline void* poolAlloc(SSHostServices* services, std::size_t size) {
  return services->pool.alloc(&services->pool, size);
}

// `count` times `size` zero bytes, or null.
[[nodiscard]] inline void* poolCalloc(SSHostServices* services, std::size_t count,
                                      std::size_t size) {
  return services->pool.calloc(&services->pool, count, size);
}

// `block` with `size` bytes; or null, and `block` is as it was.
[[nodiscard]] inline void* poolRealloc(SSHostServices* services, void* block, std::size_t size) {
  return services->pool.realloc(&services->pool, block, size);
}

// A zeroed T with `extraBytes` after it, or null. Only for types that need no destructor.
template <typename T>
[[nodiscard]] T* poolNew(SSHostServices* services, std::size_t extraBytes = 0) {
  static_assert(std::is_trivially_destructible_v<T> && std::is_trivially_copyable_v<T>);
  void* block = poolAlloc(services, sizeof(T) + extraBytes);
  if (block == nullptr) return nullptr;
  return static_cast<T*>(std::memset(block, 0, sizeof(T) + extraBytes));
}

// A zero-terminated copy of `text`, or null.
[[nodiscard]] inline char* poolCopyText(SSHostServices* services, std::string_view text) {
  auto* copy = static_cast<char*>(poolAlloc(services, text.size() + 1));
  if (copy == nullptr) return nullptr;
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

// Gives a block back; nothing happens for null.
inline void poolFree(SSHostServices* services, void* block) {
  if (block != nullptr) services->pool.free(&services->pool, block);
}

// Gives back a list that is linked through `next`, calling `releaseParts` for each node first.
template <typename Node, typename ReleaseParts>
void poolFreeList(SSHostServices* services, Node*& list, ReleaseParts releaseParts) {
  while (list != nullptr) {
    Node* node = list;
    list = node->next;
    releaseParts(*node);
    services->pool.free(&services->pool, node);
  }
}

template <typename Node>
void poolFreeList(SSHostServices* services, Node*& list) {
  poolFreeList(services, list, [](Node&) {});
}

}  // namespace qps

#endif  // QPSREADER_READER_POOL_H
