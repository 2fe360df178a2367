// SPDX-License-Identifier: MIT
//
// Styles in the file: record 206 defines one, record 231 gives one to a column.
#ifndef QPSREADER_STYLES_STYLE_RECORDS_H
#define QPSREADER_STYLES_STYLE_RECORDS_H

#include "reader/frame/qps_sheet.h"
#include "reader/frame/record_table.h"

namespace qps {

// Record 206: adds a style to styleList. Fails when the body cannot be read or the pool has no
// room.
Step qpsReadStyle(QPSSheet& sheet);

// Record 231: keeps the fill of a column's style in columnColours. Fails when the body cannot be
// read.
Step qpsReadColumnStyle(QPSSheet& sheet);

// The style with this number, at most 65535, or null.
inline const QPSStyle* findStyle(const QPSSheet& sheet, std::uint32_t number) {
  const QPSStylePage* page = sheet.stylePageByNumber[number >> 8];
  return page == nullptr ? nullptr : page->styles[number & 0xFF];
}

// The style number that a cell's or a column's field means: 0 stands for style 1.
inline std::uint32_t styleNumberOf(std::uint32_t field) {
  return field == 0 ? 1 : field;
}

}  // namespace qps

#endif  // QPSREADER_STYLES_STYLE_RECORDS_H
