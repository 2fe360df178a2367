// SPDX-License-Identifier: MIT
#ifndef QPSREADER_TOOL_LETTER_CASE_H
#define QPSREADER_TOOL_LETTER_CASE_H

#include <string>
#include <string_view>

namespace qps {

// In lower case, as file systems compare names: the letters of Latin, Greek, Cyrillic and Armenian,
// one by one, whatever the locale.
std::string lowerCase(std::string_view utf8);

// Whether no system takes the character for another than its capital or small letter, which
// lowerCase knows. Of others systems differ: some compare them as "ss", with or without their
// accents apart, or as a letter that looks like them.
bool hasKnownCase(char32_t character);

}  // namespace qps

#endif  // QPSREADER_TOOL_LETTER_CASE_H
