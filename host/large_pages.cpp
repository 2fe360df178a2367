// SPDX-License-Identifier: MIT
#include "host/large_pages.hpp"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#endif

namespace qps {

#if defined(__linux__)

void preferLargePages(void* block, std::size_t bytes) {
  constexpr std::size_t kWorthwhile = std::size_t{4} << 20;
  if (bytes < kWorthwhile) return;
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(block) % page;
  // From the page that the block begins in to the one that it ends in. Advice that the system does
  // not take changes nothing.
  ::madvise(static_cast<std::byte*>(block) - before, bytes + before, MADV_HUGEPAGE);
}

#else

void preferLargePages(void* /*block*/, std::size_t /*bytes*/) {}

#endif

}  // namespace qps
