// SPDX-License-Identifier: MIT
#include "tool/html_sheet.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "tool/html_style.h"
#include "tool/html_writer.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

constexpr std::uint32_t kMostColumns = 256;
constexpr std::uint64_t kRowHeaderWidth = 640;  // twentieths of a point
constexpr std::size_t kLargeSheet = 5000;       // cells; from here on rows are laid out when seen
constexpr std::uint32_t kRowsTogether = HtmlSheet::kRowsTogether;
constexpr std::uint64_t kCellPadding = 90;  // with the lines, at most
constexpr std::size_t kMostNames = 20;      // of hidden stretches in a note
constexpr std::uint64_t kEmptyCellsAtLeast = 1000;
constexpr std::uint64_t kEmptyCellsPerCell = 10;

bool isEmpty(const Cell& cell) {
  return cell.text == nullptr || *cell.text == '\0';
}

}  // namespace

SheetTable::SheetTable(Output& out, const Document& document, const SheetData& sheet)
    : out_(out),
      document_(document),
      sheet_(sheet),
      emptyCellsLeft_(kEmptyCellsAtLeast + kEmptyCellsPerCell * sheet.cells.size()),
      large_(sheet.cells.size() >= kLargeSheet) {
  widths_.fill(sheet.info.defaultColumnWidth);
  for (const Run& run : sheet.columnWidths)
    for (std::uint32_t column = run.first; column <= std::min(run.last, kMostColumns); ++column)
      widths_[column] = run.size;
  const Cells cells = sheet.cells;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const Place place = cells[i].place;
    lastColumn_ = std::max(lastColumn_, place.column());
    const bool lastInRow = i + 1 == cells.size() || cells[i + 1].place.row() != place.row();
    if (lastInRow && !isEmpty(cells[i])) widenFor(place.column(), std::strlen(cells[i].text));
  }
}

// A text that runs past the last column with a cell gets more columns to run over: how many is a
// guess, 6 points a character.
void SheetTable::widenFor(std::uint32_t column, std::size_t characters) {
  std::uint64_t room = widths_[column];
  while (column < kMostColumns && room < characters * 120)
    room += widths_[++column];
  lastColumn_ = std::max(lastColumn_, column);
}

std::uint64_t SheetTable::width(std::uint32_t first, std::uint32_t last) const {
  std::uint64_t sum = 0;
  for (std::uint32_t column = first; column <= last; ++column)
    sum += widths_[column];
  return sum;
}

// Rows with a height of their own are in order.
std::uint32_t SheetTable::height(std::uint32_t row) const {
  const auto found =
      std::lower_bound(sheet_.rowHeights.begin(), sheet_.rowHeights.end(), row,
                       [](const Run& run, std::uint32_t value) { return run.first < value; });
  const bool own = found != sheet_.rowHeights.end() && found->first == row;
  return own ? found->size : sheet_.info.defaultRowHeight;
}

bool SheetTable::mayWrite(std::uint64_t emptyCells) {
  if (emptyCells > emptyCellsLeft_) return false;
  emptyCellsLeft_ -= emptyCells;
  return true;
}

std::uint32_t SheetTable::shownWidth(std::uint32_t column) const {
  return isHidden(column) ? sheet_.info.defaultColumnWidth : widths_[column];
}

