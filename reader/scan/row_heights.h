// SPDX-License-Identifier: MIT
//
// rowHeightList: the rows whose height is not the default, or that are hidden.
//
// The list says what one node a row would say, newest first, in memory and time proportional to the
// records' bytes: a range of rows is one node. A row that hides in the newest node that holds it is
// a bit of rowHidden. When newer nodes come, those bits go on the list before them, as a node with
// a bitmap; taking the rows off the list brings them back.
#ifndef QPSREADER_SCAN_ROW_HEIGHTS_H
#define QPSREADER_SCAN_ROW_HEIGHTS_H

#include <cstdint>
#include <span>

#include "reader/frame/qps_sheet.h"

namespace qps {

// Adds rows `firstRow` to `lastRow` (from 1, at most 65536) with one height; nothing when the range
// is empty. False when the pool has no room.
[[nodiscard]] bool pushRowRange(QPSSheet& sheet, std::uint32_t firstRow, std::uint32_t lastRow,
                                std::uint16_t height);

// Hides the rows whose bits are set (row 1 first): in the newest node that holds the row, which
// takes no block, else in a node of its own at the front. From where the pool has no room on, rows
// that the list does not hold stay out of it.
void hideRows(QPSSheet& sheet, std::span<const std::uint8_t> bitmap);

struct RowHeight {
  std::uint32_t row;  // from 1
  std::uint16_t height;
};

// Takes the front row off the list, giving back what the list no longer needs. False when it is
// empty.
[[nodiscard]] bool takeRowHeight(QPSSheet& sheet, RowHeight& rowHeight);

}  // namespace qps

#endif  // QPSREADER_SCAN_ROW_HEIGHTS_H
