// SPDX-License-Identifier: MIT
#ifndef QPSREADER_TOOL_LETTER_CASE_H
#define QPSREADER_TOOL_LETTER_CASE_H

#include <string>
#include <string_view>

namespace qps {

// In lower case, as file systems compare names: the letters of Latin, Greek, Cyrillic and Armenian,
// one by one, whatever the locale.
std::string lowerCase(std::string_view utf8);

}  // namespace qps

#endif  // QPSREADER_TOOL_LETTER_CASE_H
