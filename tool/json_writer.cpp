// SPDX-License-Identifier: MIT
//
// JSON Lines: one object for each item, in the order in which the reader delivers them. The names
// and their meanings are in docs/json-schema/qps-items.schema.json.
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "tool/cell_value.h"
#include "tool/commands.h"
#include "tool/document.h"
#include "tool/json_forms.h"
#include "tool/output.h"
#include "tool/text_forms.h"
#include "tool/utf8.h"

namespace qps {
namespace {

// What a style says, as the members of a cell's object; many cells share it.
struct StyleMembers {
  std::string alignment, borders, font;
  SSColour fillColour, textColour;
};

template <class Put>
std::string valueOf(const Put& put) {
  rapidjson::StringBuffer buffer;
  Json json(buffer);
  put(json);
  return buffer.GetString();
}

// Writes JSON with DEL and U+0080 to U+009F escaped: a terminal might obey them, and RapidJSON
// leaves them as they are. They only occur in strings.
void writeEscaped(Output& out, std::string_view json) {
  constexpr auto kNone = std::string_view::npos;
  for (std::size_t at; (at = json.find_first_of("\x7F\xC2")) != kNone;) {
    out.write(json.substr(0, at));
    const Decoded found = firstCharacter(json.substr(at));
    if (found.character > 0x9F) {
      out.write(json.substr(at, found.size));
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(found.character));
      out.write(escape);
    }
    json.remove_prefix(at + found.size);
  }
  out.write(json);
}

class JsonWriter {
 public:
  JsonWriter(Output& out, const Document& document, const Settings& settings)
      : out_(out),
        document_(document),
        hasStyle_(!settings.noStyle),
        file_(validUtf8(document.name)) {
    for (std::uint32_t number = 0; number < document.formats.size(); ++number)
      formats_.push_back(formatOf(document.formats[number]));
    for (std::uint32_t number = 0; number < document.styles.size(); ++number)
      styles_.push_back(membersOf(document.styles.style(number)));
  }

  void write(const SheetData& sheet);

 private:
  StyleMembers membersOf(const CellStyle& style) const;
  void begin(const char* kind, const SheetData& sheet);
  void end();
  void writeSheetInfo(const SheetData& sheet);
  std::string formatOf(const FormatFacts& format) const;
  void writeCell(const SheetData& sheet, const Cell& cell, const CellContents& contents);
  void putContents(const CellContents& contents, const Cell& cell);
  void putNumeral(const char* name, double number);
  void putStyle(const StyleMembers& style);
  void putRaw(const char* name, const std::string& value);