void SheetTable::writeHead() {
  const Cells cells = sheet_.cells;
  std::uint64_t all = kRowHeaderWidth;
  for (std::uint32_t column = 1; column <= lastColumn_; ++column)
    all += shownWidth(column);
  const std::string own = points(kRowHeaderWidth + width(1, lastColumn_));
  std::string tracks,
      allTracks;  // the columns of a large sheet's rows, without and with hidden ones
  for (std::uint32_t column = 1; large_ && column <= lastColumn_; ++column) {
    if (!isHidden(column)) tracks += " " + points(widths_[column]);
    allTracks += " " + points(shownWidth(column));
  }
  const std::uint64_t rows =
      cells.empty() ? 0 : std::min<std::uint64_t>(cells.back().place.row(), emptyCellsLeft_);
  out_.write(
      "<section id=\"sheet" + std::to_string(sheet_.number) + "\" style=\"--w:" + own +
      ";--all:" + points(all) + ";--h:" + points(sheet_.info.defaultRowHeight) +
      (large_ ? ";--t:" + points(kRowHeaderWidth) + tracks + ";--at:" + points(kRowHeaderWidth) +
                    allTracks +
                    ";--r:" + points(std::uint64_t{kRowsTogether} * sheet_.info.defaultRowHeight)
              : "") +
      ";contain-intrinsic-size:" + own + " " + points(1000 + rows * sheet_.info.defaultRowHeight) +
      "\">\n<h2 id=\"name" + std::to_string(sheet_.number) + "\">" + html(sheet_.name) + "</h2>\n");
  writeNote(hiddenNames());
  writeColumns();
}

void SheetTable::write() {
  writeHead();
  const Cells cells = sheet_.cells;
  std::uint32_t nextRow = 1;
  for (std::size_t first = 0; first < cells.size();) {
    const std::uint32_t row = cells[first].place.row();
    std::size_t end = first;
    while (end < cells.size() && cells[end].place.row() == row)
      ++end;
    writeEmptyRows(nextRow, row - 1);
    writeRow(row, cells.subspan(first, end - first));
    nextRow = row + 1;
    first = end;
  }
  writeEnd();
}

void SheetTable::writeEnd() {
  out_.write("</tbody>\n</table>\n</section>\n");
}

void SheetTable::writeRows(std::uint32_t first, std::uint32_t last) {
  rowsWritten_ = 0;
  const Cell* cell =
      std::lower_bound(sheet_.cells.begin(), sheet_.cells.end(), first,
                       [](const Cell& one, std::uint32_t row) { return one.place.row() < row; });
  for (std::uint32_t row = first; row <= last; ++row) {
    const Cell* const begin = cell;
    while (cell != sheet_.cells.end() && cell->place.row() == row)
      ++cell;
    writeRow(row, {begin, cell});
  }
}

// "column F (where numbers have no text), rows 9, 12–20"; "" when nothing is hidden. The reader
// fits a number's text to the width of its column, and a hidden one has none.
std::string SheetTable::hiddenNames() const {
  std::vector<Run> columns, rows;
  const auto add = [](std::vector<Run>& runs, std::uint32_t place) {
    if (!runs.empty() && runs.back().last + 1 == place)
      runs.back().last = place;
    else
      runs.push_back({place, place, 0});
  };
  for (std::uint32_t column = 1; column <= kMostColumns; ++column)
    if (isHidden(column)) add(columns, column);
  for (const Run& height : sheet_.rowHeights)
    if (height.size == 0) add(rows, height.first);

  std::string names;
  const auto name = [&names](const std::vector<Run>& runs, const char* noun, auto&& nameOf) {
    if (runs.empty()) return;
    const bool one = runs.size() == 1 && runs[0].first == runs[0].last;
    names.append(names.empty() ? "" : ", ").append(noun).append(one ? " " : "s ");
    for (std::size_t i = 0; i < runs.size(); ++i) {
      if (i == kMostNames) {
        names += " and " + counted(runs.size() - i, "more stretch");
        break;
      }
      names += (i == 0 ? "" : ", ") + nameOf(runs[i].first);
      if (runs[i].last != runs[i].first) names += "\u2013" + nameOf(runs[i].last);
    }
  };
  name(columns, "column", columnName);
  if (!columns.empty()) names += " (where numbers have no text)";
  name(rows, "row", [](std::uint32_t row) { return std::to_string(row); });
  return names;
}

void SheetTable::writeNote(const std::string& hidden) {
  if (hidden.empty()) return;
  out_.write("<p class=\"note\"><label><input type=\"checkbox\"> show hidden: " + hidden +
             "</label></p>\n");
}

