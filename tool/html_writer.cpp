// SPDX-License-Identifier: MIT
//
// An HTML page that looks like the notebook: a table for each worksheet with its own widths,
// heights, fonts, colours and borders; hidden rows and columns are named, and a box shows them. The
// page stands alone: no script, nothing loaded, and a policy that forbids both.
#include <filesystem>
#include <string>

#include <qpsreader/version.h>
#include "tool/commands.h"
#include "tool/document.h"
#include "tool/file_names.h"
#include "tool/html_sheet.h"
#include "tool/html_style.h"
#include "tool/html_writer.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

class Page {
 public:
  Page(Output& out, const Document& document, std::span<const SheetData> sheets)
      : out_(out), document_(document), sheets_(sheets) {}

  void write();

 private:
  void writeHead(const std::string& title);
  void writeTabs();

  Output& out_;
  const Document& document_;
  std::span<const SheetData> sheets_;
};

void Page::write() {
  const std::string name =
      document_.name == "-" ? "Notebook" : fileNameOf(filePathOf(document_.name).filename());
  const std::string title = html(validUtf8(name));
  writeHead(title);
  out_.write(sheets_.size() < 2 ? "<body>\n" : "<body class=\"tabs\">\n");
  out_.write("<header>\n<h1>" + title + "</h1>\n");
  if (document_.damage)
    out_.write("<p class=\"damage\" role=\"note\"><strong>This notebook is damaged:</strong> " +
               html(validUtf8(document_.damage->reason)) +
               ". The page shows what could be read; the rest is missing.</p>\n");
  for (const NotebookText& text : document_.notebookTexts)
    out_.write("<p>" + html(text.text) + "</p>\n");
  out_.write("</header>\n");
  writeTabs();
  out_.write("<main>\n");
  for (const SheetData& sheet : sheets_)
    SheetTable(out_, document_, sheet).write();
  out_.write("</main>\n</body>\n</html>\n");
}

void Page::writeHead(const std::string& title) {
  out_.write("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n");
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
  writeHtmlStyles(out_, document_);
  out_.write("</style>\n</head>\n");
}

void Page::writeTabs() {
  if (sheets_.size() < 2) return;
  out_.write("<nav aria-label=\"Worksheets\">\n");
  for (const SheetData& sheet : sheets_)
    out_.write("<a href=\"#sheet" + std::to_string(sheet.number) + "\">" + html(sheet.name) +
               "</a>\n");
  out_.write("</nav>\n");
}

}  // namespace

void writeHtmlStyles(Output& out, const Document& document) {
  out.write(pageStyles());
  for (std::uint32_t number = 0; number < document.styles.size(); ++number)
    out.write(".s" + std::to_string(number) + "{" +
              cssOf(document.styles.style(number), *document.decoder) + "}\n");
}

struct HtmlSheet::State {
  SheetTable table;
};

HtmlSheet::HtmlSheet(Output& out, const Document& document, const SheetData& sheet)
    : state_(new State{SheetTable(out, document, sheet)}) {}
HtmlSheet::~HtmlSheet() = default;

bool HtmlSheet::isLarge() const {
  return state_->table.isLarge();
}

void HtmlSheet::write() {
  state_->table.write();
}

void HtmlSheet::writeFrame() {
  state_->table.writeHead();
  state_->table.writeEnd();
}

void HtmlSheet::writeRows(std::uint32_t first, std::uint32_t last) {
  state_->table.writeRows(first, last);
}

void writeHtml(Output& out, const Document& document, std::span<const SheetData> sheets,
               const Settings&) {
  Page(out, document, sheets).write();
}

}  // namespace qps
