// SPDX-License-Identifier: MIT
//
// From the texts of a notebook's own number formats to those of .xlsx workbooks. What would not
// show every number the same is refused.
#ifndef QPSREADER_TOOL_XLSX_USER_FORMAT_H
#define QPSREADER_TOOL_XLSX_USER_FORMAT_H

#include <optional>
#include <string>
#include <string_view>

#include "tool/encoding.h"

namespace qps {

// "0.00" with so many decimals; "0" with none.
std::string fixedPattern(std::size_t decimals);

// A text that shows as it is, in quotes; none when an .xlsx file cannot hold it. `bytes` are the
// notebook's.
std::optional<std::string> quotedLiteral(std::string_view bytes, const Decoder& decoder);

struct XlsxUserNumber {
  std::string text;
  double leastMagnitude = 0;  // the numbers below it show otherwise
};

// Of a text that begins with "N".
std::optional<XlsxUserNumber> xlsxUserNumber(std::string_view text, const Decoder& decoder);

struct XlsxUserDate {
  std::string text;
  bool showsDate = false, showsTime = false;
};

// Of a text that begins with "T".
std::optional<XlsxUserDate> xlsxUserDate(std::string_view text, const Decoder& decoder);

// Dates before 2000 by the first text, all others by the second: the notebook shows two digits of a
// year in the 1900s, four of any other.
std::string byCentury(const std::string& in1900s, const std::string& later);

}  // namespace qps

#endif  // QPSREADER_TOOL_XLSX_USER_FORMAT_H
