// SPDX-License-Identifier: MIT
#include "render/text_buffer.h"

#include <charconv>

#include "render/digits.h"
#include "render/fixed_point.h"

namespace qps {
namespace {

// A point and an exponent of up to three digits with its sign, beside the sign and the first digit.
constexpr size_t kScientificTextRoom = 2 + 1 + kMostDecimals + 5;

}  // namespace

void TextBuffer::appendInteger(int32_t value, int minDigits) {
  char digits[kDigitsRoom];
  const uint32_t magnitude =
      value < 0 ? 0U - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
  const auto count = static_cast<int>(writeDigits(digits, magnitude) - digits);
  if (value < 0) append('-');
  for (int i = count; i < minDigits; ++i)
    append('0');
  append(std::string_view(digits, static_cast<size_t>(count)));
}

void TextBuffer::appendFixed(double value, int decimals) {
  if (room() >= kExactFixedRoom) {
    if (char* end = writeExactFixed(end_, value, decimals, Separators::kNone)) {
      end_ = end;
      *end_ = '\0';
      return;
    }
  }
  char text[kFixedTextRoom];
  append(std::string_view(text, static_cast<size_t>(writeFixed(text, value, decimals) - text)));
}

void TextBuffer::appendScientific(double value, int decimals) {
  char text[kScientificTextRoom];
  char* end = std::to_chars(text, text + kScientificTextRoom, value, std::chars_format::scientific,
                            decimals)
                  .ptr;
  // The exponent is at the end: e+05 or e-300.
  for (char* at = end; at != text; --at) {
    if (at[-1] == 'e') {
      at[-1] = 'E';
      break;
    }
  }
  append(std::string_view(text, static_cast<size_t>(end - text)));
}

}  // namespace qps
