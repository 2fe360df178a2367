// SPDX-License-Identifier: MIT
//
// An HTML page that looks like the notebook: a table for each worksheet with its own widths,
// heights, fonts, colours and borders, hidden rows and columns left out. The page stands alone: no
// script, nothing loaded, and a policy that forbids both.
//
// Its size is in proportion to the cells. Empty cells are written one by one while there are not
// many more of them than cells, and as one wide cell or one marked row after that.
#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <qpsreader/version.h>
#include "tool/commands.h"
#include "tool/document.h"
#include "tool/html_style.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

constexpr std::uint32_t kMostColumns = 256;
constexpr std::uint64_t kRowHeaderWidth = 640;  // twentieths of a point
constexpr std::uint64_t kEmptyCellsAtLeast = 1000;
constexpr std::uint64_t kEmptyCellsPerCell = 10;

std::string html(std::string_view utf8) {
  std::string text;
  appendHtml(utf8, text);
  return text;
}

class SheetTable {
 public:
  SheetTable(Output& out, const Document& document, const SheetData& sheet);

  void write();

 private:
  using Cells = std::span<const Cell>;

  bool isHidden(std::uint32_t column) const { return widths_[column] == 0; }
  std::uint32_t shownColumns(std::uint32_t first, std::uint32_t last) const;
  std::uint64_t width(std::uint32_t first, std::uint32_t last) const;
  std::uint32_t height(std::uint32_t row) const;

  void writeColumns();
  void writeEmptyRows(std::uint32_t first, std::uint32_t last);
  void writeRowStart(std::uint32_t row);
  void writeRow(std::uint32_t row, Cells cells);
  void writeEmptyCells(std::uint32_t first, std::uint32_t last);
  void writeCell(Cells rest);
  std::uint32_t lastFreeColumn(Cells rest, const CellStyle& style) const;
  bool mayRunOver(const CellStyle& style, std::size_t bytes, std::uint32_t column) const;
  bool mayWrite(std::uint64_t emptyCells);

  Output& out_;
  const Document& document_;
  const SheetData& sheet_;
  std::array<std::uint32_t, kMostColumns + 1> widths_{};  // by column from 1; 0 is hidden
  std::uint32_t lastColumn_ = 0;
  std::uint64_t emptyCellsLeft_;
  std::string text_;
};

SheetTable::SheetTable(Output& out, const Document& document, const SheetData& sheet)
    : out_(out),
      document_(document),
      sheet_(sheet),
      emptyCellsLeft_(kEmptyCellsAtLeast + kEmptyCellsPerCell * sheet.cells.size()) {
  widths_.fill(sheet.info.defaultColumnWidth);
  for (const Run& run : sheet.columnWidths)
    for (std::uint32_t column = run.first; column <= std::min(run.last, kMostColumns); ++column)
      widths_[column] = run.size;
  for (const Cell& cell : sheet.cells)
    lastColumn_ = std::max(lastColumn_, cell.place.column());
}

