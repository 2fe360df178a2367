// SPDX-License-Identifier: MIT
//
// A worksheet's layout: the records between its start and its first cell. Each handler reads its
// record's body (kFail when that fails) and updates the sheet; bytes that a short body lacks count
// as 0.
#ifndef QPSREADER_SCAN_LAYOUT_RECORDS_H
#define QPSREADER_SCAN_LAYOUT_RECORDS_H

#include "reader/frame/qps_sheet.h"
#include "reader/frame/record_table.h"

namespace qps {

Step readDimensionTable(QPSSheet& sheet);      // 150: columnCount, rowCount
Step readDefaultRowHeight(QPSSheet& sheet);    // 210
Step readDefaultColumnWidth(QPSSheet& sheet);  // 212
Step readRowHeight(QPSSheet& sheet);           // 214; kFail for the default height or a full pool
Step readColumnWidth(QPSSheet& sheet);         // 216
Step readHiddenRows(QPSSheet& sheet);          // 220
Step readHiddenColumns(QPSSheet& sheet);       // 222
Step readRowHeightRange(QPSSheet& sheet);      // 261; as 214

}  // namespace qps

#endif  // QPSREADER_SCAN_LAYOUT_RECORDS_H
