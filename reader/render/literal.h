// SPDX-License-Identifier: MIT
//
// The quoted literals of both user-defined format languages.
#ifndef QPSREADER_RENDER_LITERAL_H
#define QPSREADER_RENDER_LITERAL_H

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace qps {

inline constexpr char kQuote = '\'';

// Takes a literal off `rest`, which begins after the opening quote: returns the characters up to
// the closing quote, which is taken off too, or up to the end when there is none.
constexpr std::string_view takeLiteral(std::string_view& rest) {
  const std::string_view literal = rest.substr(0, rest.find(kQuote));
  rest.remove_prefix(std::min(literal.size() + 1, rest.size()));
  return literal;
}

}  // namespace qps

#endif  // QPSREADER_RENDER_LITERAL_H
