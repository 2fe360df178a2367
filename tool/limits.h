// SPDX-License-Identifier: MIT
//
// What one notebook may cost. A few bytes of a file can ask for very much (a record of ten bytes
// names 65,536 row heights, two cells in opposite corners make 16 MB of separators), so that each
// quantity that is not bounded by the file's size has a limit. Above it is Status::kLimit.
#ifndef QPSREADER_TOOL_LIMITS_H
#define QPSREADER_TOOL_LIMITS_H

#include <cstdint>

namespace qps {

class Notebook;

// Throws Failure for more worksheets, or more definitions in all of them, than a notebook has: what
// it costs to open so many worksheets of it. Each reads the records before the first one again.
void checkOpening(const Notebook& notebook, std::uint64_t worksheets, std::uint64_t fileBytes);

// A worksheet has 65,536 rows; a file may give the height of each more than once.
constexpr std::uint64_t kMostRowHeightsOfSheet = std::uint64_t{4} << 16;

// Of all worksheets together: those of 32 worksheets whose rows are all set by one record, and one
// for each byte of the file, in which no row by itself takes less than eight.
constexpr std::uint64_t mostRowHeights(std::uint64_t fileBytes) {
  return (std::uint64_t{32} << 16) + fileBytes;
}

// Unless --max-output says something else. A cell takes at least ten bytes of the file, and what is
// printed of it with its style is about fifty times as much.
constexpr std::uint64_t defaultMaxOutput(std::uint64_t fileBytes) {
  return (std::uint64_t{64} << 20) + 256 * fileBytes;
}

}  // namespace qps

#endif  // QPSREADER_TOOL_LIMITS_H
