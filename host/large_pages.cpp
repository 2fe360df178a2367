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
  constexpr std::size_t kWorthwhile = std::size_t{4} << 20;
  if (bytes < kWorthwhile) return;
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(block) % page;
  ::madvise(static_cast<std::byte*>(block) - before, bytes + before, MADV_HUGEPAGE);
#endif
}

}  // namespace qps