void SheetTable::writeColumns() {
  out_.write(large_ ? "<table class=\"large\"" : "<table");
  out_.write(" aria-labelledby=\"name" + std::to_string(sheet_.number) + "\" style=\"");
  if (sheet_.info.columnColour != SS_NO_COLOUR)
    out_.write("background-color:" + htmlColour(sheet_.info.columnColour) + ";");
  out_.write("--g:" + gridLines(false));
  if (anyHiddenColumn()) out_.write(";--ga:" + gridLines(true));
  out_.write("\">\n<colgroup><col style=\"width:" + points(kRowHeaderWidth) + "\">");
  std::string letters;
  for (std::uint32_t column = 1; column <= lastColumn_; ++column) {
    const char* const hidden = isHidden(column) ? " class=\"x\"" : "";
    out_.write(std::string("<col") + hidden + " style=\"width:" + points(shownWidth(column)) +
               "\">");
    letters +=
        std::string("<th") + hidden + " scope=\"col\" data-n=\"" + columnName(column) + "\"></th>";
  }
  out_.write("</colgroup>\n<thead><tr><td></td>" + letters + "</tr></thead>\n<tbody>\n");
}

bool SheetTable::anyHiddenColumn() const {
  const auto* const first = widths_.data() + 1;
  const auto* const end = first + lastColumn_;
  return std::find(first, end, 0U) != end;
}

// A line behind each column's right edge, which the wide empty cells have no border for.
std::string SheetTable::gridLines(bool hiddenToo) const {
  std::string css = "linear-gradient(90deg";
  std::uint64_t edge = kRowHeaderWidth;
  for (std::uint32_t column = 1; column <= lastColumn_; ++column) {
    if (isHidden(column) && !hiddenToo) continue;
    edge += shownWidth(column);
    css += ",transparent 0 calc(" + points(edge) + " - 1px),#e0e0e0 0 " + points(edge);
  }
  return css + ",transparent 0)";
}

void SheetTable::writeEmptyRows(std::uint32_t first, std::uint32_t last) {
  if (last < first) return;
  if (mayWrite(std::uint64_t{last - first + 1} * 2)) {
    for (std::uint32_t row = first; row <= last; ++row)
      writeRow(row, {});
    return;
  }
  const auto shown = std::ranges::count_if(std::span(widths_).subspan(1, lastColumn_),
                                           [](std::uint32_t width) { return width != 0; });
  out_.write("<tr class=\"gap\"><th scope=\"row\" data-n=\"" + std::to_string(first) + "\u2013" +
             std::to_string(last) + "\"></th><td colspan=\"" +
             std::to_string(std::max<std::ptrdiff_t>(shown, 1)) +
             "\" style=\"grid-column:2/-1\"></td></tr>\n");
}

void SheetTable::writeRow(std::uint32_t row, Cells cells) {
  if (large_ && rowsWritten_ > 0 && rowsWritten_ % kRowsTogether == 0)
    out_.write("</tbody>\n<tbody>\n");
  ++rowsWritten_;
  const std::uint32_t own = height(row);
  out_.write("<tr");
  if (own == 0)
    out_.write(" class=\"x\"");
  else if (own != sheet_.info.defaultRowHeight)  // less than its content takes, it cannot be
    out_.write((large_ ? " style=\"min-height:" : " style=\"height:") + points(own) + "\"");
  out_.write("><th scope=\"row\" data-n=\"" + std::to_string(row) + "\"></th>");
  std::uint32_t nextColumn = 1;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    writeEmptyCells(nextColumn, cells[i].place.column() - 1);
    writeCell(cells, i);
    nextColumn = cells[i].place.column() + 1;
  }
  writeEmptyCells(nextColumn, lastColumn_);
  out_.write("</tr>\n");
}

// One wide cell for each run of columns that are all shown or all hidden.
void SheetTable::writeEmptyCells(std::uint32_t first, std::uint32_t last) {
  while (first <= last) {
    std::uint32_t end = first + 1;
    while (end <= last && isHidden(end) == isHidden(first))
      ++end;
    out_.write(isHidden(first) ? "<td class=\"x\"" : "<td");
    const std::string count = std::to_string(end - first);
    if (end - first > 1) out_.write(" colspan=\"" + count + "\"");
    if (end - first > 1 && large_) out_.write(" style=\"grid-column:span " + count + "\"");
    out_.write("></td>");
    first = end;
  }
}

