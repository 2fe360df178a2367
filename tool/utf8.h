// SPDX-License-Identifier: MIT
#ifndef QPSREADER_TOOL_UTF8_H
#define QPSREADER_TOOL_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qps {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
  char32_t character;
  std::size_t size;  // in bytes; 1 for one that is not well formed
  bool valid;
};

// The character at the start of a text that is not empty. A byte that begins none (overlong, a
// surrogate, cut short) counts as U+FFFD.
Decoded firstCharacter(std::string_view text);

// For a character of Unicode.
void appendCharacter(char32_t character, std::string& result);

}  // namespace qps

#endif  // QPSREADER_TOOL_UTF8_H
