// SPDX-License-Identifier: MIT
#include "reader/scan/layout_records.h"

#include <algorithm>

#include "reader/scan/row_heights.h"

namespace qps {

namespace {

// An entry of record 150: 0-1 the last column from 0, 2-3 not used, 4-5 the last row from 0.
constexpr std::size_t kDimensionEntryBytes = 6;

// A width or height in twentieths of a point. Bit 15 marks a value of 12 bits, with other uses of
// bits 12 to 14; without it the whole value counts.
constexpr std::uint16_t sizeValue(std::uint16_t field) {
  return (field & 0x8000) != 0 ? field & 0x0FFF : field;
}

Step addRowRange(QPSSheet& sheet, std::uint16_t firstIndex, std::uint16_t lastIndex,
                 std::uint16_t height) {
  if (height == sheet.defaultRowHeight) return Step::kFail;
  return pushRowRange(sheet, firstIndex + 1U, lastIndex + 1U, height) ? Step::kGoOn : Step::kFail;
}

}  // namespace

// The last entry that begins within the body counts, a cut one too; without an entry there are no
// rows and no columns.
Step readDimensionTable(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  const BodyView recordBody = sheet.records.body();
  sheet.columnCount = 0;
  sheet.rowCount = 0;
  if (recordBody.size() == 0) return Step::kGoOn;
  const std::size_t last = (recordBody.size() - 1) / kDimensionEntryBytes * kDimensionEntryBytes;
  sheet.columnCount = static_cast<std::uint16_t>(recordBody.u16At(last) + 1);
  sheet.rowCount = static_cast<std::uint16_t>(recordBody.u16At(last + 4) + 1);
  return Step::kGoOn;
}

Step readDefaultRowHeight(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  sheet.defaultRowHeight = sizeValue(sheet.records.body().u16At(0));
  return Step::kGoOn;
}

Step readDefaultColumnWidth(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  sheet.defaultColumnWidth = sizeValue(sheet.records.body().u16At(0));
  return Step::kGoOn;
}

// Record 214: 0-1 the row from 0, 2-3 its height.
Step readRowHeight(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  const BodyView recordBody = sheet.records.body();
  return addRowRange(sheet, recordBody.u16At(0), recordBody.u16At(0),
                     sizeValue(recordBody.u16At(2)));
}

// Record 261: 0-1 the first row from 0, 2-3 the last, 4-5 their height.
Step readRowHeightRange(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  const BodyView recordBody = sheet.records.body();
  return addRowRange(sheet, recordBody.u16At(0), recordBody.u16At(2),
                     sizeValue(recordBody.u16At(4)));
}

// Record 216: 0-1 the column from 0, 2-3 its width.
Step readColumnWidth(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  const BodyView recordBody = sheet.records.body();
  const std::uint16_t column = recordBody.u16At(0);
  if (column < kColumns) sheet.columnWidths[column] = sizeValue(recordBody.u16At(2));
  return Step::kGoOn;
}

// Records 220 and 222: a bit a row or column, the first in bit 0 of byte 0.
Step readHiddenRows(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  hideRows(sheet, sheet.records.body().bytes());
  return Step::kGoOn;
}

Step readHiddenColumns(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  const BodyView recordBody = sheet.records.body();
  const std::size_t columns = std::min(8 * recordBody.size(), kColumns);
  for (std::size_t column = 0; column < columns; ++column) {
    if ((recordBody.u8At(column / 8) >> column % 8 & 1) != 0) sheet.columnWidths[column] = 0;
  }
  return Step::kGoOn;
}

}  // namespace qps
