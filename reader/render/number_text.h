// SPDX-License-Identifier: MIT
//
// The forms of a number's text that are more than one print: grouped digits, trimmed decimals and
// three-digit exponents. qps2to3E, which is exported, is declared in qpsreader/qps_reader.h.
#ifndef QPSREADER_RENDER_NUMBER_TEXT_H
#define QPSREADER_RENDER_NUMBER_TEXT_H

#include <string_view>

#include "reader/render/text_buffer.h"

namespace qps {

// Appends `number` (digits, then perhaps a point and decimals) with "," between each three digits,
// counted from the point to the left: 1234567.89 gives 1,234,567.89.
void qpsInsertThousands(TextBuffer& text, std::string_view number);

// Appends "%.*f" of a finite value that is not below 0, with separators as qpsInsertThousands.
inline void appendGrouped(TextBuffer& text, double value, int decimals) {
  text.appendFixed(value, decimals, Separators::kThousands);
}

// Appends "%.*f" of a finite value without the zeros that end it, and without the point if nothing
// is left after it: with precision 8, 2.5 gives 2.5, 3 gives 3 and -1e-9 gives -0. Under precision
// 0 zeros of the whole part go too, except a first character.
void qpsFormatTrimmed(TextBuffer& text, double value, int precision);

// Appends "%.2E" of a finite value with an exponent of at least three digits: 1.23E+008.
void appendScientificFallback(TextBuffer& text, double value);

}  // namespace qps

#endif  // QPSREADER_RENDER_NUMBER_TEXT_H