std::uint32_t SheetTable::shownColumns(std::uint32_t first, std::uint32_t last) const {
  std::uint32_t count = 0;
  for (std::uint32_t column = first; column <= last; ++column)
    count += isHidden(column) ? 0 : 1;
  return count;
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

void SheetTable::write() {
  writeColumns();
  const Cells cells = sheet_.cells;
  std::uint32_t nextRow = 1;
  for (std::size_t first = 0; first < cells.size();) {
    const std::uint32_t row = cells[first].place.row();
    std::size_t end = first;
    while (end < cells.size() && cells[end].place.row() == row)
      ++end;
    writeEmptyRows(nextRow, row - 1);
    if (height(row) > 0) writeRow(row, cells.subspan(first, end - first));
    nextRow = row + 1;
    first = end;
  }
  out_.write("</tbody>\n</table>\n");
}

void SheetTable::writeColumns() {
  out_.write("<table style=\"width:" + points(kRowHeaderWidth + width(1, lastColumn_)) +
             ";--h:" + points(sheet_.info.defaultRowHeight));
  if (sheet_.info.columnColour != SS_NO_COLOUR)
    out_.write(";background-color:" + htmlColour(sheet_.info.columnColour));
  out_.write("\">\n<colgroup><col style=\"width:" + points(kRowHeaderWidth) + "\">");
  std::string letters;
  for (std::uint32_t column = 1; column <= lastColumn_; ++column) {
    if (isHidden(column)) continue;
    out_.write("<col style=\"width:" + points(widths_[column]) + "\">");
    letters += "<th scope=\"col\" data-n=\"" + columnName(column) + "\"></th>";
  }
  out_.write("</colgroup>\n<thead><tr><th></th>" + letters + "</tr></thead>\n<tbody>\n");
}

void SheetTable::writeEmptyRows(std::uint32_t first, std::uint32_t last) {
  if (last < first) return;
  const std::uint32_t columns = shownColumns(1, lastColumn_);
  if (mayWrite(std::uint64_t{last - first + 1} * (columns + 1))) {
    for (std::uint32_t row = first; row <= last; ++row)
      if (height(row) > 0) writeRow(row, {});
    return;
  }
  out_.write("<tr class=\"gap\"><th scope=\"row\" data-n=\"" + std::to_string(first) + "\u2013" +
             std::to_string(last) + "\"></th><td colspan=\"" +
             std::to_string(std::max(columns, 1U)) + "\"></td></tr>\n");
}

void SheetTable::writeRowStart(std::uint32_t row) {
  const std::uint32_t own = height(row);
  out_.write("<tr");
  if (own != sheet_.info.defaultRowHeight) out_.write(" style=\"height:" + points(own) + "\"");
  out_.write("><th scope=\"row\" data-n=\"" + std::to_string(row) + "\"></th>");
}

void SheetTable::writeRow(std::uint32_t row, Cells cells) {
  writeRowStart(row);
  std::uint32_t nextColumn = 1;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::uint32_t column = cells[i].place.column();
    writeEmptyCells(nextColumn, column - 1);
    if (!isHidden(column)) writeCell(cells.subspan(i));
    nextColumn = column + 1;
  }
  writeEmptyCells(nextColumn, lastColumn_);
  out_.write("</tr>\n");
}

void SheetTable::writeEmptyCells(std::uint32_t first, std::uint32_t last) {
  const std::uint32_t count = shownColumns(first, last);
  if (count == 0) return;
  if (count > 1 && !mayWrite(count)) {
    out_.write("<td colspan=\"" + std::to_string(count) + "\"></td>");
    return;
  }
  for (std::uint32_t i = 0; i < count; ++i)
    out_.write("<td></td>");
}

// `rest` begins with the cell and goes on to the end of its row.
void SheetTable::writeCell(Cells rest) {
  const Cell& cell = rest.front();
  const std::uint32_t column = cell.place.column();
  out_.write("<td class=\"s" + std::to_string(cell.style));
  text_.clear();
  if (cell.text != nullptr) document_.decoder->append(cell.text, text_);

  const CellStyle style = document_.styles.style(cell.style);
  const std::uint32_t last = lastFreeColumn(rest, style);
  const bool across = style.horizontal == HorizontalAlign::kCentreAcross;
  if (last == column || !(across || mayRunOver(style, text_.size(), column))) {
    out_.write("\">" + html(text_) + "</td>");
    return;
  }
  // The text lies over its neighbours, up to the next one that shows something.
  out_.write(" o\"><div style=\"width:" + points(width(column, last)) + "\">" + html(text_) +
             "</div></td>");
}

