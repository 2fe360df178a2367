// SPDX-License-Identifier: MIT
//
// The one block that a cell costs: its text.
#ifndef QPSREADER_READER_ITEM_TEXT_H
#define QPSREADER_READER_ITEM_TEXT_H

#include <cstddef>
#include <string_view>

#include "reader/qps_sheet.h"
#include "reader/short_text.h"

namespace qps {

// A copy of `text`, which a zero byte follows, for the host, from the sheet's itemAlloc; null when
// there is no block. It is the host's at once.
[[nodiscard]] inline char* qpsStrDup(const QPSSheet& sheet, std::string_view text) {
  const std::size_t bytes = text.size() + 1;
  void* block = sheet.itemAlloc(sheet.itemAllocContext, nullptr, bytes, 0);
  if (block == nullptr) return nullptr;
  auto* copy = static_cast<char*>(block);
  copyText(copy, text.data(), bytes);
  return copy;
}

}  // namespace qps

#endif  // QPSREADER_READER_ITEM_TEXT_H
