// SPDX-License-Identifier: MIT
//
// Where the texts of items live: a bump allocator over blocks of the notebook's memory pool, so
// that a cell's text costs a few instructions and counts towards the notebook's memory limit.
#ifndef QPSREADER_HOST_TEXT_ARENA_HPP
#define QPSREADER_HOST_TEXT_ARENA_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace qps {

class HeapPool;

// Made by Notebook::textArena. It keeps its pool alive, so it may outlive the notebook. Movable:
// the texts stay where they are; a moved-from arena is empty and gives no more texts.
class TextArena {
 public:
  explicit TextArena(std::shared_ptr<HeapPool> pool);
  TextArena(TextArena&& other) noexcept;
  TextArena& operator=(TextArena&& other) noexcept;
  ~TextArena();

  // A text may be read by words that begin in it: so many bytes after it can be read, whatever
  // they hold.
  static constexpr std::size_t kReadableBehind = 8;

  // `size` bytes (1 or more) without alignment, or null when the pool has no more room (failed() is
  // then true).
  void* allocate(std::size_t size) {
    if (size > static_cast<std::size_t>(end_ - cursor_)) return allocateSlow(size);
    char* const text = cursor_;
    cursor_ += size;
    std::memset(cursor_, 0, kReadableBehind);
    return text;
  }

  // Ends the life of every text and keeps one block for those that follow.
  void clear() {
    if (newest_ == nullptr) return;
    if (newest_->older != nullptr) releaseAfter(*newest_);
    cursor_ = newest_->text();
  }

  // Whether a text was ever refused.
  bool failed() const { return failed_; }

 private:
  struct Block {
    Block* older;
    std::size_t bytes;  // of text, after this structure; kReadableBehind more follow

    char* text() { return reinterpret_cast<char*>(this + 1); }
  };

  void* allocateSlow(std::size_t size);
  void releaseAfter(Block& block);
  void release();

  std::shared_ptr<HeapPool> pool_;
  Block* newest_ = nullptr;  // the block that cursor_ is in, linked to the older ones
  char* cursor_ = nullptr;
  char* end_ = nullptr;
  bool failed_ = false;
};

}  // namespace qps

#endif  // QPSREADER_HOST_TEXT_ARENA_HPP
