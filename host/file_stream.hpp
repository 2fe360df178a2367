// SPDX-License-Identifier: MIT
//
// An SSStream over a regular file, read in blocks so that two small reads a record do not become
// two system calls. Blocks and no mapping: a file that is cut short meanwhile then shows as a short
// read, where touching a mapped page would end the process.
#ifndef QPSREADER_HOST_FILE_STREAM_HPP
#define QPSREADER_HOST_FILE_STREAM_HPP

#include <cstddef>
#include <cstdint>
#include <memory>

#include <qpsreader/host_tables.h>
#include "host/file.hpp"

namespace qps {

// The file is borrowed and must outlive the stream; several streams may share it. The stream ends
// where the file ended when it was opened. Moving to a position beyond that fails and leaves the
// stream where it was, as in MemoryStream.
class FileStream : public SSStream {
 public:
  explicit FileStream(const File& file);
  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;

 private:
  static std::int32_t openStream(SSStream* stream);
  static std::size_t readBytes(SSStream* stream, void* buffer, std::size_t count);
  static std::int32_t seekTo(SSStream* stream, std::ptrdiff_t offset, std::int32_t origin);
  static void closeStream(SSStream* stream);

  std::uint64_t position() const {
    return blockOffset_ + static_cast<std::uint64_t>(cursor_ - block_.get());
  }
  std::size_t readAcrossBlocks(std::byte* buffer, std::size_t count);
  bool fillBlock();

  const File& file_;
  std::unique_ptr<std::byte[]> block_;  // allocated from open to close
  std::byte* cursor_ = nullptr;         // the next byte, in block_ or at its end
  std::byte* end_ = nullptr;            // the end of the bytes that block_ holds
  std::uint64_t blockOffset_ = 0;       // where block_'s first byte lies in the file
  std::uint64_t nextOffset_ = 0;        // where the last block that was read ended
  std::size_t blockBytes_ = 0;          // how much was asked for then
};

}  // namespace qps

#endif  // QPSREADER_HOST_FILE_STREAM_HPP
