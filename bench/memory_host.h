// SPDX-License-Identifier: MIT
//
// The leanest host there can be: a stream over bytes, a pool that is malloc, and item texts from a
// bump allocator. What a benchmark measures on it is the reader, and what the interface costs.
#ifndef QPSREADER_BENCH_MEMORY_HOST_H
#define QPSREADER_BENCH_MEMORY_HOST_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <qpsreader/host_tables.h>

namespace qps::bench {

class MemoryHost {
 public:
  // The bytes are not copied.
  explicit MemoryHost(std::span<const std::byte> file);
  MemoryHost(const MemoryHost&) = delete;
  MemoryHost& operator=(const MemoryHost&) = delete;

  SSStream* stream() { return &stream_; }
  SSHostServices* services() { return &services_; }

  // The context of itemAlloc is the host.
  static void* itemAlloc(void* context, void* block, std::size_t size, std::uint32_t flags);

  // Ends the life of all item texts; their blocks serve the next ones.
  void dropTexts();

 private:
  static constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

  static MemoryHost& of(SSStream* stream);
  void* allocateText(std::size_t size);
  void installStream();
  void installServices();

  SSStream stream_{};  // first: a stream's host stands at its address
  SSHostServices services_{};
  std::span<const std::byte> file_;
  std::size_t position_ = 0;
  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t nextBlock_ = 0;
  char* text_ = nullptr;
  char* textEnd_ = nullptr;
};

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_MEMORY_HOST_H
