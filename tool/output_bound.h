// SPDX-License-Identifier: MIT
#ifndef QPSREADER_TOOL_OUTPUT_BOUND_H
#define QPSREADER_TOOL_OUTPUT_BOUND_H

#include <cstdint>

#include "tool/commands.h"

namespace qps {

// No writer prints more bytes of a document that was read for this need and with these settings. A
// coarse bound, but found without a look at any cell.
std::uint64_t outputBound(const Document& document, Need need, const Settings& settings);

}  // namespace qps

#endif  // QPSREADER_TOOL_OUTPUT_BOUND_H