void SheetTable::writeCell(Cells row, std::size_t index) {
  const Cell& cell = row[index];
  const std::uint32_t column = cell.place.column();
  const CellStyle style = document_.styles.style(cell.style);
  text_.clear();
  if (cell.text != nullptr) document_.decoder->append(cell.text, text_);
  out_.write(isHidden(column) ? "<td class=\"x s" : "<td class=\"s");
  out_.write(std::to_string(cell.style));
  if (text_.empty()) {
    out_.write("\"></td>");
    return;
  }
  const bool across = style.horizontal == HorizontalAlign::kCentreAcross;
  if (!across && surelyFits(style, column)) {
    out_.write("\">" + html(text_) + "</td>");
    return;
  }
  const auto place = static_cast<std::size_t>(&cell - sheet_.cells.begin());
  if (isNumber(sheet_.contents[place].type())) return writeNumber();

  // Where the neighbours that show something stand, or what joins in.
  std::size_t next = index + 1;
  const auto joins = [&](const Cell& other) {
    return other.place.column() == column + (next - index) && isEmpty(other) &&
           document_.styles.style(other.style).horizontal == style.horizontal;
  };
  while (next < row.size() && (across ? joins(row[next]) : isEmpty(row[next])))
    ++next;
  const std::uint32_t last = across ? column + static_cast<std::uint32_t>(next - index) - 1
                             : next < row.size() ? row[next].place.column() - 1
                                                 : lastColumn_;
  std::size_t before = index;
  while (before > 0 && isEmpty(row[before - 1]))
    --before;
  const std::uint32_t first = across ? column : before > 0 ? row[before - 1].place.column() + 1 : 1;
  const bool left =
      style.horizontal == HorizontalAlign::kGeneral || style.horizontal == HorizontalAlign::kLeft;
  // In a grid the fill of an empty cell would cover it.
  if (left && next == row.size() && (!large_ || next == index + 1)) {
    out_.write("\">" + html(text_) + "</td>");
    return;
  }
  const std::uint64_t right = width(column + 1, last);
  if (left && right == 0) {
    out_.write(" c\">" + html(text_) + "</td>");
    return;
  }
  writeLabel(style, width(first, column - 1), right);
}

// One mark for every three characters, so that the marks are narrower than the number: the browser
// breaks the line as well where they alone would not fit.
void SheetTable::writeNumber() {
  const std::string text = html(text_);
  const std::size_t marks = std::clamp<std::size_t>(text_.size() / 3, 1, kMostMarks);
  out_.write(" n n" + std::to_string(marks) + "\" title=\"" + text + "\"><div><span>" + text +
             "</span></div></td>");
}

// The text lies over `left` and `right` of its cell, as far as its alignment takes it.
void SheetTable::writeLabel(const CellStyle& style, std::uint64_t left, std::uint64_t right) {
  std::string box;
  switch (style.horizontal) {
    case HorizontalAlign::kCentreAcross:
      box = "justify-content:center;margin-right:-" + points(right);
      break;
    case HorizontalAlign::kCentre:
      box = "justify-content:center;margin:0 -" + points(right) + " 0 -" + points(left) +
            ";padding:0 " + points(right) + " 0 " + points(left);
      break;
    case HorizontalAlign::kRight:
      box = "justify-content:flex-end;margin-left:-" + points(left);
      break;
    default:
      box = "margin-right:-" + points(right);
  }
  out_.write("\"><div style=\"" + box + "\">" + html(text_) + "</div></td>");
}

// No font's letters are much wider than they are high. Where this says no, the browser decides.
bool SheetTable::surelyFits(const CellStyle& style, std::uint32_t column) const {
  const std::uint64_t size = style.font && style.font->size > 0 ? style.font->size : 10;
  return text_.size() * size * 25 + kCellPadding <= shownWidth(column);
}

}  // namespace qps
