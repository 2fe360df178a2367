// SPDX-License-Identifier: MIT
//
// What leaves the tool, judged without the tool's own code: RapidJSON knows JSON, and UTF-8, CSV
// and HTML are read by the rules of those who will read them.
#ifndef QPSREADER_FUZZ_OUTPUT_CHECKS_H
#define QPSREADER_FUZZ_OUTPUT_CHECKS_H

#include <cstddef>
#include <span>
#include <string_view>

#include "tool/document.h"
#include "tool/settings.h"

namespace qps::fuzz {

// Well-formed UTF-8 in which nothing but tabs and line ends is a control. With `oneWay`, nothing
// turns the direction of writing either.
void checkCharacters(std::string_view output, bool oneWay);

// Well-formed UTF-8, whatever the characters.
void checkUtf8(std::string_view output);

// A record for each row, the same number of fields in each, and in these the texts of the cells.
void checkCsv(std::string_view output, const Document& document, const SheetData& sheet,
              const Settings& settings, bool onTerminal);

// An object a line and a line an item; the cells' texts in their order.
void checkJsonLines(std::string_view output, const Document& document);

// Only elements and attributes that the writer knows, properly nested; nothing is loaded or run.
void checkPage(std::string_view output);

}  // namespace qps::fuzz

#endif  // QPSREADER_FUZZ_OUTPUT_CHECKS_H
