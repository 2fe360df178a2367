// SPDX-License-Identifier: MIT
//
// libxlsxwriter without files: it is linked in, and the files that it makes are in memory.
#include "viewer/module/workbook.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <utility>

#include "tool/status.h"
#include "tool/xlsx_library.h"

namespace qps {
namespace {

struct MemoryFile {
  std::vector<char> bytes;
  std::size_t at = 0;
};

XlsxTemporaries* current = nullptr;
std::vector<std::unique_ptr<MemoryFile>> files;
std::vector<char> workbook;

MemoryFile& fileOf(void* cookie) {
  return *files[reinterpret_cast<std::size_t>(cookie)];
}

ssize_t readFile(void* cookie, char* bytes, std::size_t size) {
  MemoryFile& file = fileOf(cookie);
  const std::size_t count = std::min(size, file.bytes.size() - file.at);
  std::copy_n(file.bytes.data() + file.at, count, bytes);
  file.at += count;
  return static_cast<ssize_t>(count);
}

ssize_t writeFile(void* cookie, const char* bytes, std::size_t size) {
  return current->write(static_cast<int>(reinterpret_cast<std::size_t>(cookie)), bytes, size);
}

int seekFile(void* cookie, off_t* offset, int whence) {
  MemoryFile& file = fileOf(cookie);
  const std::size_t from = whence == SEEK_SET   ? 0
                           : whence == SEEK_CUR ? file.at
                                                : file.bytes.size();
  *offset += static_cast<off_t>(from);
  if (*offset < 0 || *offset > static_cast<off_t>(file.bytes.size())) return -1;
  file.at = static_cast<std::size_t>(*offset);
  return 0;
}

int closeTemporary(void* cookie) {
  fileOf(cookie) = {};
  return 0;
}

int closeWorkbook(void* cookie) {
  workbook = std::move(fileOf(cookie).bytes);
  return 0;
}

std::FILE* makeFile(int (*close)(void*)) {
  files.push_back(std::make_unique<MemoryFile>());
  // A cookie may be any word.
  return ::fopencookie(reinterpret_cast<void*>(files.size() - 1), "w+",
                       {readFile, writeFile, seekFile, close});
}

}  // namespace

const XlsxLibrary& xlsxLibrary() {
#define QPS_OWN(name) .name = &::name,
  static constexpr XlsxLibrary kLibrary{QPS_XLSX_FUNCTIONS(QPS_OWN)};
#undef QPS_OWN
  return kLibrary;
}

XlsxTemporaries::XlsxTemporaries(std::string, std::uint64_t mostBytes)
    : bytesLeft_(mostBytes == 0 ? std::numeric_limits<std::uint64_t>::max() : mostBytes) {
  current = this;
}

XlsxTemporaries::~XlsxTemporaries() {
  current = nullptr;
  files.clear();
}

void XlsxTemporaries::check() const {
  if (tooMuch_) throw Failure{Status::kLimit, "the memory limit was reached"};
}

std::FILE* XlsxTemporaries::make() {
  return makeFile(closeTemporary);
}

long XlsxTemporaries::write(int number, const char* bytes, std::size_t size) {
  MemoryFile& file = *files[static_cast<std::size_t>(number)];
  const std::size_t end = file.at + size;
  const std::size_t added = end - std::min(end, file.bytes.size());
  tooMuch_ = tooMuch_ || added > bytesLeft_;
  if (tooMuch_) return 0;
  bytesLeft_ -= added;
  if (added > 0) file.bytes.resize(end);
  std::copy_n(bytes, size, file.bytes.data() + file.at);
  file.at = end;
  return static_cast<long>(size);
}

std::vector<char> takeWorkbook() {
  return std::exchange(workbook, {});
}

}  // namespace qps

extern "C" {

// What the library opens temporary files with.
std::FILE* tmpfileplus(const char*, const char*, char**, int) {
  return qps::current->make();
}

// And the workbook itself: the name that its sources are compiled with for std::fopen.
std::FILE* qpsOpenWorkbook(const char*, const char*) {
  return qps::makeFile(qps::closeWorkbook);
}
}
