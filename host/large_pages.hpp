// SPDX-License-Identifier: MIT
//
// Large blocks of memory in large pages. The system hands memory over page by page, when each is
// touched first, which for a block of many megabytes takes longer than to fill it.
#ifndef QPSREADER_HOST_LARGE_PAGES_HPP
#define QPSREADER_HOST_LARGE_PAGES_HPP

#include <cstddef>

namespace qps {

// For a block that will be filled: asks for large pages, where the system has them and the block is
// large enough. What the block holds does not change.
void preferLargePages(void* block, std::size_t bytes);

}  // namespace qps

#endif  // QPSREADER_HOST_LARGE_PAGES_HPP
