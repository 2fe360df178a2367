// SPDX-License-Identifier: MIT
//
// Files by the Windows functions.
#include <windows.h>

#include <algorithm>
#include <system_error>

#include "host/file.hpp"

namespace qps {
namespace {

HANDLE handleOf(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

std::string systemMessage(DWORD number) {
  return std::system_category().message(static_cast<int>(number));
}

}  // namespace

Expected<std::unique_ptr<File>> File::open(const std::filesystem::path& path) {
  std::unique_ptr<File> file(new File);
  const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE)
    return Error{Reason::kUnreadable, systemMessage(GetLastError())};
  file->handle_ = reinterpret_cast<std::intptr_t>(handle);

  LARGE_INTEGER size{};
  file->regular_ = GetFileType(handle) == FILE_TYPE_DISK && GetFileSizeEx(handle, &size) != 0;
  if (file->regular_) file->size_ = static_cast<std::uint64_t>(size.QuadPart);
  return file;
}

File::~File() {
  if (handle_ != -1) CloseHandle(handleOf(handle_));
}

std::size_t File::readAt(std::uint64_t offset, void* buffer, std::size_t count) const {
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;  // ReadFile counts in 32 bits
  std::size_t done = 0;
  while (done < count) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>((offset + done) & 0xFFFFFFFFu);
    at.OffsetHigh = static_cast<DWORD>((offset + done) >> 32);
    DWORD got = 0;
    const auto wanted = static_cast<DWORD>(std::min(count - done, kMostAtOnce));
    if (ReadFile(handleOf(handle_), static_cast<char*>(buffer) + done, wanted, &got,
                 regular_ ? &at : nullptr) == 0) {
      const DWORD number = GetLastError();
      const bool ended = number == ERROR_HANDLE_EOF || number == ERROR_BROKEN_PIPE;
      if (!ended && readErrorNumber_ == 0) readErrorNumber_ = static_cast<int>(number);
      break;
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}

std::string File::readError() const {
  return readErrorNumber_ == 0 ? std::string()
                               : systemMessage(static_cast<DWORD>(readErrorNumber_));
}

}  // namespace qps
