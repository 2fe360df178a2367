// SPDX-License-Identifier: MIT
#include "tool/output_bound.h"

#include <algorithm>

#include "tool/document.h"
#include "tool/settings.h"

namespace qps {
namespace {

// What a byte of a text becomes: a character of up to four bytes, or two of them, escaped.
constexpr std::uint64_t kBytesPerTextByte = 16;

// A cell in JSON with a style in which all is set, which is the longest form of an item.
constexpr std::uint64_t kBytesPerItem = 1536;

// What stands once on a page, or once in each of its worksheets: styles, column headings.
constexpr std::uint64_t kBytesPerSheet = std::uint64_t{128} << 10;

// On a page, an empty row has a wide cell for each run of columns that are all shown or all hidden;
// beside the rows that have cells there are five empty ones for each cell, and some hundred.
std::uint64_t boundOfRows(const SheetData& sheet) {
  constexpr std::uint64_t kBytesPerWideCell = 64;
  const std::uint64_t rows = std::min<std::uint64_t>(65536, 1000 + 6 * sheet.cells.size());
  const std::uint64_t wideCells = std::min<std::uint64_t>(256, 1 + 2 * sheet.columnWidths.size());
  return rows * kBytesPerWideCell * (wideCells + 2);
}

}  // namespace

std::uint64_t outputBound(const Document& document, Need need, const Settings& settings) {
  const std::uint64_t texts = document.notebook.memoryInUse() + document.name.size();
  std::uint64_t bytes = kBytesPerSheet + kBytesPerTextByte * texts +
                        kBytesPerItem * (document.styles.size() + document.notebookTexts.size());
  const std::uint64_t formatText = kBytesPerTextByte * document.formats.longestText();
  for (const SheetData& sheet : document.sheets) {
    const std::uint64_t items = sheet.cells.size() + sheet.rowHeights.size() +
                                sheet.columnWidths.size() + document.notebookTexts.size() + 1;
    const std::uint64_t names = kBytesPerTextByte * (document.name.size() + sheet.name.size());
    bytes += kBytesPerSheet + items * (kBytesPerItem + names + formatText);
    const std::uint64_t source = settings.withSource ? names : 0;
    if (need == Need::kTexts)  // the separators
      bytes += sheet.shown.lastRow * (sheet.shown.lastColumn + 1 + source);
    if (need == Need::kAll) bytes += boundOfRows(sheet);
  }
  return bytes;
}

}  // namespace qps
