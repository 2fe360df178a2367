// SPDX-License-Identifier: MIT
//
// The one block that a cell costs: its text.
#ifndef QPSREADER_READER_ITEM_TEXT_H
#define QPSREADER_READER_ITEM_TEXT_H

#include <cstddef>
#include <string_view>

#include "reader/frame/qps_sheet.h"

namespace qps {

// A block from the sheet's itemAlloc, the host's at once. Null when there is none.
[[nodiscard]] inline char* itemBlock(const QPSSheet& sheet, std::size_t bytes) {
  return static_cast<char*>(sheet.itemAlloc(sheet.itemAllocContext, nullptr, bytes, 0));
}

// A block for `size` characters with the zero byte after them written.
[[nodiscard]] inline char* itemText(const QPSSheet& sheet, std::size_t size) {
  char* text = itemBlock(sheet, size + 1);
  if (text != nullptr) [[likely]]
    text[size] = '\0';
  return text;
}

// A copy of `text` in such a block.
[[nodiscard]] inline char* qpsStrDup(const QPSSheet& sheet, std::string_view text) {
  char* copy = itemText(sheet, text.size());
  if (copy != nullptr) [[likely]]
    text.copy(copy, text.size());
  return copy;
}

}  // namespace qps

#endif  // QPSREADER_READER_ITEM_TEXT_H