  Output& out_;
  const Document& document_;
  bool hasStyle_;
  std::string file_;
  std::vector<StyleMembers> styles_;
  std::vector<std::string> formats_;
  rapidjson::StringBuffer line_;
  Json json_{line_};
  std::string scratch_;
};

StyleMembers JsonWriter::membersOf(const CellStyle& style) const {
  const Decoder& decoder = *document_.decoder;
  return {valueOf([&](Json& json) { putAlignment(json, style); }),
          valueOf([&](Json& json) { putBorders(json, style); }),
          valueOf([&](Json& json) { putFont(json, style.font, decoder); }), style.fillColour,
          style.textColour};
}

void JsonWriter::write(const SheetData& sheet) {
  writeSheetInfo(sheet);
  for (const Run& run : sheet.columnWidths) {
    begin("columnWidths", sheet);
    putNumber(json_, "firstColumn", run.first);
    putNumber(json_, "lastColumn", run.last);
    putNumber(json_, "width", run.size);
    putBool(json_, "hidden", run.size == 0);
    end();
  }
  for (const Run& run : sheet.rowHeights) {
    begin("rowHeight", sheet);
    putNumber(json_, "row", run.first);
    putNumber(json_, "height", run.size);
    putBool(json_, "hidden", run.size == 0);
    end();
  }
  for (const NotebookText& text : document_.notebookTexts) {
    begin("notebookText", sheet);
    putNumber(json_, "record", text.record);
    putText(json_, "text", text.text);
    end();
  }
  for (std::size_t i = 0; i < sheet.cells.size(); ++i)
    writeCell(sheet, sheet.cells[i], sheet.contents[i]);
}

void JsonWriter::begin(const char* kind, const SheetData& sheet) {
  line_.Clear();
  json_.Reset(line_);
  json_.StartObject();
  putText(json_, "kind", kind);
  putText(json_, "file", file_);
  putText(json_, "sheet", sheet.name);
  putNumber(json_, "sheetNumber", sheet.number);
}

void JsonWriter::end() {
  json_.EndObject();
  writeEscaped(out_, {line_.GetString(), line_.GetSize()});
  out_.put('\n');
}

void JsonWriter::writeSheetInfo(const SheetData& sheet) {
  begin("sheet", sheet);
  putNumber(json_, "rowCount", sheet.info.rowCount);
  putNumber(json_, "columnCount", sheet.info.columnCount);
  putNumber(json_, "defaultColumnWidth", sheet.info.defaultColumnWidth);
  putNumber(json_, "defaultRowHeight", sheet.info.defaultRowHeight);
  putColour(json_, "columnColour", sheet.info.columnColour);
  putBool(json_, "record257Flag", sheet.info.record257Flag);
  putBool(json_, "record258Flag", sheet.info.record258Flag);
  end();
}

std::string JsonWriter::formatOf(const FormatFacts& format) const {
  return valueOf([&](Json& json) {
    json.StartObject();
    putText(json, "name", nameOf(format.form));
    if (showsDecimals(format.form)) putNumber(json, "decimals", format.decimals);
    if (!format.text.empty()) putText(json, "text", document_.decoder->decode(format.text));
    json.EndObject();
  });
}

void JsonWriter::writeCell(const SheetData& sheet, const Cell& cell, const CellContents& contents) {
  begin("cell", sheet);
  putText(json_, "address", cellAddress(cell.place.column(), cell.place.row()));
  putNumber(json_, "row", cell.place.row());
  putNumber(json_, "column", cell.place.column());
  if (cell.text == nullptr) {
    json_.Key("text");
    json_.Null();
  } else {
    scratch_.clear();
    document_.decoder->append(cell.text, scratch_);
    putText(json_, "text", scratch_);
  }
  putContents(contents, cell);
  if (hasStyle_) putStyle(styles_[cell.style]);
  end();
}

// A text that is shown has just been decoded.
void JsonWriter::putContents(const CellContents& contents, const Cell& cell) {
  putText(json_, "type", nameOf(contents.type()));
  switch (contents.type()) {
    case ValueType::kBlank:
    case ValueType::kError:
      json_.Key("value");
      json_.Null();
      break;
    case ValueType::kNumber:
      putNumeral("value", contents.number());
      break;
    case ValueType::kDate:
    case ValueType::kTime:
    case ValueType::kDateTime:
      scratch_.clear();
      appendDate(contents.number(), contents.type(), scratch_);
      putText(json_, "value", scratch_);
      putNumeral("serial", contents.number());
      break;
    case ValueType::kText:
      if (contents.text() != cell.text) {
        scratch_.clear();
        document_.decoder->append(contents.text(), scratch_);
      }
      putText(json_, "value", scratch_);
      break;
  }
  putBool(json_, "formula", contents.isFormula());
  putRaw("format", formats_[contents.format()]);
}

void JsonWriter::putNumeral(const char* name, double number) {
  scratch_.clear();
  appendNumber(number, scratch_);
  putRaw(name, scratch_);
}

void JsonWriter::putStyle(const StyleMembers& style) {
  putRaw("alignment", style.alignment);
  putColour(json_, "fillColour", style.fillColour);
  putColour(json_, "textColour", style.textColour);
  putRaw("borders", style.borders);
  putRaw("font", style.font);
}

void JsonWriter::putRaw(const char* name, const std::string& value) {
  json_.Key(name);
  json_.RawValue(value.data(), value.size(), rapidjson::kObjectType);
}

}  // namespace

void writeJson(Output& out, const Document& document, std::span<const SheetData> sheets,
               const Settings& settings) {
  JsonWriter writer(out, document, settings);
  for (const SheetData& sheet : sheets)
    writer.write(sheet);
}

}  // namespace qps
