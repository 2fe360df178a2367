// SPDX-License-Identifier: MIT
//
// Files by the POSIX functions.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

#include "host/file.hpp"

namespace qps {
namespace {

static_assert(sizeof(off_t) == 8, "large files need 64-bit offsets");

std::string systemMessage(int number) {
  return std::generic_category().message(number);
}

int descriptorOf(std::intptr_t handle) {
  return static_cast<int>(handle);
}

}  // namespace

Expected<std::unique_ptr<File>> File::open(const std::filesystem::path& path) {
  std::unique_ptr<File> file(new File);
  do {
    file->handle_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  } while (file->handle_ < 0 && errno == EINTR);
  if (file->handle_ < 0) return Error{Reason::kUnreadable, systemMessage(errno)};

  struct stat status {};
  if (::fstat(descriptorOf(file->handle_), &status) != 0)
    return Error{Reason::kUnreadable, systemMessage(errno)};
  if (S_ISDIR(status.st_mode)) return Error{Reason::kUnreadable, systemMessage(EISDIR)};

  file->regular_ = S_ISREG(status.st_mode);
  if (file->regular_) file->size_ = static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
  return file;
}

File::~File() {
  if (handle_ >= 0) ::close(descriptorOf(handle_));
}

std::size_t File::readAt(std::uint64_t offset, void* buffer, std::size_t count) const {
  std::size_t done = 0;
  while (done < count) {
    char* const to = static_cast<char*>(buffer) + done;
    const ssize_t got = regular_ ? ::pread(descriptorOf(handle_), to, count - done,
                                           static_cast<off_t>(offset + done))
                                 : ::read(descriptorOf(handle_), to, count - done);
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      if (readErrorNumber_ == 0) readErrorNumber_ = errno;
      break;
    }
    done += static_cast<std::size_t>(got);
  }
  return done;
}

std::string File::readError() const {
  return readErrorNumber_ == 0 ? std::string() : systemMessage(readErrorNumber_);
}

}  // namespace qps
