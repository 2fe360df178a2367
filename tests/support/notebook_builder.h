// SPDX-License-Identifier: MIT
//
// Builds notebooks record by record: a test says what stands in the file in the file's own order.
// Every helper appends one record; columns and rows count from 0, as in the file. `record` appends
// any type with any body, so that no shape of damage is out of reach.
#ifndef QPSREADER_TESTS_NOTEBOOK_BUILDER_H
#define QPSREADER_TESTS_NOTEBOOK_BUILDER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qps::test {

using Bytes = std::vector<std::byte>;

Bytes bytesOf(std::string_view text);

// The record types that the reader knows.
namespace rec {
enum Type : unsigned {
  kHeader = 0,
  kEnd = 1,
  kDimensions = 6,
  kBlank = 12,
  kInteger = 13,
  kNumber = 14,
  kLabel = 15,
  kFormula = 16,
  kText37 = 37,
  kText38 = 38,
  kString = 51,
  kRefusal = 76,
  kTable = 150,
  kSheetStart = 202,
  kSheetEnd = 203,
  kSheetName = 204,
  kStyle = 206,
  kFont = 207,
  kNamedStyle = 208,
  kDefaultRowHeight = 210,
  kDefaultColumnWidth = 212,
  kRowHeight = 214,
  kColumnWidth = 216,
  kHiddenRows = 220,
  kHiddenColumns = 222,
  kUnkept224 = 224,
  kUserFormat = 230,
  kColumnStyle = 231,
  kValueTable = 232,
  kFlag257 = 257,
  kFlag258 = 258,
  kRowHeights = 261,
  kSettingsOn = 265,
  kSettingsOff = 266,
  kNoSheets = 310,  // ends the definitions as a worksheet does
};
}  // namespace rec

// A record's body, written field by field, little-endian.
class Body {
 public:
  Body() { bytes_.reserve(32); }
  Body& u8(unsigned value);
  Body& u16(unsigned value);
  Body& u32(std::uint32_t value);
  Body& f64(double value);
  Body& text(std::string_view value);      // without a zero byte
  Body& zeroText(std::string_view value);  // with one
  Body& fill(std::size_t count, unsigned value = 0);
  Body& cutTo(std::size_t size);
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

// Record 206 by its fields; the numbers are the file's selectors and palette indexes.
struct Style {
  unsigned format = 0;  // a code, or a family (0x10 to 0x60) with its decimals in the low nibble
  unsigned horizontal = 0;
  unsigned vertical = 0;
  bool textFlag = false;
  unsigned colour1 = 0;
  unsigned colour2 = 0;
  unsigned blend = 0;
  unsigned textColour = 3;
  unsigned font = 1;
  std::array<unsigned, 4> lines{};  // left, top, right, bottom
  unsigned namedStyle = 0;
  std::array<unsigned, 4> lineColours{};

  Body body() const;
};

// Where a cell stands and which style it names.
struct At {
  unsigned column = 0;
  unsigned row = 0;
  unsigned style = 1;
};

// The six bytes that every cell's body begins with.
Body cellBody(At at);

class NotebookBuilder {
 public:
  using Self = NotebookBuilder;

  Self& record(unsigned type, const Body& body = {});
  Self& rawHeader(unsigned type, unsigned bodyBytes);  // a header that announces what you like
  Self& raw(const Bytes& bytes);

  // The notebook's definitions.
  Self& header(unsigned version = 4098) { return record(rec::kHeader, Body().u16(version)); }
  Self& dimensions(unsigned columns, unsigned rows) {
    return record(rec::kDimensions, Body().u32(0).u16(columns - 1).u16(rows - 1));
  }
  // `type` is rec::kText37 or rec::kText38.
  Self& notebookText(unsigned type, std::string_view text) {
    return record(type, Body().zeroText(text));
  }
  Self& refusal(unsigned value) { return record(rec::kRefusal, Body().u16(value)); }
  Self& font(unsigned size, unsigned attributes, std::string_view name) {
    return record(rec::kFont, Body().u16(size).u8(attributes).u8(0).zeroText(name));
  }
  Self& namedStyle(unsigned id, unsigned styleNumber, std::string_view name) {
    return record(rec::kNamedStyle, Body().u16(id).u16((styleNumber - 1) << 3).zeroText(name));
  }
  Self& style(const Style& fields = {}) { return record(rec::kStyle, fields.body()); }
  // The format's code is 112 + index.
  Self& userFormat(unsigned index, std::string_view text) {
    return record(rec::kUserFormat, Body().u16(index).zeroText(text));
  }
  Self& valueTable() { return record(rec::kValueTable, Body().fill(16)); }
  // `type` is rec::kFlag257 or rec::kFlag258.
  Self& flag(unsigned type, unsigned value) { return record(type, Body().u8(value)); }
  Self& settings(bool on) {
    return record(on ? rec::kSettingsOn : rec::kSettingsOff, Body().u16(0));
  }

