// SPDX-License-Identifier: MIT
//
// What only a cell shows: a value under any style, width and format text, from the style's record
// to the text in the item, with the pool exhausted or not. The input:
//
//   0   8  the value
//   8   2  the column's width
//   10  1  the style's format, as record 206 holds it; 0 stands for the code of the format text
//   11  1  bit 0: the style's name is "Date", bit 1: times as version 4103 shows them,
//          bit 2: no pool block for what is worked out from the style and the text
//   12  1  the font's size
//   13     the format text
#include "fuzz/input_bytes.h"
#include "fuzz/session.h"

namespace {

using namespace qps::fuzz;

constexpr unsigned kTextIndex = 1;
constexpr unsigned kTextCode = 112 + kTextIndex;

// A worksheet with the value twice.
NotebookBuilder notebookOf(InputBytes& input, unsigned& flags) {
  const double value = input.f64();
  const unsigned width = input.u16();
  const unsigned format = input.u8();
  flags = input.u8();
  const unsigned fontSize = input.u8();
  const auto text = input.rest();
  NotebookBuilder book;
  book.header((flags & 2) != 0 ? 0x1007 : 0x1002).font(fontSize, 0, "").namedStyle(1, 1, "Date");
  book.userFormat(kTextIndex, {reinterpret_cast<const char*>(text.data()), text.size()});
  book.style({.format = format == 0 ? kTextCode : format, .namedStyle = flags & 1});
  book.sheetStart().defaultColumnWidth(width);
  return book.number({}, value).number({}, value).sheetEnd();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMostTextBytes = 2048;
  constexpr std::size_t kMostShownChars = 127;
  InputBytes input(data, std::min(size, kMostTextBytes));
  unsigned flags = 0;
  const NotebookBuilder book = notebookOf(input, flags);

  RecordingHost host(book.bytes());
  QPSReader* reader =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  QPSSheet* sheet =
      QPSInitSheet(reader, &host, book.sheetOffset(), RecordingHost::itemAlloc, nullptr);
  require(sheet != nullptr, "a sound notebook opens");
  if ((flags & 4) != 0) host.fail({.step = Step::kPoolBlock, .forGood = true});
  ItemTaker taker(host, sheet, linkedReader());
  require(taker.take().has_value(), "sheet information");
  const auto first = taker.take();
  require(first && first->kind() == SSItemKindCell && first == taker.take(),
          "a value shows the same twice");
  require(!first->text || first->text->size() <= kMostShownChars, "in 127 characters");
  QPSCloseSheet(sheet);
  QPSCloseReader(reader);
  require(host.state() == "clean", "nothing is left open or allocated");
  return 0;
}
