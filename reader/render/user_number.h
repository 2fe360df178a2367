// SPDX-License-Identifier: MIT
//
// The user-defined numeric formats, such as N'$'9,999.00: one section of one ("N...;N...;N..." has
// up to three, for positive values, zero and negative values; the caller picks one for the value).
// A section is parsed once for its text and rendered once for every value.
//
//   0 9    a digit; 9 leaves out zeros that lead the number before the point
//   ,      anywhere before the point: thousands are grouped
//   .      the point
//   %      the whole result is the value in percent, with as many decimals as the section has 0
//          and 9 after its point
//   E      the whole result is "%.*E", with as many decimals as characters stand between the point
//          and the last E (2 when there are none)
//   '...'  copied as it stands; nothing in it counts
//   + - ;  nothing
//
// Any other character is copied when text precedes it, and dropped at the beginning.
#ifndef QPSREADER_RENDER_USER_NUMBER_H
#define QPSREADER_RENDER_USER_NUMBER_H

#include <cstdint>
#include <limits>
#include <string_view>

#include "reader/render/text_buffer.h"

namespace qps {

// The characters of a section, and of the digits of a value, that are kept.
inline constexpr int kMostUserNumberChars = 511;

// A parsed section. `text` is the caller's, which must outlive the section.
struct NumberSection {
  enum class Form : std::uint8_t {
    kNone,        // the text does not begin with "N": there is nothing to render
    kDigits,      // the placeholders and literals of the text, one after the other
    kPercent,     // the text has "%" before any "E"
    kScientific,  // the text has "E" before any "%"
  };

  std::string_view text;  // after the "N", at most kMostUserNumberChars - 1 characters
  std::int16_t integerPlaceholders = 0;
  std::int16_t fractionPlaceholders = 0;
  std::int16_t exponentPrecision = 0;
  bool grouping = false;
  Form form = Form::kNone;

  // Most sections are a number between two texts, such as '$'9,999.00' net': for magnitudes from
  // `plainFrom` on (infinity: for none) the result is just that.
  double plainFrom = std::numeric_limits<double>::infinity();
  std::string_view prefix;
  std::string_view suffix;
};

NumberSection parseNumberSection(std::string_view text);

// Appends the finite `magnitude` of a value that is not below 0 when `nonNegative`. `formatSection`
// is 0 for the first section, 1 for the zero section and 2 for the negative section; in the first
// two a negative value gets a "-". False, and nothing is appended, when the section's text did not
// begin with "N".
bool qpsFormatUserNumber(TextBuffer& out, const NumberSection& section, std::uint32_t formatSection,
                         double magnitude, bool nonNegative);

}  // namespace qps

#endif  // QPSREADER_RENDER_USER_NUMBER_H
