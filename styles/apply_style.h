// SPDX-License-Identifier: MIT
//
// From a cell's style number to what the cell looks like.
#ifndef QPSREADER_STYLES_APPLY_STYLE_H
#define QPSREADER_STYLES_APPLY_STYLE_H

#include "items/ss_item.h"
#include "reader/qps_sheet.h"

namespace qps {

// What a cell shows that no style applies to.
inline constexpr QPSAppearance kUnstyled{
    .formatCode = 0,
    .decimals = 0,
    .textAlignment = SSAlignVerticalBottom | SSAlignLeft | SSAlignTextFlagClear,
    .numericAlignment = SSAlignVerticalBottom | SSAlignLeft | SSAlignTextFlagClear,
    .present = 0,
    .fillColour = SS_NO_COLOUR,
    .textColour = 0,
    .bordered = 0,
    .borders = nullptr,
    .font = nullptr,
    .userFormat = nullptr,
    .isDate = false,
};

// Applies the style whose number is `currentStyle` to a cell of the kind `lastCellKind`: writes the
// item's style fields, and leaves in `appearance` what the rendering of its value needs.
void qpsApplyCellStyle(QPSSheet& sheet, SSItemCell& cell);

}  // namespace qps

#endif  // QPSREADER_STYLES_APPLY_STYLE_H