  // A worksheet.
  Self& sheetStart(unsigned number = 0) {
    return record(rec::kSheetStart, Body().u8(number).u8(0));
  }
  Self& sheetEnd() { return record(rec::kSheetEnd); }
  Self& sheetName(std::string_view name) { return record(rec::kSheetName, Body().zeroText(name)); }
  Self& table(unsigned columns, unsigned rows) {
    return record(rec::kTable, Body().u16(columns - 1).u16(0).u16(rows - 1));
  }
  Self& defaultRowHeight(unsigned height) {
    return record(rec::kDefaultRowHeight, Body().u16(height));
  }
  Self& defaultColumnWidth(unsigned width) {
    return record(rec::kDefaultColumnWidth, Body().u16(width));
  }
  Self& rowHeight(unsigned row, unsigned height) {
    return record(rec::kRowHeight, Body().u16(row).u16(height));
  }
  Self& rowHeights(unsigned firstRow, unsigned lastRow, unsigned height) {
    return record(rec::kRowHeights, Body().u16(firstRow).u16(lastRow).u16(height));
  }
  Self& columnWidth(unsigned column, unsigned width) {
    return record(rec::kColumnWidth, Body().u16(column).u16(width));
  }
  Self& hiddenRows(const Body& bitmap) { return record(rec::kHiddenRows, bitmap); }
  Self& hiddenColumns(const Body& bitmap) { return record(rec::kHiddenColumns, bitmap); }
  Self& unkept224() { return record(rec::kUnkept224, Body().u16(0)); }
  Self& columnStyle(unsigned column, unsigned styleNumber) {
    return record(rec::kColumnStyle, Body().u16(column).u16(styleNumber));
  }

  // Its cells.
  Self& blank(At at) { return record(rec::kBlank, cellBody(at)); }
  Self& integer(At at, int value) {
    return record(rec::kInteger, cellBody(at).u16(static_cast<unsigned>(value)));
  }
  Self& number(At at, double value) { return record(rec::kNumber, cellBody(at).f64(value)); }
  Self& label(At at, std::string_view text) {
    return record(rec::kLabel, cellBody(at).u8('\'').zeroText(text));
  }
  Self& string(At at, std::string_view text) {
    return record(rec::kString, cellBody(at).u8('\'').zeroText(text));
  }
  Self& formula(At at, double cached) {
    return record(rec::kFormula, cellBody(at).f64(cached).u32(0));
  }
  // The string record that follows carries the text.
  Self& formulaWithString(At at) {
    return record(rec::kFormula, cellBody(at).fill(6).u16(0x7FF8).u32(0));
  }
  // A special result: 0 is an error, 3 the integer 0x30000 + low16, others have no value.
  Self& formulaSpecial(At at, unsigned kind, unsigned low16 = 0, unsigned word = 0x7FF0);

  Self& end() { return record(rec::kEnd); }  // record 1

  // Offset of the header of the n-th record 202, counted from 0.
  std::uint32_t sheetOffset(std::size_t sheet = 0) const { return sheetOffsets_.at(sheet); }
  std::size_t sheets() const { return sheetOffsets_.size(); }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
  std::vector<std::uint32_t> sheetOffsets_;
};

// A notebook with one of every record above, for sweeps, fuzzing seeds and benchmarks: two
// worksheets, every kind of cell, and every format family.
NotebookBuilder everyRecordNotebook();

}  // namespace qps::test

#endif  // QPSREADER_TESTS_NOTEBOOK_BUILDER_H
