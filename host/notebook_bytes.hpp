// SPDX-License-Identifier: MIT
//
// Where a notebook's bytes lie, and streams over them: several at a time, each with its own
// position.
#ifndef QPSREADER_HOST_NOTEBOOK_BYTES_HPP
#define QPSREADER_HOST_NOTEBOOK_BYTES_HPP

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <variant>

#include "host/expected.hpp"
#include "host/file.hpp"
#include "host/file_stream.hpp"
#include "host/heap_pool.hpp"
#include "host/memory_stream.hpp"

namespace qps {

// A regular file, or memory: the caller's, or a pool block that a pipe was read into.
class NotebookBytes {
 public:
  // The pool must outlive it.
  explicit NotebookBytes(HeapPool& pool) : pool_(pool) {}
  NotebookBytes(const NotebookBytes&) = delete;
  NotebookBytes& operator=(const NotebookBytes&) = delete;
  ~NotebookBytes() { pool_.free(block_); }

  // One of these, once.
  std::optional<Error> open(const std::filesystem::path& path);
  void borrow(std::span<const std::byte> bytes) { memory_ = bytes; }

  // Null when the bytes lie in memory.
  const File* file() const { return file_.get(); }
  std::span<const std::byte> memory() const { return memory_; }
  bool empty() const { return file_ ? file_->size() == 0 : memory_.empty(); }

 private:
  std::optional<Error> readPipe(const File& pipe);

  HeapPool& pool_;
  std::unique_ptr<File> file_;
  std::span<const std::byte> memory_;
  void* block_ = nullptr;
};

// A closed stream over the bytes, which must outlive it. It stays in place.
class NotebookStream {
 public:
  explicit NotebookStream(const NotebookBytes& bytes);
  NotebookStream(const NotebookStream&) = delete;
  NotebookStream& operator=(const NotebookStream&) = delete;

  SSStream& table() { return *table_; }

 private:
  std::variant<std::monostate, MemoryStream, FileStream> stream_;
  SSStream* table_;
};

}  // namespace qps

#endif  // QPSREADER_HOST_NOTEBOOK_BYTES_HPP
