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
  Body& u8(unsigned value);
  Body& u16(unsigned value);
  Body& u32(uint32_t value);
  Body& f64(double value);
  Body& text(std::string_view value);      // without a zero byte
  Body& zeroText(std::string_view value);  // with one
  Body& fill(size_t count, unsigned value = 0);
  Body& cutTo(size_t size);
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

class NotebookBuilder {
 public:
  using Self = NotebookBuilder;

  Self& record(unsigned type, const Body& body = {});
  Self& rawHeader(unsigned type, unsigned bodyBytes);  // a header that announces what you like
  Self& raw(const Bytes& bytes);

  // The notebook's definitions.
  Self& header(unsigned version = 4098);
  Self& dimensions(unsigned columns, unsigned rows);
  Self& notebookText(unsigned type, std::string_view text);  // rec::kText37, rec::kText38
  Self& refusal(unsigned value);
  Self& font(unsigned size, unsigned attributes, std::string_view name);
  Self& namedStyle(unsigned id, unsigned styleNumber, std::string_view name);
  Self& style(const Style& fields = {});
  Self& userFormat(unsigned index, std::string_view text);  // its code is 112 + index
  Self& valueTable();
  Self& flag(unsigned type, unsigned value);  // rec::kFlag257, rec::kFlag258
  Self& settings(bool on);

  // A worksheet.
  Self& sheetStart(unsigned number = 0);
  Self& sheetEnd();
  Self& sheetName(std::string_view name);
  Self& table(unsigned columns, unsigned rows);
  Self& defaultRowHeight(unsigned height);
  Self& defaultColumnWidth(unsigned width);
  Self& rowHeight(unsigned row, unsigned height);
  Self& rowHeights(unsigned firstRow, unsigned lastRow, unsigned height);
  Self& columnWidth(unsigned column, unsigned width);
  Self& hiddenRows(const Body& bitmap);
  Self& hiddenColumns(const Body& bitmap);
  Self& unkept224();
  Self& columnStyle(unsigned column, unsigned styleNumber);

  // Its cells.
  Self& blank(At at);
  Self& integer(At at, int value);
  Self& number(At at, double value);
  Self& label(At at, std::string_view text);
  Self& string(At at, std::string_view text);
  Self& formula(At at, double cached);
  Self& formulaWithString(At at);  // the string record that follows carries the text
  // A special result: 0 is an error, 3 the integer 0x30000 + low16, others have no value.
  Self& formulaSpecial(At at, unsigned kind, unsigned low16 = 0, unsigned word = 0x7FF0);

  Self& end();  // record 1

  // Offset of the header of the n-th record 202, counted from 0.
  uint32_t sheetOffset(size_t sheet = 0) const { return sheetOffsets_.at(sheet); }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
  std::vector<uint32_t> sheetOffsets_;
};

// The six bytes that every cell's body begins with.
Body cellBody(At at);

// A notebook with one of every record above, for sweeps, fuzzing seeds and benchmarks: two
// worksheets, every kind of cell, and every format family.
NotebookBuilder everyRecordNotebook();

}  // namespace qps::test

#endif  // QPSREADER_TESTS_NOTEBOOK_BUILDER_H
