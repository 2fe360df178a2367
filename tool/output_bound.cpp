// SPDX-License-Identifier: MIT
#include "tool/output_bound.h"

#include "tool/document.h"

namespace qps {
namespace {

// What a byte of a text becomes: a character of up to four bytes, or two of them, escaped.
constexpr std::uint64_t kBytesPerTextByte = 16;

// A cell in JSON with a style in which all is set, the longest form of an item; or a cell on a page
// and the empty ones that may be written for it.
constexpr std::uint64_t kBytesPerItem = 1536;

// What stands once on a page, or once in each of its worksheets: styles, column headings.
constexpr std::uint64_t kBytesPerSheet = std::uint64_t{128} << 10;

}  // namespace

std::uint64_t outputBound(const Document& document) {
  const std::uint64_t texts = document.notebook.memoryInUse() + document.name.size();
  std::uint64_t bytes = kBytesPerSheet + kBytesPerTextByte * texts +
                        kBytesPerItem * (document.styles.size() + document.notebookTexts.size());
  for (const SheetData& sheet : document.sheets) {
    const std::uint64_t items = sheet.cells.size() + sheet.rowHeights.size() +
                                sheet.columnWidths.size() + document.notebookTexts.size() + 1;
    const std::uint64_t names = kBytesPerTextByte * (document.name.size() + sheet.name.size());
    const std::uint64_t separators =
        std::uint64_t{sheet.shown.lastRow} * (sheet.shown.lastColumn + 1);
    bytes += kBytesPerSheet + items * (kBytesPerItem + names) + separators;
  }
  return bytes;
}

}  // namespace qps
