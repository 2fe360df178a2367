// SPDX-License-Identifier: MIT
//
// The notebook's definitions: the records before the worksheets. Each handler reads its record's
// body (kFail when that fails) and updates the sheet; bytes that a short body lacks count as 0.
#ifndef QPSREADER_SCAN_DEFINITION_RECORDS_H
#define QPSREADER_SCAN_DEFINITION_RECORDS_H

#include "reader/frame/qps_sheet.h"
#include "reader/frame/record_table.h"

namespace qps {

Step readFileHeader(QPSSheet& sheet);   // 0: formatVersion; kFail for a second one
Step readDimensions(QPSSheet& sheet);   // 6: columnCount, rowCount
Step readText37(QPSSheet& sheet);       // 37: record37Text, while settingsActive
Step readText38(QPSSheet& sheet);       // 38: record38Text, while settingsActive
Step readRefusal(QPSSheet& sheet);      // 76: kFail for a nonzero value
Step readFont(QPSSheet& sheet);         // 207: adds to fontList
Step readNamedStyle(QPSSheet& sheet);   // 208: adds to namedStyleList
Step readUserFormat(QPSSheet& sheet);   // 230: adds to formatList
Step readUnusedBody(QPSSheet& sheet);   // 224, 232: must be complete; nothing of it is kept
Step readFlag257(QPSSheet& sheet);      // 257: record257Flag, while settingsActive
Step readFlag258(QPSSheet& sheet);      // 258: record258Flag, while settingsActive
Step readSettingsOn(QPSSheet& sheet);   // 265: settingsActive on
Step passSettingsOff(QPSSheet& sheet);  // 266: settingsActive off
Step endOfPass(QPSSheet& sheet);        // where a pass ends; the body is not read

}  // namespace qps

#endif  // QPSREADER_SCAN_DEFINITION_RECORDS_H
