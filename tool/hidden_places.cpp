// SPDX-License-Identifier: MIT
#include "tool/hidden_places.h"

namespace qps {
namespace {

// The cells' new places; those that `move` gives none go. Keeps the order if `move` does.
template <class Move>
void moveCells(SheetData& sheet, const Move& move) {
  sheet.shown = {};
  Cell* kept = sheet.cells.begin();
  for (const Cell& cell : sheet.cells) {
    const std::optional<Place> place = move(cell.place);
    if (!place) continue;
    sheet.shown.include(place->column(), place->row());
    *kept++ = {*place, cell.style, cell.text};
  }
  sheet.cells.setSize(static_cast<std::size_t>(kept - sheet.cells.begin()));
}

}  // namespace

const char kHiddenMark[] = "hidden\0\0\0\0\0\0\0\0";

void skipHidden(SheetData& sheet) {
  const auto widths = sheet.widths();
  std::array<std::uint32_t, std::tuple_size_v<decltype(widths)>> columns{};  // 0 for a hidden one
  std::uint32_t column = 0;
  for (std::size_t old = 1; old < widths.size(); ++old)
    if (widths[old] != 0) columns[old] = ++column;

  auto height = sheet.rowHeights.begin();
  std::uint32_t skippedRows = 0;
  const auto isHiddenRow = [&](std::uint32_t row) {  // asked for from the first row to the last
    for (; height != sheet.rowHeights.end() && height->first < row; ++height)
      skippedRows += height->size == 0 ? 1 : 0;
    return height != sheet.rowHeights.end() && height->first == row && height->size == 0;
  };
  moveCells(sheet, [&](Place old) -> std::optional<Place> {
    if (isHiddenRow(old.row()) || columns[old.column()] == 0) return std::nullopt;
    return Place(columns[old.column()], old.row() - skippedRows);
  });
}

std::vector<Place> makeRoomForMarks(SheetData& sheet) {
  const Area before = sheet.shown;
  std::vector<Place> marks;
  const auto widths = sheet.widths();
  for (std::uint32_t column = 1; column <= before.lastColumn; ++column)
    if (widths[column] == 0) marks.emplace_back(column + 1, 1);
  for (const Run& height : sheet.rowHeights)
    if (height.size == 0 && height.first <= before.lastRow) marks.emplace_back(1, height.first + 1);
  moveCells(sheet, [](Place old) { return std::optional(Place(old.column() + 1, old.row() + 1)); });
  return marks;
}

}  // namespace qps
