// SPDX-License-Identifier: MIT
//
// Where a notebook's bytes lie, and streams over them: several at a time, each with its own
// position.
#ifndef QPSREADER_HOST_NOTEBOOK_BYTES_HPP
#define QPSREADER_HOST_NOTEBOOK_BYTES_HPP

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <variant>

#include <qpsreader/host/expected.hpp>
#include "host/file.hpp"
#include "host/file_stream.hpp"
#include "host/heap_pool.hpp"
#include "host/memory_stream.hpp"

namespace qps {

// Memory, the caller's or a pool block that a file was read into; or a file that is read in blocks
// because it is large.
class NotebookBytes {
 public:
  // The pool must outlive it. A file of more bytes than `mostInMemory` is read in blocks.
  NotebookBytes(HeapPool& pool, std::uint64_t mostInMemory)
      : pool_(pool), mostInMemory_(mostInMemory) {}
  NotebookBytes(const NotebookBytes&) = delete;
  NotebookBytes& operator=(const NotebookBytes&) = delete;
  ~NotebookBytes() { pool_.free(block_); }

  // One of these, once.
  std::optional<Error> open(const std::filesystem::path& path);
  void borrow(std::span<const std::byte> bytes) { memory_ = bytes; }

  // In their place from now on: a pool block, which goes back with this. No stream is over them.
  void replace(std::byte* block, std::size_t size);

  // The file that is read in blocks; null when the bytes lie in memory.
  const File* file() const { return file_.get(); }
  std::span<const std::byte> memory() const { return memory_; }
  // Why the file could not be read to its end; none when it could.
  std::optional<Error> readError() const;
  bool empty() const { return file_ ? file_->size() == 0 : memory_.empty(); }

 private:
  std::optional<Error> readFile(const File& file);
  std::optional<Error> readPipe(const File& pipe);
  bool resizeBlock(std::size_t size);

  HeapPool& pool_;
  std::uint64_t mostInMemory_;
  std::unique_ptr<File> file_;
  std::span<const std::byte> memory_;
  std::byte* block_ = nullptr;
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
