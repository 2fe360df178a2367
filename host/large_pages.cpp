// SPDX-License-Identifier: MIT
#include "host/large_pages.hpp"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#endif

namespace qps {

void preferLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#if defined(__linux__)
  constexpr std::size_t kWorthwhile = std::size_t{1} << 20;
  if (bytes < kWorthwhile) return;
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(block) % page;
  // With malloc's own word after the block: a mapping of which a part was asked for could not grow.
  const std::size_t whole = before + bytes + sizeof(std::size_t);
  ::madvise(static_cast<std::byte*>(block) - before, whole, MADV_HUGEPAGE);
#endif
}

}  // namespace qps
