// SPDX-License-Identifier: MIT
//
// Which texts a spreadsheet program would run as a formula when it opens a CSV file.
#ifndef QPSREADER_TOOL_FORMULA_GUARD_H
#define QPSREADER_TOOL_FORMULA_GUARD_H

#include <string>
#include <string_view>

namespace qps {

// True for a text that begins with "=", "@", "+", "-" (full-width ones too), a tab or a line end,
// unless it is a number in any form that a cell's format may give it: signs, a currency, digits
// with their separators, an exponent, a unit ("-1,234.50", "-$5", "-1.5E+03", "-20%", "-3 kg"), or
// a bar of signs. Such a text has no operator after its first digit, so that nothing in it can be
// called.
bool looksLikeFormula(std::string_view utf8);

// Appends the text with an apostrophe before each place where a formula would begin: its start, and
// what follows a line end, or a ";", "," or tab when that is not the file's delimiter. A program
// that takes such a character for the delimiter does not heed the quotes around the field.
void appendGuarded(std::string_view utf8, char delimiter, std::string& result);

}  // namespace qps

#endif  // QPSREADER_TOOL_FORMULA_GUARD_H
