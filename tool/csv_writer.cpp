// SPDX-License-Identifier: MIT
//
// Comma-separated values: a record for each row from the first to the last that shows something,
// all with the same number of fields, the empty rows and columns before them included.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tool/commands.h"
#include "tool/document.h"
#include "tool/formula_guard.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

constexpr std::size_t kUsualBytes = 8192;  // longer texts take the longer road
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class CsvWriter {
 public:
  CsvWriter(Output& out, const Decoder& decoder, const Settings& settings);

  void write(const SheetData& sheet);

 private:
  void writeField(const char* text);
  void writeOddField(const char* text);
  void writeAnyField(std::string_view text);
  void writeEmptyRows(std::uint32_t count);
  void endRow(std::uint32_t column);

  Output& out_;
  const Decoder& decoder_;
  const Settings& settings_;
  std::string_view lineEnd_;
  std::array<bool, 256> copied_{};  // bytes that go to the output as they are
  std::array<bool, 256> quoted_{};  // bytes that do so between quotes
  std::uint32_t columnCount_ = 0;   // of the sheet
  std::string scratch_;
};

CsvWriter::CsvWriter(Output& out, const Decoder& decoder, const Settings& settings)
    : out_(out), decoder_(decoder), settings_(settings), lineEnd_(settings.crlf ? "\r\n" : "\n") {
  if (settings.trim || settings.csvSafe) return;  // every text is looked into
  for (unsigned byte = 1; byte < 256; ++byte)
    copied_[byte] = decoder.isPlain(static_cast<unsigned char>(byte));
  quoted_ = copied_;
  for (const char special : {settings.delimiter, '"', '\r', '\n'})
    copied_[static_cast<unsigned char>(special)] = false;
  quoted_['"'] = false;
}

void CsvWriter::write(const SheetData& sheet) {
  columnCount_ = sheet.shown.lastColumn;
  std::uint32_t row = 0;  // the last one that was begun, and the column that it has reached
  std::uint32_t column = 1;
  for (const Cell& cell : sheet.cells) {
    if (cell.place.row() != row) {
      if (row > 0) endRow(column);
      if (!settings_.skipEmpty) writeEmptyRows(cell.place.row() - row - 1);
      row = cell.place.row();
      column = 1;
    }
    for (; column < cell.place.column(); ++column)
      out_.put(settings_.delimiter);
    writeField(cell.text);
  }
  if (row > 0) endRow(column);
}

// Most texts hold nothing special and are copied while that is being found out.
void CsvWriter::writeField(const char* text) {
  char* to = out_.reserve(kUsualBytes);
  const char* const limit = to + kUsualBytes;
  const char* from = text;
  while (copied_[static_cast<unsigned char>(*from)] && to != limit)
    *to++ = *from++;
  if (*from == '\0')
    out_.commit(to);
  else
    writeOddField(text);
}

// Most of the others only hold a delimiter ("$1,250.00"); these are copied in the same way.
void CsvWriter::writeOddField(const char* text) {
  char* to = out_.reserve(kUsualBytes);
  const char* const limit = to + kUsualBytes - 1;
  const char* from = text;
  *to++ = '"';
  while (quoted_[static_cast<unsigned char>(*from)] && to != limit)
    *to++ = *from++;
  if (*from != '\0') return writeAnyField(text);
  *to++ = '"';
  out_.commit(to);
}

void CsvWriter::writeAnyField(std::string_view text) {
  std::string_view field = text;
  if (!decoder_.isPlain(text)) {
    scratch_.clear();
    decoder_.append(text, scratch_);
    field = scratch_;
  }
  if (settings_.trim) field = trimmed(field);

  const bool guarded = settings_.csvSafe && looksLikeFormula(field);
  const char special[] = {settings_.delimiter, '"', '\r', '\n'};
  if (field.find_first_of({special, sizeof special}) == std::string_view::npos) {
    if (guarded) out_.put('\'');
    out_.write(field);
    return;
  }
  char* to = out_.reserve(2 * field.size() + 3);  // every byte may be a quote
  *to++ = '"';
  if (guarded) *to++ = '\'';
  for (const char byte : field) {
    if (byte == '"') *to++ = '"';
    *to++ = byte;
  }
  *to++ = '"';
  out_.commit(to);
}

void CsvWriter::writeEmptyRows(std::uint32_t count) {
  if (count == 0) return;
  scratch_.assign(columnCount_ - 1, settings_.delimiter);
  scratch_ += lineEnd_;
  for (; count > 0; --count)
    out_.write(scratch_);
}

void CsvWriter::endRow(std::uint32_t column) {
  for (; column < columnCount_; ++column)
    out_.put(settings_.delimiter);
  out_.write(lineEnd_);
}

}  // namespace

void writeCsv(Output& out, const Document& document, std::span<const SheetData> sheets,
              const Settings& settings) {
  CsvWriter writer(out, *document.decoder, settings);
  if (settings.bom && !document.follows) out.write(kByteOrderMark);
  bool follows = document.follows;
  for (const SheetData& sheet : sheets) {
    if (follows) out.write(settings.separator);
    writer.write(sheet);
    follows = true;
  }
}

}  // namespace qps
