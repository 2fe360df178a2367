// SPDX-License-Identifier: MIT
#include "tool/xlsx_library.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <utility>

#include "tool/output.h"
#include "tool/status.h"

namespace qps {
namespace {

XlsxTemporaries* current = nullptr;

int fileOf(void* cookie) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(cookie));
}

ssize_t readFile(void* cookie, char* bytes, std::size_t size) {
  return ::read(fileOf(cookie), bytes, size);
}

ssize_t writeFile(void* cookie, const char* bytes, std::size_t size) {
  return current == nullptr ? 0 : current->write(fileOf(cookie), bytes, size);
}

int seekFile(void* cookie, off64_t* offset, int whence) {
  *offset = ::lseek64(fileOf(cookie), *offset, whence);
  return *offset < 0 ? -1 : 0;
}

int closeFile(void* cookie) {
  return ::close(fileOf(cookie));
}

ssize_t writeNothing(void*, const char*, std::size_t size) {
  return static_cast<ssize_t>(size);
}

// A file without a name; where the file system has no such thing, one that loses its name at once.
int openTemporary(const std::string& folder) {
  const int file = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (file >= 0) return file;
  const std::string name = folder + "/.qps-" + std::to_string(::getpid()) + "-part.tmp";
  const int named = ::open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
  if (named >= 0) ::unlink(name.c_str());
  return named;
}

}  // namespace

const XlsxLibrary& xlsxLibrary() {
  static const XlsxLibrary kLibrary = [] {
    void* const handle = ::dlopen("libxlsxwriter.so." LXW_SOVERSION, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw Failure{Status::kFailed, ::dlerror()};
    XlsxLibrary library{};
#define QPS_FIND(name)                                                             \
  library.name = reinterpret_cast<decltype(library.name)>(::dlsym(handle, #name)); \
  if (library.name == nullptr) throw Failure{Status::kFailed, ::dlerror()};
    QPS_XLSX_FUNCTIONS(QPS_FIND)
#undef QPS_FIND
    return library;
  }();
  return kLibrary;
}

XlsxTemporaries::XlsxTemporaries(std::string folder, std::uint64_t mostBytes)
    : folder_(std::move(folder)),
      bytesLeft_(mostBytes == 0 ? std::numeric_limits<std::uint64_t>::max() : mostBytes),
      standardError_(stderr),
      nothing_(::fopencookie(nullptr, "w", {nullptr, writeNothing, nullptr, nullptr})) {
  current = this;
  if (nothing_ != nullptr) stderr = nothing_;
}

XlsxTemporaries::~XlsxTemporaries() {
  stderr = standardError_;
  if (nothing_ != nullptr) std::fclose(nothing_);
  current = nullptr;
}

void XlsxTemporaries::check() const {
  if (tooMuch_) throw Failure{Status::kLimit, "the limit of output was reached (--max-output)"};
  if (error_ != 0) throw WriteError{error_};
}

std::FILE* XlsxTemporaries::make() {
  const int file = openTemporary(folder_);
  if (file < 0) {
    if (error_ == 0) error_ = errno;
    return nullptr;
  }
  // A cookie may be any word. NOLINTNEXTLINE(performance-no-int-to-ptr)
  void* const cookie = reinterpret_cast<void*>(std::intptr_t{file});
  return ::fopencookie(cookie, "w+", {readFile, writeFile, seekFile, closeFile});
}

long XlsxTemporaries::write(int file, const char* bytes, std::size_t size) {
  tooMuch_ = tooMuch_ || size > bytesLeft_;
  if (tooMuch_ || error_ != 0) return 0;
  bytesLeft_ -= size;
  for (std::size_t done = 0; done < size;) {
    const ssize_t count = ::write(file, bytes + done, size - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      error_ = count < 0 ? errno : EIO;
      return 0;
    }
    done += static_cast<std::size_t>(count);
  }
  return static_cast<long>(size);
}

}  // namespace qps

// The library calls this one instead of its own: the dynamic linker looks into the program first.
extern "C" [[gnu::visibility("default")]] std::FILE* lxw_tmpfile(char* /*folder*/) {
  return qps::current == nullptr ? nullptr : qps::current->make();
}
