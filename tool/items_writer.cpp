// SPDX-License-Identifier: MIT
//
// Every item as the reader delivered it, one a line, with the fields' own names and numbers: for
// looking into a notebook that does not come out as it should.
#include <cstdio>
#include <string>
#include <vector>

#include "tool/commands.h"
#include "tool/document.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

std::string named(const char* name, std::string_view value) {
  std::string text = " ";
  text.append(name).append("=").append(value);
  return text;
}

std::string number(const char* name, std::uint32_t value) {
  return named(name, std::to_string(value));
}

std::string hex(const char* name, std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", unsigned{value});
  return named(name, text);
}

std::string quoted(const char* name, std::string_view utf8) {
  std::string text = visible(utf8);
  for (std::size_t at = 0; (at = text.find_first_of("\"\\", at)) != std::string::npos; at += 2)
    text.insert(at, 1, '\\');
  return named(name, '"' + text + '"');
}

class ItemsWriter {
 public:
  ItemsWriter(Output& out, const Document& document) : out_(out), document_(document) {}

  void write(const SheetData& sheet);

 private:
  void writeSheetInfo(const SSItemSheetInfo& info);
  void writeRun(const char* kind, const Run& run);
  void writeCell(const Cell& cell);
  const std::string& styleFields(std::uint32_t style);
  std::string fontFields(const SSItemFont& font) const;

  Output& out_;
  const Document& document_;
  std::vector<std::string> styleFields_;  // by style, made when it is first needed
};

void ItemsWriter::write(const SheetData& sheet) {
  out_.write("worksheet" + number("number", sheet.number) + quoted("name", sheet.name) +
             number("offset", sheet.startOffset) + "\n");
  writeSheetInfo(sheet.infoRecord);
  for (const Run& run : sheet.columnWidths)
    writeRun("11 columnWidths", run);
  for (const Run& run : sheet.rowHeights)
    writeRun("12 rowHeight", run);
  for (const NotebookText& text : document_.notebookTexts)
    out_.write((text.record == 38 ? "13 record38Text" : "14 record37Text") +
               quoted("text", text.text) + "\n");
  for (const Cell& cell : sheet.cells)
    writeCell(cell);
}

void ItemsWriter::writeSheetInfo(const SSItemSheetInfo& info) {
  std::string line = "10 sheetInfo" + number("marker", info.marker) +
                     number("rowCount", info.rowCount) + number("columnCount", info.columnCount) +
                     number("record257Flag", info.record257Flag) +
                     number("record258Flag", info.record258Flag) +
                     number("defaultColumnWidth", info.defaultColumnWidth) +
                     number("defaultRowHeight", info.defaultRowHeight);
  for (const std::uint32_t value : info.fixedInfo)
    line += number("fixedInfo", value);
  line += hex("columnColour", info.columnColour) + fontFields(info.font);
  out_.write(line + "\n");
}

void ItemsWriter::writeRun(const char* kind, const Run& run) {
  out_.write(kind + number("first", run.first) + number("last", run.last) +
             number("value", run.size) + "\n");
}

void ItemsWriter::writeCell(const Cell& cell) {
  out_.write("15 cell " + cellAddress(cell.place.column(), cell.place.row()));
  out_.write(cell.text == nullptr ? " no text"
                                  : quoted("text", document_.decoder->decode(cell.text)));
  out_.write(styleFields(cell.style));
  out_.put('\n');
}

const std::string& ItemsWriter::styleFields(std::uint32_t style) {
  if (styleFields_.empty()) styleFields_.resize(document_.styles.size());
  std::string& fields = styleFields_[style];
  if (!fields.empty()) return fields;

  const SSItemCell& cell = document_.styles.record(style);
  fields = hex("alignment", cell.alignment) + hex("fillColour", cell.fillColour) +
           hex("textColour", cell.textColour) + number("bordered", cell.bordered);
  for (const SSItemBorder& border : cell.borders)
    fields += number("border", border.style) + hex("colour", border.colour);
  fields += fontFields(cell.font) + number("spare1", cell.spare1) + number("spare2", cell.spare2) +
            number("spare3", cell.spare3);
  return fields;
}

std::string ItemsWriter::fontFields(const SSItemFont& font) const {
  return number("present", font.present) + quoted("name", document_.decoder->decode(font.name)) +
         number("size", font.size) + number("attrBit0", font.attrBit0) +
         number("attrBit1", font.attrBit1) + number("attrBit2", font.attrBit2) +
         number("attrBit5", font.attrBit5) + number("extra0", font.extra0) +
         number("extra1", font.extra1);
}

}  // namespace

void writeItems(Output& out, const Document& document, std::span<const SheetData> sheets,
                const Settings&) {
  if (document.many) out.write("==> " + visible(document.name) + " <==\n");
  ItemsWriter writer(out, document);
  for (const SheetData& sheet : sheets)
    writer.write(sheet);
}

}  // namespace qps
