// SPDX-License-Identifier: MIT
//
// Pieces of date and time texts that several forms share.
#ifndef QPSREADER_FORMAT_DATE_TEXT_H
#define QPSREADER_FORMAT_DATE_TEXT_H

#include <cstdint>

#include "render/text_buffer.h"

namespace qps {

// Numbers of at least two digits with a separator between them: 07/04/99.
template <typename... Rest>
void appendJoined(TextBuffer& text, char separator, std::int32_t first, Rest... rest) {
  text.appendInteger(first, 2);
  (..., (text.append(separator), text.appendInteger(rest, 2)));
}

// The years 1900 to 1999 in two digits, all others whole.
inline void appendYearOfCentury(TextBuffer& text, std::int32_t year) {
  const bool shortened = year >= 1900 && year <= 1999;
  text.appendInteger(shortened ? year % 100 : year, shortened ? 2 : 4);
}

}  // namespace qps

#endif  // QPSREADER_FORMAT_DATE_TEXT_H
