// SPDX-License-Identifier: MIT
//
// The records' byte layouts, from the writing side.
#include "tests/support/notebook_builder.h"

#include <bit>
#include <iterator>

namespace qps::test {

Bytes bytesOf(std::string_view text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

Body& Body::u8(unsigned value) {
  bytes_.push_back(static_cast<std::byte>(value & 0xFF));
  return *this;
}

Body& Body::u16(unsigned value) {
  return u8(value).u8(value >> 8);
}

Body& Body::u32(std::uint32_t value) {
  return u16(value).u16(value >> 16);
}

Body& Body::f64(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return u32(static_cast<std::uint32_t>(bits)).u32(static_cast<std::uint32_t>(bits >> 32));
}

Body& Body::text(std::string_view value) {
  const auto* first = reinterpret_cast<const std::byte*>(value.data());
  bytes_.insert(bytes_.end(), first, first + value.size());
  return *this;
}

Body& Body::zeroText(std::string_view value) {
  return text(value).u8(0);
}

Body& Body::fill(std::size_t count, unsigned value) {
  bytes_.insert(bytes_.end(), count, static_cast<std::byte>(value));
  return *this;
}

Body& Body::cutTo(std::size_t size) {
  bytes_.resize(size);
  return *this;
}

Body Style::body() const {
  Body body;
  body.u8(format)
      .u8(horizontal | vertical << 3 | (textFlag ? 0x80u : 0u))
      .u8(colour1 | colour2 << 4)
      .u8(blend | textColour << 4)
      .u8(font)
      .u8(lines[0] | lines[1] << 2 | lines[2] << 4 | lines[3] << 6)
      .u8(0)
      .u8(namedStyle)
      .u8(lineColours[0] | lineColours[1] << 4)
      .u8(lineColours[2] | lineColours[3] << 4)
      .u8(0);
  return body;
}

Body cellBody(At at) {
  return Body().u8(at.column).u8(0).u16(at.row).u16(at.style << 3);
}

using Self = NotebookBuilder::Self;

Self& NotebookBuilder::rawHeader(unsigned type, unsigned bodyBytes) {
  return raw(Body().u16(type).u16(bodyBytes).bytes());
}

Self& NotebookBuilder::raw(const Bytes& bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

Self& NotebookBuilder::record(unsigned type, const Body& body) {
  if (type == rec::kSheetStart) sheetOffsets_.push_back(static_cast<std::uint32_t>(bytes_.size()));
  const auto size = static_cast<unsigned>(body.bytes().size());
  for (const unsigned byte : {type, type >> 8, size, size >> 8})
    bytes_.push_back(static_cast<std::byte>(byte & 0xFF));
  return raw(body.bytes());
}

Self& NotebookBuilder::formulaSpecial(At at, unsigned kind, unsigned low16, unsigned word) {
  // Bytes 10 and 11 of the body are the kind, and the upper half of the integer at 8 to 11.
  return record(rec::kFormula, cellBody(at).u16(0).u16(low16).u16(kind).u16(word).u32(0));
}

NotebookBuilder everyRecordNotebook() {
  NotebookBuilder book;
  book.header().dimensions(3, 23);
  book.notebookText(rec::kText37, "dropped").settings(true);
  book.notebookText(rec::kText37, "text 37").notebookText(rec::kText38, "text 38");
  book.flag(rec::kFlag257, 0).flag(rec::kFlag258, 1).settings(false).refusal(0).valueTable();
  book.font(10, 0, "Arial").font(18, 0x27, "Times");
  book.userFormat(1, "TDD-Mon-YY").userFormat(2, "N9,999.00;N'none';N'('0.0')'");
  constexpr unsigned kFormats[] = {0,  1,  4,  5,   6,   7,   8,    9,    10,   11,   12,  13,
                                   14, 15, 96, 112, 113, 114, 0x12, 0x22, 0x32, 0x42, 0x52};
  book.style({.format = 0, .lines = {1, 2, 3, 0}}).namedStyle(1, 1, "Date");
  for (const unsigned format : kFormats) {
    book.style({.format = format,
                .colour2 = 4,
                .blend = format % 8,
                .font = 1 + format % 3,
                .namedStyle = format % 2});
  }
  for (unsigned sheet = 0; sheet < 2; ++sheet) {
    book.sheetStart(sheet).sheetName(sheet == 0 ? "First" : "Second").table(3, 23);
    book.defaultRowHeight(250).defaultColumnWidth(1000).columnWidth(1, 800).columnWidth(2, 0x8050);
    book.rowHeight(1, 300).rowHeights(3, 6, 400).hiddenRows(Body().u8(0x21).u8(0x80));
    book.hiddenColumns(Body().u8(0x10)).unkept224().columnStyle(0, 2);
    book.blank({0, 0, 1}).label({0, 1, 1}, "label").integer({0, 2, 1}, -7);
    for (unsigned i = 0; i < std::size(kFormats); ++i)
      book.number({1, i, i + 2}, 45296.75);
    book.formula({2, 0, 20}, -1234.5).formulaWithString({2, 1, 1}).string({2, 1, 1}, "result");
    book.formulaSpecial({2, 2, 1}, 0).formulaSpecial({2, 3, 1}, 3, 42).formulaSpecial({2, 4, 1}, 1);
    book.sheetEnd();
  }
  return book.end();
}

}  // namespace qps::test
