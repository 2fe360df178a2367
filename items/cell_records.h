// SPDX-License-Identifier: MIT
//
// The six records that carry cells. A handler reads its record's body and fills a cell item:
// position, style, display text.
#ifndef QPSREADER_ITEMS_CELL_RECORDS_H
#define QPSREADER_ITEMS_CELL_RECORDS_H

#include "items/ss_item.h"
#include "reader/qps_sheet.h"

namespace qps {

enum class [[nodiscard]] CellStep : std::uint8_t{
    kDeliver,  // the item holds a cell
    kNoCell,   // the record yields none
    kFail,     // the body could not be read; the item is untouched
};

CellStep qpsReadBlankCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadIntegerCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadNumberCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadLabelCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadFormulaCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadStringCell(QPSSheet& sheet, SSItemCell& cell);

}  // namespace qps

#endif  // QPSREADER_ITEMS_CELL_RECORDS_H
