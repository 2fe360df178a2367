// SPDX-License-Identifier: MIT
#ifndef QPSREADER_TOOL_OUTPUT_BOUND_H
#define QPSREADER_TOOL_OUTPUT_BOUND_H

#include <cstdint>

namespace qps {

struct Document;

// No writer prints more bytes of the document than this. A coarse bound, but found without a look
// at any cell.
std::uint64_t outputBound(const Document& document);

}  // namespace qps

#endif  // QPSREADER_TOOL_OUTPUT_BOUND_H
