// SPDX-License-Identifier: MIT
//
// The digits of "%.*f" by exact integer arithmetic, for the values and decimals that cells use, and
// by std::to_chars for all others. Only TextBuffer calls what writes: it knows about bounds.
#ifndef QPSREADER_RENDER_FIXED_POINT_H
#define QPSREADER_RENDER_FIXED_POINT_H

#include <cstddef>

#include "reader/render/short_fixed.h"

namespace qps {

inline constexpr int kMostDecimals = 511;

// Sign, integer digits (309 for the largest double), point and decimals.
inline constexpr std::size_t kFixedTextRoom = 1 + 309 + 1 + kMostDecimals;

// What writeExactFixed may touch: a sign, 20 integer digits with 6 separators, a point, 19
// decimals, each run of digits rounded up to whole words.
inline constexpr std::size_t kExactFixedRoom = 64;

// Writes `value` as "%.*f" prints it and returns the end of the text, or null with `out` in any
// state when the value or the decimals (0 and up) lie outside what the integers hold. `out` has
// room for kExactFixedRoom bytes; nothing is terminated.
char* writeExactFixed(char* out, double value, int decimals, Separators separators);

// The same for every finite value and 0 to kMostDecimals decimals; `out` has room for
// kFixedTextRoom bytes, and there are no separators.
char* writeFixed(char* out, double value, int decimals);

}  // namespace qps

#endif  // QPSREADER_RENDER_FIXED_POINT_H
