// SPDX-License-Identifier: MIT
//
// Opening the bytes. A file is gone over more than once (listing, items, the search for damage), so
// one that fits is read into memory: this takes a third of the time, and nothing can change
// meanwhile. A pipe must be read whole in any case.
#include "host/notebook_bytes.hpp"

#include <algorithm>
#include <utility>

#include "host/large_pages.hpp"

namespace qps {
namespace {

// The reader's start offsets have 32 bits: bytes beyond could not be reached. This also bounds a
// device that never ends.
constexpr std::size_t kMostPipeBytes = 0xFFFFFFFFu;
constexpr std::size_t kFirstPipeBytes = std::size_t{64} << 10;

std::optional<Error> readErrorOf(const File& file) {
  const std::string failure = file.readError();
  if (failure.empty()) return std::nullopt;
  return Error{Reason::kUnreadable, failure};
}

}  // namespace

std::optional<Error> NotebookBytes::open(const std::filesystem::path& path) {
  auto opened = File::open(path);
  if (!opened) return opened.error();
  if (!(*opened)->isRegular()) return readPipe(**opened);
  if ((*opened)->size() <= mostInMemory_) return readFile(**opened);
  file_ = *std::move(opened);
  return std::nullopt;
}

std::optional<Error> NotebookBytes::readFile(const File& file) {
  const auto size = static_cast<std::size_t>(file.size());
  if (!resizeBlock(std::max<std::size_t>(size, 1))) return memoryLimitError();
  preferLargePages(block_, size);
  memory_ = {block_, file.readAt(0, block_, size)};
  return readErrorOf(file);
}

std::optional<Error> NotebookBytes::readPipe(const File& pipe) {
  std::size_t filled = 0;
  std::size_t room = 0;
  while (filled == room) {
    if (room == kMostPipeBytes) return Error{Reason::kMemoryLimit, "longer than 4 GiB"};
    room = room <= kMostPipeBytes / 2 ? std::max(room * 2, kFirstPipeBytes) : kMostPipeBytes;
    if (!resizeBlock(room)) return memoryLimitError();
    filled += pipe.readAt(0, block_ + filled, room - filled);
  }
  resizeBlock(std::max<std::size_t>(filled, 1));  // gives back what was too much
  memory_ = {block_, filled};
  return readErrorOf(pipe);
}

void NotebookBytes::replace(std::byte* block, std::size_t size) {
  file_.reset();
  pool_.free(block_);
  block_ = block;
  memory_ = {block, size};
}

bool NotebookBytes::resizeBlock(std::size_t size) {
  void* const larger = pool_.resize(block_, size);
  if (larger == nullptr) return false;
  block_ = static_cast<std::byte*>(larger);
  return true;
}

std::optional<Error> NotebookBytes::readError() const {
  return file_ ? readErrorOf(*file_) : std::nullopt;
}

NotebookStream::NotebookStream(const NotebookBytes& bytes) {
  if (bytes.file() != nullptr) {
    table_ = &stream_.emplace<FileStream>(*bytes.file());
  } else {
    table_ = &stream_.emplace<MemoryStream>(bytes.memory());
  }
}

}  // namespace qps
