// SPDX-License-Identifier: MIT
//
// Opening the bytes; a pipe is read to its end first, because the reader goes over a file more than
// once.
#include "host/notebook_bytes.hpp"

#include <algorithm>
#include <utility>

namespace qps {
namespace {

// The reader's start offsets have 32 bits: bytes beyond could not be reached. This also bounds a
// device that never ends.
constexpr std::size_t kMostPipeBytes = 0xFFFFFFFFu;
constexpr std::size_t kFirstPipeBytes = std::size_t{64} << 10;

}  // namespace

std::optional<Error> NotebookBytes::open(const std::filesystem::path& path) {
  auto opened = File::open(path);
  if (!opened) return opened.error();
  if (!(*opened)->isRegular()) return readPipe(**opened);
  file_ = *std::move(opened);
  return std::nullopt;
}

std::optional<Error> NotebookBytes::readPipe(const File& pipe) {
  std::size_t filled = 0;
  std::size_t room = 0;
  while (filled == room) {
    if (room == kMostPipeBytes) return Error{Reason::kMemoryLimit, "longer than 4 GiB"};
    room = room == 0 ? kFirstPipeBytes : room > kMostPipeBytes / 2 ? kMostPipeBytes : room * 2;
    void* const larger = pool_.resize(block_, room);
    if (larger == nullptr) return Error{Reason::kMemoryLimit, "the memory limit was reached"};
    block_ = larger;
    filled += pipe.readAt(0, static_cast<std::byte*>(block_) + filled, room - filled);
  }
  if (const std::string failure = pipe.readError(); !failure.empty())
    return Error{Reason::kUnreadable, failure};
  if (void* const exact = pool_.resize(block_, std::max<std::size_t>(filled, 1))) block_ = exact;
  memory_ = {static_cast<const std::byte*>(block_), filled};
  return std::nullopt;
}

NotebookStream::NotebookStream(const NotebookBytes& bytes) {
  if (bytes.file() != nullptr) {
    table_ = &stream_.emplace<FileStream>(*bytes.file());
  } else {
    table_ = &stream_.emplace<MemoryStream>(bytes.memory());
  }
}

}  // namespace qps
