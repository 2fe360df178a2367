// SPDX-License-Identifier: MIT
//
// Output and OutputFile; the C library's files are used because they are the same on every system.
#include "tool/output.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "tool/status.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <process.h>
#define fileno _fileno
#define getpid _getpid
#define isatty _isatty
#else
#include <unistd.h>
#endif

namespace qps {
namespace {

namespace fs = std::filesystem;

// Large enough that the system calls no longer show, small enough to stay in the cache.
constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

// Another process may be writing to the same folder, and a name may have been left by a process
// that was killed: the number goes up until the name is free.
fs::path temporaryName(const fs::path& folder, unsigned attempt) {
  return folder / (".qps-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp");
}

// "x" opens only a file that is not there, a dangling link included, so that nothing that stands in
// the folder can lead the bytes elsewhere.
std::FILE* createTemporary(const fs::path& folder, fs::path& name) {
  for (unsigned attempt = 0;; ++attempt) {
    name = temporaryName(folder, attempt);
    errno = 0;
    if (std::FILE* const file = std::fopen(name.string().c_str(), "wbx")) return file;
    if (errno != EEXIST) throw WriteError{errno};
  }
}

}  // namespace

std::string WriteError::message() const {
  return std::generic_category().message(error);
}

Output::Output(std::FILE* file)
    : file_(file),
      terminal_(isatty(fileno(file)) != 0),
      capacity_(kBlockBytes),
      block_(new char[kBlockBytes]),
      cursor_(block_.get()),
      end_(block_.get() + kBlockBytes) {
  std::setvbuf(file, nullptr, _IONBF, 0);
#if defined(_WIN32)
  _setmode(_fileno(file), _O_BINARY);
#endif
}

Output::Output(const Output& real, std::uint64_t most)
    : file_(nullptr),
      terminal_(real.terminal_),
      bytesLeft_(most),
      capacity_(kBlockBytes),
      block_(new char[kBlockBytes]),
      cursor_(block_.get()),
      end_(block_.get() + kBlockBytes) {}

void Output::flush() {
  const auto size = static_cast<std::size_t>(cursor_ - block_.get());
  cursor_ = block_.get();
  if (file_ == nullptr) {
    if (size > bytesLeft_)
      throw Failure{Status::kLimit, "the limit of output was reached (--max-output)"};
    bytesLeft_ -= size;
    return;
  }
  errno = 0;
  if (size > 0 && std::fwrite(block_.get(), 1, size, file_) != size) throw WriteError{errno};
}

OutputFile::OutputFile(const fs::path& folder, const std::string& name)
    : target_(folder / fs::path(std::u8string(name.begin(), name.end()))),
      file_(createTemporary(folder, temporary_)),
      out_(file_) {}

OutputFile::~OutputFile() {
  if (file_ != nullptr) std::fclose(file_);
  std::error_code ignored;
  if (!temporary_.empty()) fs::remove(temporary_, ignored);
}

void OutputFile::finish() {
  out_.flush();
  errno = 0;
  if (std::fclose(std::exchange(file_, nullptr)) != 0) throw WriteError{errno};
  std::error_code error;
  fs::rename(temporary_, target_, error);
  if (error) throw WriteError{error.value()};
  temporary_.clear();
}

}  // namespace qps
