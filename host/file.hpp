// SPDX-License-Identifier: MIT
//
// A file opened for reading at stated offsets; the one place that calls the platform's file
// functions (file_posix.cpp, file_windows.cpp).
#ifndef QPSREADER_HOST_FILE_HPP
#define QPSREADER_HOST_FILE_HPP

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include <qpsreader/host/expected.hpp>

namespace qps {

// Reading at an offset keeps no position, so that several streams can share one File.
class File {
 public:
  // Fails with kUnreadable for what cannot be opened, folders included.
  static Expected<std::unique_ptr<File>> open(const std::filesystem::path& path);

  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File();

  // A regular file can be read at any offset; anything else only from front to end, once.
  bool isRegular() const { return regular_; }

  // The size in bytes when it was opened; 0 when it is not regular.
  std::uint64_t size() const { return size_; }

  // Reads up to `count` bytes and returns how many there were; fewer than asked is the end of the
  // file or an error. `offset` is ignored (bytes come in turn) when the file is not regular.
  std::size_t readAt(std::uint64_t offset, void* buffer, std::size_t count) const;

  // The system's words for the first read that failed; "" when none did.
  std::string readError() const;

 private:
  File() = default;

  std::intptr_t handle_ = -1;
  std::uint64_t size_ = 0;
  bool regular_ = false;
  mutable int readErrorNumber_ = 0;
};

}  // namespace qps

#endif  // QPSREADER_HOST_FILE_HPP
