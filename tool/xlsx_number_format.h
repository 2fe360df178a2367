// SPDX-License-Identifier: MIT
//
// From a notebook's number formats to those of .xlsx workbooks.
#ifndef QPSREADER_TOOL_XLSX_NUMBER_FORMAT_H
#define QPSREADER_TOOL_XLSX_NUMBER_FORMAT_H

#include <cstdint>
#include <optional>
#include <string>

#include "tool/encoding.h"
#include "tool/number_format.h"

namespace qps {

struct XlsxNumberFormat {
  std::string text;  // "General" for the general form
  // The numbers that it shows as the notebook does; others have no equivalent.
  double least = 0, most = 0;
  double leastMagnitude = 0;
  bool showsDateAndTime = false;  // then neither has a time that rounds up to midnight

  bool shows(double number) const;
};

// None for a format that has no equivalent. `formatVersion` is the notebook's.
std::optional<XlsxNumberFormat> xlsxNumberFormatOf(const FormatFacts& format,
                                                   std::uint16_t formatVersion,
                                                   const Decoder& decoder);

}  // namespace qps

#endif  // QPSREADER_TOOL_XLSX_NUMBER_FORMAT_H
