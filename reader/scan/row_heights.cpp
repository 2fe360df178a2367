// SPDX-License-Identifier: MIT
#include "reader/scan/row_heights.h"

#include <cstring>

#include "reader/frame/pool.h"

namespace qps {

namespace {

constexpr std::uint8_t rowBit(std::size_t rowIndex) {
  return static_cast<std::uint8_t>(1U << (rowIndex % 8));
}

std::uint8_t* hiddenBitmap(QPSRowHeight& node) {
  return reinterpret_cast<std::uint8_t*>(&node + 1);
}

void popNode(QPSSheet& sheet) {
  QPSRowHeight* node = sheet.rowHeightList;
  sheet.rowHeightList = node->next;
  poolFree(sheet.services, node);
}

// Sets the bits of the rows with the indexes `first` to `last`: whole bytes in the middle, so that
// a long range costs little.
void setRowBits(RowBitmap& bitmap, std::size_t first, std::size_t last) {
  while (first <= last && first % 8 != 0) {
    bitmap[first / 8] |= rowBit(first);
    ++first;
  }
  const std::size_t wholeBytes = first <= last ? (last + 1 - first) / 8 : 0;
  std::memset(bitmap + first / 8, 0xFF, wholeBytes);
  for (first += 8 * wholeBytes; first <= last; ++first)
    bitmap[first / 8] |= rowBit(first);
}

[[nodiscard]] bool pushRange(QPSSheet& sheet, std::size_t firstRow, std::size_t lastRow,
                             std::uint16_t height) {
  auto* node = poolNew<QPSRowHeight>(sheet.services);
  if (node == nullptr) return false;
  node->firstRow = static_cast<std::uint32_t>(firstRow);
  node->lastRow = static_cast<std::uint32_t>(lastRow);
  node->height = height;
  pushFront(sheet.rowHeightList, *node);
  setRowBits(sheet.rowListed, firstRow - 1, lastRow - 1);
  return true;
}

// Before rows from `firstRow` on are added: puts the rows to hide on the list when some of them may
// be among those, so that they hide in the nodes that the list holds now.
[[nodiscard]] bool pushHiddenRows(QPSSheet& sheet, std::uint32_t firstRow) {
  const std::size_t bytes = sheet.rowHiddenBytes;
  if ((firstRow - 1) / 8 >= bytes) return true;
  auto* node = poolNew<QPSRowHeight>(sheet.services, bytes);
  if (node == nullptr) return false;
  node->hiddenBytes = sheet.rowHiddenBytes;
  std::memcpy(hiddenBitmap(*node), sheet.rowHidden, bytes);
  pushFront(sheet.rowHeightList, *node);
  std::memset(sheet.rowHidden, 0, bytes);
  sheet.rowHiddenBytes = 0;
  return true;
}

}  // namespace

bool pushRowRange(QPSSheet& sheet, std::uint32_t firstRow, std::uint32_t lastRow,
                  std::uint16_t height) {
  if (lastRow < firstRow) return true;
  return pushHiddenRows(sheet, firstRow) && pushRange(sheet, firstRow, lastRow, height);
}

void hideRows(QPSSheet& sheet, std::span<const std::uint8_t> bitmap) {
  for (std::size_t i = 0; i < bitmap.size(); ++i) {
    const auto listed = static_cast<std::uint8_t>(bitmap[i] & sheet.rowListed[i]);
    sheet.rowHidden[i] |= listed;
    if (listed != 0 && i >= sheet.rowHiddenBytes)
      sheet.rowHiddenBytes = static_cast<std::uint16_t>(i + 1);
  }

  // The rows that the list does not hold yet, run by run.
  const std::size_t rows = 8 * bitmap.size();
  const auto isNew = [&](std::size_t index) {
    return (bitmap[index / 8] & ~sheet.rowListed[index / 8] & rowBit(index)) != 0;
  };
  for (std::size_t index = 0; index < rows; ++index) {
    if (!isNew(index)) continue;
    std::size_t last = index;
    while (last + 1 < rows && isNew(last + 1))
      ++last;
    if (!pushRange(sheet, index + 1, last + 1, 0)) return;
    index = last;
  }
}

bool takeRowHeight(QPSSheet& sheet, RowHeight& rowHeight) {
  while (sheet.rowHeightList != nullptr && sheet.rowHeightList->hiddenBytes != 0) {
    QPSRowHeight& node = *sheet.rowHeightList;
    for (std::size_t i = 0; i < node.hiddenBytes; ++i)
      sheet.rowHidden[i] |= hiddenBitmap(node)[i];
    popNode(sheet);
  }
  QPSRowHeight* node = sheet.rowHeightList;
  if (node == nullptr) return false;

  const std::size_t index = node->lastRow - 1;
  std::uint8_t& hidden = sheet.rowHidden[index / 8];
  rowHeight = {node->lastRow, (hidden & rowBit(index)) != 0 ? std::uint16_t{0} : node->height};
  hidden &= static_cast<std::uint8_t>(~rowBit(index));
  if (node->lastRow == node->firstRow) {
    popNode(sheet);
  } else {
    --node->lastRow;
  }
  return true;
}

}  // namespace qps
