// SPDX-License-Identifier: MIT
//
// A format text and a value, through a cell of a notebook of one cell. The input:
//
//   0   8  the value
//   8   2  the column's width
//   10  1  the style's format, as record 206 holds it; 0 stands for the code of the format text
//   11  1  bit 0: the style's name is "Date", bit 1: times as version 4103 shows them,
//          bit 2: no pool block for what is worked out from the style and the text
//   12  1  the font's size
//   13     the format text
#include <algorithm>
#include <array>
#include <cstring>

#include "fuzz/input_bytes.h"
#include "fuzz/session.h"

namespace {

using namespace qps::fuzz;

constexpr size_t kMostTextBytes = 2048;
constexpr uint8_t kTextCode = 113;

// A notebook in a fixed area: records of known sizes and one text.
class SmallNotebook {
 public:
  template <typename... Bytes>
  void record(uint16_t type, Bytes... bytes) {
    header(type, sizeof...(bytes));
    (..., u8(static_cast<uint8_t>(bytes)));
  }
  void header(uint16_t type, size_t bodyBytes) {
    u16(type);
    u16(static_cast<uint16_t>(bodyBytes));
  }
  void u8(uint8_t value) { bytes_[size_++] = value; }
  void u16(uint16_t value) {
    u8(static_cast<uint8_t>(value & 0xFF));
    u8(static_cast<uint8_t>(value >> 8));
  }
  void text(std::span<const uint8_t> text) {
    std::copy(text.begin(), text.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
    size_ += text.size();
  }
  size_t size() const { return size_; }
  std::span<const uint8_t> bytes() const { return std::span(bytes_).first(size_); }

 private:
  std::array<uint8_t, kMostTextBytes + 256> bytes_;
  size_t size_ = 0;
};

void requireSameCells(const SSItem& first, const SSItem& second) {
  const char* a = first.cell.text;
  const char* b = second.cell.text;
  require((a == nullptr) == (b == nullptr), "a value shows or not, always");
  require(a == nullptr || std::strcmp(a, b) == 0, "a value shows the same every time");
  require(first.cell.alignment == second.cell.alignment, "a value aligns the same every time");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kMostShownChars = 127;
  InputBytes input(data, size);
  const auto value = input.take(8);
  const uint16_t width = input.u16();
  const uint8_t format = input.u8();
  const uint8_t flags = input.u8();
  const uint8_t fontSize = input.u8();
  const auto text = input.take(kMostTextBytes);
  const bool isDate = (flags & 1) != 0;

  SmallNotebook book;
  book.record(0, (flags & 2) != 0 ? 0x07 : 0x02, 0x10);
  book.record(207, fontSize, 0, 0, 0);
  book.record(208, 1, 0, 0, 0, 'D', 'a', 't', 'e', 0);
  book.header(230, 2 + text.size());
  book.u16(kTextCode - 112);
  book.text(text);
  book.record(206, format == 0 ? kTextCode : format, 0, 0, 0, 1, 0, 0, isDate ? 1 : 0, 0, 0, 0);
  const auto sheetStart = static_cast<uint32_t>(book.size());
  book.record(202, 0, 0);
  book.header(212, 2);
  book.u16(width);
  for (int i = 0; i < 2; ++i) {
    book.header(14, 14);
    book.text(std::array<uint8_t, 6>{});
    book.text(value);
    for (size_t j = value.size(); j < 8; ++j)
      book.u8(0);
  }
  book.record(203);

  LeanHost host(book.bytes());
  QPSReader* reader =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  QPSSheet* sheet = QPSInitSheet(reader, &host, sheetStart, LeanHost::itemAlloc, nullptr);
  require(sheet != nullptr, "a sound notebook opens");
  if ((flags & 4) != 0) host.failFromNowOn(Step::kPoolBlock);
  SSItem items[2];
  require(QPSProcessSheet(sheet, &items[0]) == 0, "sheet information");
  for (SSItem& item : items) {
    require(QPSProcessSheet(sheet, &item) == 0 && item.kind == SSItemKindCell, "two cells");
    require(item.cell.text == nullptr || std::strlen(item.cell.text) <= kMostShownChars,
            "a value shows in 127 characters");
  }
  requireSameCells(items[0], items[1]);
  for (const SSItem& item : items) {
    if (char* shown = item.cell.text) host.freeItemText(shown);
  }
  QPSCloseSheet(sheet);
  QPSCloseReader(reader);
  host.requireAtRest();
  return 0;
}
