// SPDX-License-Identifier: MIT
//
// Owners of blocks from the host's pool: a growable array of plain values and a single object. They
// give their blocks back when they go; a block that cannot be had is an ordinary result.
#ifndef QPSREADER_OLEFIO_POOL_H
#define QPSREADER_OLEFIO_POOL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

#include <qpsreader/host_tables.h>

namespace qps::ole {

template <class T>
class PoolArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  explicit PoolArray(SSMemoryPool& pool) : pool_(&pool) {}
  PoolArray(PoolArray&& other) noexcept
      : pool_(other.pool_),
        items_(std::exchange(other.items_, nullptr)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  PoolArray& operator=(PoolArray&& other) noexcept {
    std::swap(pool_, other.pool_);
    std::swap(items_, other.items_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    return *this;
  }
  ~PoolArray() { clear(); }

  std::size_t size() const { return size_; }
  bool isEmpty() const { return size_ == 0; }
  T& operator[](std::size_t index) { return items_[index]; }
  const T& operator[](std::size_t index) const { return items_[index]; }
  T& back() { return items_[size_ - 1]; }
  std::span<T> items() { return {items_, size_}; }
  std::span<const T> items() const { return {items_, size_}; }

  // Replaces the contents by `count` zero values.
  [[nodiscard]] bool assignZeros(std::size_t count) {
    clear();
    if (count == 0) return true;
    items_ = static_cast<T*>(pool_->calloc(pool_, count, sizeof(T)));
    size_ = capacity_ = items_ == nullptr ? 0 : count;
    return items_ != nullptr;
  }

  [[nodiscard]] bool push(const T& value) {
    if (size_ == capacity_ && !grow()) return false;
    items_[size_++] = value;
    return true;
  }

  T pop() { return items_[--size_]; }

  void clear() {
    if (items_ != nullptr) pool_->free(pool_, items_);
    items_ = nullptr;
    size_ = capacity_ = 0;
  }

 private:
  bool grow() {
    constexpr std::size_t kFirstCapacity = 16;
    if (capacity_ > SIZE_MAX / sizeof(T) / 2) return false;
    const std::size_t capacity = std::max(kFirstCapacity, capacity_ * 2);
    void* block = items_ == nullptr ? pool_->alloc(pool_, capacity * sizeof(T))
                                    : pool_->realloc(pool_, items_, capacity * sizeof(T));
    if (block == nullptr) return false;
    items_ = static_cast<T*>(block);
    capacity_ = capacity;
    return true;
  }

  SSMemoryPool* pool_;
  T* items_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// Makes a T in a block of the pool; null, with the arguments untouched, when there is no block.
template <class T, class... Arguments>
T* makeInPool(SSMemoryPool& pool, Arguments&&... arguments) {
  static_assert(alignof(T) <= alignof(std::max_align_t));
  void* block = pool.alloc(&pool, sizeof(T));
  return block == nullptr ? nullptr : ::new (block) T(std::forward<Arguments>(arguments)...);
}

template <class T>
void destroyInPool(SSMemoryPool& pool, T* object) {
  std::destroy_at(object);
  pool.free(&pool, object);
}

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_POOL_H