// The last column that the text of rest.front() may run over; its own if there is none.
std::uint32_t SheetTable::lastFreeColumn(Cells rest, const CellStyle& style) const {
  const std::uint32_t own = rest.front().place.column();
  if (text_.empty()) return own;
  if (style.horizontal == HorizontalAlign::kCentreAcross) {
    std::uint32_t last = own;
    for (const Cell& cell : rest.subspan(1)) {
      const bool joins = cell.place.column() == last + 1 &&
                         (cell.text == nullptr || *cell.text == '\0') &&
                         document_.styles.style(cell.style).horizontal == style.horizontal;
      if (!joins) break;
      ++last;
    }
    return last;
  }
  if (style.horizontal == HorizontalAlign::kRight || style.horizontal == HorizontalAlign::kCentre)
    return own;
  for (const Cell& cell : rest.subspan(1))
    if (cell.text != nullptr && *cell.text != '\0') return cell.place.column() - 1;
  return lastColumn_;
}

// A guess, since only the browser knows its fonts: half the font's size for a character.
bool SheetTable::mayRunOver(const CellStyle& style, std::size_t bytes, std::uint32_t column) const {
  const std::uint64_t size = style.font && style.font->size > 0 ? style.font->size : 10;
  return bytes * size * 20 / 2 > widths_[column];
}

class Page {
 public:
  Page(Output& out, const Document& document, std::span<const SheetData> sheets)
      : out_(out), document_(document), sheets_(sheets) {}

  void write();

 private:
  void writeHead(const std::string& title);
  void writeTabs();
  void writeSheet(const SheetData& sheet);

  Output& out_;
  const Document& document_;
  std::span<const SheetData> sheets_;
};

void Page::write() {
  const std::string name = document_.name == "-"
                               ? "Notebook"
                               : std::filesystem::path(document_.name).filename().string();
  const std::string title = html(validUtf8(name));
  writeHead(title);
  out_.write("<body>\n<header>\n<h1>" + title + "</h1>\n");
  for (const NotebookText& text : document_.notebookTexts)
    out_.write("<p>" + html(text.text) + "</p>\n");
  out_.write("</header>\n");
  writeTabs();
  for (const SheetData& sheet : sheets_)
    writeSheet(sheet);
  out_.write("</body>\n</html>\n");
}

void Page::writeHead(const std::string& title) {
  out_.write("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n");
  out_.write(
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
      "'unsafe-inline'; base-uri 'none'; form-action 'none'\">\n");
  out_.write("<meta name=\"viewport\" content=\"width=device-width\">\n");
  out_.write("<meta name=\"generator\" content=\"qps " QPSREADER_VERSION_STRING "\">\n");
  std::string names;
  for (const SheetData& sheet : sheets_)
    names += (names.empty() ? "" : ", ") + sheet.name;
  out_.write("<meta name=\"description\" content=\"Notebook with the worksheets: " + html(names) +
             "\">\n<title>" + title + "</title>\n<style>\n");
  out_.write(pageStyles());
  for (std::uint32_t number = 0; number < document_.styles.size(); ++number)
    out_.write(".s" + std::to_string(number) + "{" +
               cssOf(document_.styles.style(number), *document_.decoder) + "}\n");
  out_.write("</style>\n</head>\n");
}

void Page::writeTabs() {
  if (sheets_.size() < 2) return;
  out_.write("<nav>\n");
  for (const SheetData& sheet : sheets_)
    out_.write("<a href=\"#sheet" + std::to_string(sheet.number) + "\">" + html(sheet.name) +
               "</a>\n");
  out_.write("</nav>\n");
}

void Page::writeSheet(const SheetData& sheet) {
  out_.write("<section id=\"sheet" + std::to_string(sheet.number) + "\">\n<h2>" + html(sheet.name) +
             "</h2>\n");
  SheetTable(out_, document_, sheet).write();
  out_.write("</section>\n");
}

}  // namespace

void writeHtml(Output& out, const Document& document, std::span<const SheetData> sheets,
               const Settings&) {
  Page(out, document, sheets).write();
}

}  // namespace qps
