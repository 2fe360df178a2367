// SPDX-License-Identifier: MIT
//
// What formatted printing says: the reference for the reader's own number texts.
#ifndef QPSREADER_TESTS_RENDER_PRINTED_H
#define QPSREADER_TESTS_RENDER_PRINTED_H

#include <cstdio>
#include <string>

namespace qps {

template <typename Value>
std::string printed(const char* format, int precision, Value value) {
  char text[1024];
  const int size = std::snprintf(text, sizeof text, format, precision, value);
  return {text, static_cast<std::size_t>(size)};
}

// A number with "," between each three digits before its point.
inline std::string grouped(std::string number) {
  const std::size_t first = number.front() == '-' ? 1 : 0;
  for (std::size_t at = std::min(number.find('.'), number.size()); at > first + 3;) {
    number.insert(at -= 3, 1, ',');
  }
  return number;
}

}  // namespace qps

#endif  // QPSREADER_TESTS_RENDER_PRINTED_H
