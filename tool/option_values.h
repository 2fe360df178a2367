// SPDX-License-Identifier: MIT
//
// From what is typed after an option to its value. Each throws UsageError, which names the option,
// for what is none.
#ifndef QPSREADER_TOOL_OPTION_VALUES_H
#define QPSREADER_TOOL_OPTION_VALUES_H

#include <chrono>
#include <cstdint>
#include <string>

#include "tool/settings.h"

namespace qps {

// "4M" and the like, of this option.
std::uint64_t parseSize(const char* option, const std::string& text);

// "2/8".
void parseShard(const std::string& text, Settings& settings);

// "60" or "0.5".
std::chrono::milliseconds parseSeconds(const std::string& text);

// The escapes that a shell does not offer everywhere: \n, \r, \t and \f. Never fails.
std::string parseEscapes(const std::string& text);

// One ASCII character, an escape, or "tab".
char parseDelimiter(const std::string& text);

// "keep", "skip" or "mark".
Hidden parseHidden(const std::string& text);

}  // namespace qps

#endif  // QPSREADER_TOOL_OPTION_VALUES_H
