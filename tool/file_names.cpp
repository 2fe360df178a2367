// SPDX-License-Identifier: MIT
#include "tool/file_names.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include "tool/status.h"
#endif

namespace qps {

namespace fs = std::filesystem;

#if defined(_WIN32)

namespace {

std::string bytesOf(const std::u8string& utf8) {
  return {utf8.begin(), utf8.end()};
}

}  // namespace

fs::path filePathOf(std::string_view name) try {
  return std::u8string(name.begin(), name.end());
} catch (const fs::filesystem_error&) {
  throw Failure{Status::kFailed, "the name is not UTF-8"};
}

std::string fileNameOf(const fs::path& path) {
  return bytesOf(path.u8string());
}

std::string genericFileNameOf(const fs::path& path) {
  return bytesOf(path.generic_u8string());
}

std::FILE* openFile(const fs::path& path, const char* mode) {
  return ::_wfopen(path.c_str(), fs::path(mode).c_str());
}

// Not every C library of the system knows "x" in std::fopen.
std::FILE* createFile(const fs::path& path) {
  const int file = ::_wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY | _O_NOINHERIT,
                            _S_IREAD | _S_IWRITE);
  return file < 0 ? nullptr : ::_fdopen(file, "wb");
}

#else

fs::path filePathOf(std::string_view name) {
  return name;
}

std::string fileNameOf(const fs::path& path) {
  return path.string();
}

std::string genericFileNameOf(const fs::path& path) {
  return path.generic_string();
}

std::FILE* openFile(const fs::path& path, const char* mode) {
  return std::fopen(path.c_str(), mode);
}

std::FILE* createFile(const fs::path& path) {
  return std::fopen(path.c_str(), "wbx");
}

#endif

}  // namespace qps
