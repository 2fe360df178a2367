// SPDX-License-Identifier: MIT
//
// What a worksheet that was read says of itself.
#include <algorithm>

#include "tool/document.h"
#include "tool/text_forms.h"

namespace qps {

std::string Area::name() const {
  if (empty()) return "";
  const std::string first = cellAddress(firstColumn, firstRow);
  const std::string last = cellAddress(lastColumn, lastRow);
  return first == last ? first : first + ":" + last;
}

std::array<std::uint32_t, 257> SheetData::widths() const {
  std::array<std::uint32_t, 257> widths;
  widths.fill(info.defaultColumnWidth);
  for (const Run& run : columnWidths)
    for (std::size_t column = run.first; column <= run.last && column < widths.size(); ++column)
      widths[column] = run.size;
  return widths;
}

std::uint32_t SheetData::hiddenRows() const {
  return static_cast<std::uint32_t>(std::count_if(
      rowHeights.begin(), rowHeights.end(), [](const Run& height) { return height.size == 0; }));
}

std::uint32_t SheetData::hiddenColumns() const {
  std::uint32_t count = 0;
  for (const Run& run : columnWidths)
    if (run.size == 0) count += run.last - run.first + 1;
  return count;
}

}  // namespace qps
