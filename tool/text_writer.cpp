// SPDX-License-Identifier: MIT
//
// Text for people and for programs that look for text: a heading for each worksheet, then a line
// for each row with tabs between the columns. The same notebook gives the same bytes every time,
// and nothing in it can give orders to a terminal.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tool/commands.h"
#include "tool/document.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

class TextWriter {
 public:
  TextWriter(Output& out, const Decoder& decoder, const Settings& settings);

  void writeSheet(const SheetData& sheet);

 private:
  void writeText(const char* text);
  void writeAnyText(std::string_view text);

  Output& out_;
  const Decoder& decoder_;
  const Settings& settings_;
  std::array<bool, 256> copied_{};  // bytes that go to the output as they are
  std::string utf8_;
  std::string visible_;
};

TextWriter::TextWriter(Output& out, const Decoder& decoder, const Settings& settings)
    : out_(out), decoder_(decoder), settings_(settings) {
  if (settings.trim) return;  // every text is looked into
  for (unsigned byte = 0x20; byte < 0x7F; ++byte)
    copied_[byte] = decoder.isPlain(static_cast<unsigned char>(byte));
}

void TextWriter::writeSheet(const SheetData& sheet) {
  out_.write("=== " + visible(sheet.name) + " ===\n");
  std::uint32_t row = 0;  // the last one that was begun, and the column that it has reached
  std::uint32_t column = 1;
  for (const Cell& cell : sheet.cells) {
    if (cell.place.row() != row) {
      const std::uint32_t emptyRows = settings_.skipEmpty ? 0 : cell.place.row() - row - 1;
      out_.fill(emptyRows + (row > 0 ? 1 : 0), '\n');
      row = cell.place.row();
      column = 1;
    }
    for (; column < cell.place.column(); ++column)
      out_.put('\t');
    writeText(cell.text);
  }
  if (row > 0) out_.put('\n');
}

void TextWriter::writeText(const char* text) {
  const char* end = text;
  while (copied_[static_cast<unsigned char>(*end)])
    ++end;
  if (*end == '\0')
    out_.write({text, static_cast<std::size_t>(end - text)});
  else
    writeAnyText(text);
}

void TextWriter::writeAnyText(std::string_view text) {
  utf8_.clear();
  decoder_.append(text, utf8_);
  visible_.clear();
  appendVisible(settings_.trim ? trimmed(utf8_) : utf8_, visible_);
  out_.write(visible_);
}

}  // namespace

void writeText(Output& out, const Document& document, std::span<const SheetData> sheets,
               const Settings& settings) {
  if (document.many)
    out.write((document.follows ? "\n==> " : "==> ") + visible(document.name) + " <==\n");
  for (const NotebookText& text : document.notebookTexts)
    out.write("notebook text " + std::to_string(text.record) + ": " + visible(text.text) + "\n");
  TextWriter writer(out, *document.decoder, settings);
  for (const SheetData& sheet : sheets)
    writer.writeSheet(sheet);
}

}  // namespace qps
