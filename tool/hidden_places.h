// SPDX-License-Identifier: MIT
//
// What --hidden makes of the cells of a worksheet in rows. The writers know nothing of it.
#ifndef QPSREADER_TOOL_HIDDEN_PLACES_H
#define QPSREADER_TOOL_HIDDEN_PLACES_H

#include <vector>

#include "tool/document.h"

namespace qps {

// What a mark says. TextArena::kReadableBehind bytes can be read behind it.
extern const char kHiddenMark[];

// Takes away the hidden rows and columns and closes the gaps.
void skipHidden(SheetData& sheet);

// Moves the cells a column to the right and a row down; returns where marks belong: in the first
// row above each hidden column, in the first column of each hidden row, as far as the cells reach.
std::vector<Place> makeRoomForMarks(SheetData& sheet);

}  // namespace qps

#endif  // QPSREADER_TOOL_HIDDEN_PLACES_H
