// SPDX-License-Identifier: MIT
//
// Small texts that several writers share: cell addresses, and texts made safe to look at.
#ifndef QPSREADER_TOOL_TEXT_FORMS_H
#define QPSREADER_TOOL_TEXT_FORMS_H

#include <cstdint>
#include <string>
#include <string_view>

namespace qps {

// Columns and rows count from 1: 1 is "A", 27 is "AA".
std::string columnName(std::uint32_t column);
std::string cellAddress(std::uint32_t column, std::uint32_t row);

// "1 cell", "2 cells".
std::string counted(std::uint64_t count, const char* noun);

// "#rrggbb", for a colour as items hold it.
std::string htmlColour(std::uint32_t colour);

// Without the blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

// Bytes that are meant to be UTF-8 (a file's name, say): whatever is not becomes U+FFFD.
std::string validUtf8(std::string_view text);

// Appends UTF-8 text with everything that a terminal might obey, or that would look like another
// line or column, replaced by a character to be seen: controls by their pictures (U+2400 on),
// others, such as those that turn the direction of writing, by "<U+202E>".
void appendVisible(std::string_view utf8, std::string& result);
std::string visible(std::string_view utf8);

}  // namespace qps

#endif  // QPSREADER_TOOL_TEXT_FORMS_H
