// SPDX-License-Identifier: MIT
//
// Comma-separated values: a record for each row from the first to the last that shows something,
// all with the same number of fields, the empty rows and columns before them included. On a
// terminal control characters become visible ones; in a file they stay what they are.
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <qpsreader/host/text_arena.hpp>
#include "tool/commands.h"
#include "tool/document.h"
#include "tool/formula_guard.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

constexpr std::size_t kUsualBytes = 8192;  // longer texts are written by writeAnyField
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The bytes that end what is copied as it is: `byte`, the quote, control characters and all beyond
// ASCII. Eight at a time, so that no branch depends on where among them a text ends.
class Stops {
 public:
  explicit Stops(char byte) : repeated_(kOnes * static_cast<unsigned char>(byte)) {}

  // Copies eight bytes; how many of them stand before the first stop.
  std::size_t copyEight(char* to, const char* from) const {
    std::uint64_t word;
    std::memcpy(&word, from, sizeof word);
    std::memcpy(to, &word, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    // The top bit of every stop, and perhaps of some after the first of them.
    const std::uint64_t stops = (word | (word - kOnes * ' ') | ((word ^ kOnes * '"') - kOnes) |
                                 ((word ^ repeated_) - kOnes)) &
                                kTops;
    return static_cast<std::size_t>(std::countr_zero(stops)) / 8;
  }

 private:
  static constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
  static constexpr std::uint64_t kTops = 0x8080'8080'8080'8080;

  std::uint64_t repeated_;
};

static_assert(TextArena::kReadableBehind >= sizeof(std::uint64_t));

inline void copyToStop(Stops stops, const char*& from, char*& to, const char* limit) {
  std::size_t count;
  do {
    count = stops.copyEight(to, from);
    from += count;
    to += count;
  } while (count == sizeof(std::uint64_t) && to < limit);
}

class CsvWriter {
 public:
  CsvWriter(Output& out, const Document& document, const Settings& settings);

  void write(const SheetData& sheet);

 private:
  void writeField(const char* text);
  void writeAnyField(std::string_view text);
  void writeUtf8Field(std::string_view field);
  void writeSource();
  void writeEmptyRows(std::uint32_t count);
  void endRow(std::uint32_t column);

  Output& out_;
  const Decoder& decoder_;
  const Settings& settings_;
  std::string_view lineEnd_;
  Stops stops_;
  bool copies_;  // whether any text goes to the output as it is
  std::string file_;
  const SheetData* sheet_ = nullptr;
  std::string scratch_;
  std::string visible_;
  std::string guarded_;
};

CsvWriter::CsvWriter(Output& out, const Document& document, const Settings& settings)
    : out_(out),
      decoder_(*document.decoder),
      settings_(settings),
      lineEnd_(settings.crlf ? "\r\n" : "\n"),
      stops_(settings.delimiter),
      copies_(!settings.trim && !settings.csvSafe && !out.isTerminal()),
      file_(validUtf8(document.name)) {
  for (unsigned char byte = 1; byte < 0x80; ++byte)
    copies_ = copies_ && decoder_.isPlain(byte);
}

void CsvWriter::write(const SheetData& sheet) {
  sheet_ = &sheet;
  std::uint32_t row = 0;  // the last one that was begun, and the column that it has reached
  std::uint32_t column = 1;
  for (const Cell& cell : sheet.cells) {
    if (cell.place.row() != row) {
      if (row > 0) endRow(column);
      if (!settings_.skipEmpty) writeEmptyRows(cell.place.row() - row - 1);
      row = cell.place.row();
      column = 1;
      if (settings_.withSource) writeSource();
    }
    for (; column < cell.place.column(); ++column)
      out_.put(settings_.delimiter);
    writeField(cell.text);
  }
  if (row > 0) endRow(column);
}

// Most texts hold nothing special and are copied while that is being found out. Most of the others
// only hold a delimiter ("$1,250.00") and are copied once more in the same way.
void CsvWriter::writeField(const char* text) {
  if (!copies_) return writeAnyField(text);
  char* to = out_.reserve(kUsualBytes);
  const char* const limit = to + kUsualBytes - sizeof(std::uint64_t) - 1;
  const char* from = text;
  copyToStop(stops_, from, to, limit);
  if (*from == settings_.delimiter) {
    to = out_.reserve(kUsualBytes);
    from = text;
    *to++ = '"';
    copyToStop(Stops('"'), from, to, limit);
    *to++ = '"';
  }
  if (*from != '\0') return writeAnyField(text);
  out_.commit(to);
}

void CsvWriter::writeAnyField(std::string_view text) {
  std::string_view field = text;
  if (!decoder_.isPlain(text)) {
    scratch_.clear();
    decoder_.append(text, scratch_);
    field = scratch_;
  }
  writeUtf8Field(settings_.trim ? trimmed(field) : field);
}

void CsvWriter::writeUtf8Field(std::string_view field) {
  if (out_.isTerminal()) {
    visible_.clear();
    appendVisible(field, visible_);
    field = visible_;
  }

  if (settings_.csvSafe) {
    guarded_.clear();
    appendGuarded(field, settings_.delimiter, guarded_);
    field = guarded_;
  }
  const char special[] = {settings_.delimiter, '"', '\r', '\n'};
  if (field.find_first_of({special, sizeof special}) == std::string_view::npos) {
    return out_.write(field);
  }
  char* to = out_.reserve(2 * field.size() + 3);  // every byte may be a quote
  *to++ = '"';
  for (const char byte : field) {
    if (byte == '"') *to++ = '"';
    *to++ = byte;
  }
  *to++ = '"';
  out_.commit(to);
}

void CsvWriter::writeSource() {
  writeUtf8Field(file_);
  out_.put(settings_.delimiter);
  writeUtf8Field(sheet_->name);
  out_.put(settings_.delimiter);
}

void CsvWriter::writeEmptyRows(std::uint32_t count) {
  if (count == 0) return;
  scratch_.assign(sheet_->shown.lastColumn - 1, settings_.delimiter);
  scratch_ += lineEnd_;
  for (; count > 0; --count) {
    if (settings_.withSource) writeSource();
    out_.write(scratch_);
  }
}

void CsvWriter::endRow(std::uint32_t column) {
  for (; column < sheet_->shown.lastColumn; ++column)
    out_.put(settings_.delimiter);
  out_.write(lineEnd_);
}

}  // namespace

void writeCsv(Output& out, const Document& document, std::span<const SheetData> sheets,
              const Settings& settings) {
  CsvWriter writer(out, document, settings);
  if (settings.bom && !document.follows) out.write(kByteOrderMark);
  bool follows = document.follows;
  for (const SheetData& sheet : sheets) {
    if (follows) out.write(settings.separator.value_or(settings.withSource ? "" : "\n"));
    writer.write(sheet);
    follows = true;
  }
}

}  // namespace qps
