// SPDX-License-Identifier: MIT
#include "reader/render/text_buffer.h"

#include <charconv>

#include "reader/render/fixed_point.h"
#include "reader/render/number_text.h"

namespace qps {
namespace {

// A point and an exponent of up to three digits with its sign, beside the sign and the first digit.
constexpr std::size_t kScientificTextRoom = 2 + 1 + kMostDecimals + 5;

}  // namespace

void TextBuffer::appendCut(WordText text) {
  char characters[WordText::kWrittenBytes];
  text.write(characters);
  append(std::string_view(characters, text.size()));
}

void TextBuffer::appendAnyFixed(double value, int decimals, Separators separators) {
  if (room() >= kExactFixedRoom) {
    if (char* end = writeExactFixed(end_, value, decimals, separators); end != nullptr) {
      end_ = end;
      return;
    }
  }
  char text[kFixedTextRoom];
  const char* end = writeFixed(text, value, decimals);
  const std::string_view number(text, static_cast<std::size_t>(end - text));
  if (separators == Separators::kThousands) {
    qpsInsertThousands(*this, number);
  } else {
    append(number);
  }
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
  append(std::string_view(text, static_cast<std::size_t>(end - text)));
}

}  // namespace qps
