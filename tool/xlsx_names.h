// SPDX-License-Identifier: MIT
//
// Texts as .xlsx files can hold them.
#ifndef QPSREADER_TOOL_XLSX_NAMES_H
#define QPSREADER_TOOL_XLSX_NAMES_H

#include <set>
#include <string>
#include <string_view>

namespace qps {

// A cell's text: U+FFFD for U+FFFE and U+FFFF, which XML cannot hold, and an escape where the text
// itself looks like one ("_x0041_"). The library escapes controls.
std::string xlsxText(std::string_view utf8);

// A name: U+FFFD for controls too.
std::string xlsxName(std::string_view utf8);

class XlsxSheetNames {
 public:
  // At most 31 UTF-16 units, without the characters []:*?/\ and controls, not at the ends "'", not
  // "History", and not one that was given before, whatever the case: then it ends in "~2" or so.
  std::string make(std::string_view utf8);

 private:
  std::set<std::string> given_;  // in lower case
};

}  // namespace qps

#endif  // QPSREADER_TOOL_XLSX_NAMES_H
