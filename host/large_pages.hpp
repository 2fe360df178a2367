// SPDX-License-Identifier: MIT
#ifndef QPSREADER_HOST_LARGE_PAGES_HPP
#define QPSREADER_HOST_LARGE_PAGES_HPP

#include <cstddef>

namespace qps {

// Asks the system for large pages for a block that will be filled, where that pays: from some
// megabytes on it takes longer to hand a block over page by page than to fill it.
void preferLargePages(void* block, std::size_t bytes);

}  // namespace qps

#endif  // QPSREADER_HOST_LARGE_PAGES_HPP
