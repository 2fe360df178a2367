// SPDX-License-Identifier: MIT
//
// The six records that carry cells. A handler fills a cell item from the body in the record
// buffer: position, style, display text. It writes nothing when the record yields no cell.
#ifndef QPSREADER_ITEMS_CELL_RECORDS_H
#define QPSREADER_ITEMS_CELL_RECORDS_H

#include <qpsreader/ss_item.h>
#include "reader/frame/qps_sheet.h"

namespace qps {

// What a record yields.
enum class [[nodiscard]] CellStep : bool{kNoCell, kDeliver};

CellStep qpsReadBlankCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadIntegerCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadNumberCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadFormulaCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadLabelCell(QPSSheet& sheet, SSItemCell& cell);
CellStep qpsReadStringCell(QPSSheet& sheet, SSItemCell& cell);

}  // namespace qps

#endif  // QPSREADER_ITEMS_CELL_RECORDS_H
