// SPDX-License-Identifier: MIT
//
// WebAssembly has no files: a notebook is opened from bytes in memory.
#include "host/file.hpp"

namespace qps {

Expected<std::unique_ptr<File>> File::open(const std::filesystem::path&) {
  return Error{Reason::kUnreadable, "there are no files here"};
}

File::~File() = default;

std::size_t File::readAt(std::uint64_t, void*, std::size_t) const {
  return 0;
}

std::string File::readError() const {
  return {};
}

}  // namespace qps
