// SPDX-License-Identifier: MIT
//
// Writes the seed inputs of every fuzz target into one folder each: make_seeds FOLDER. What stands
// before the file or the text in an input is described in the targets.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "tests/support/compound_writer.h"
#include "tests/support/notebook_builder.h"

namespace {

using namespace qps::test;
using namespace std::string_view_literals;

// Seeds are numbered over all targets.
class Seeds {
 public:
  explicit Seeds(std::filesystem::path root) : root_(std::move(root)) {}

  void add(const char* target, const Body& prefix, const Bytes& rest) {
    std::filesystem::create_directories(root_ / target);
    std::ofstream file(root_ / target / std::to_string(++count_), std::ios::binary);
    for (const Bytes& bytes : {prefix.bytes(), rest}) {
      file.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    }
    failed_ = failed_ || !file.flush();
  }
  bool failed() const { return failed_; }

 private:
  std::filesystem::path root_;
  int count_ = 0;
  bool failed_ = false;
};

NotebookBuilder sheetWith(const Style& style = {}) {
  NotebookBuilder book;
  book.header().font(12, 0x27, "Font").namedStyle(3, 1, "Date").userFormat(1, "TDD-Mon-YY");
  book.style(style).sheetStart();
  return book;
}

// Small notebooks, each with a few records that belong together, and one with everything.
std::vector<Bytes> notebooks() {
  NotebookBuilder gaps = sheetWith().record(rec::kTable).sheetStart(1).table(1, 1);
  NotebookBuilder named = sheetWith().sheetName(std::string(80, 'n')).table(2, 2).blank({});
  NotebookBuilder styled =
      sheetWith({.format = 113, .blend = 4, .lines = {1, 2, 3, 1}, .namedStyle = 3});
  styled.table(1, 1).number({}, 36000.25).columnStyle(0, 1).number({}, -1);
  NotebookBuilder rows = sheetWith().table(1, 9).rowHeight(3, 300);
  rows.hiddenRows(Body().u8(0xFF).u8(0x0A)).rowHeights(2, 12, 500).hiddenRows(Body().u8(0x0F));
  rows.hiddenColumns(Body().u8(3)).columnWidth(3, 0x8100).label({}, "A").integer({}, 7);
  rows.formulaWithString({}).string({}, "result").formulaSpecial({}, 3, 5);
  NotebookBuilder text = NotebookBuilder().header().settings(true).notebookText(rec::kText37, "37");
  std::vector<Bytes> books{everyRecordNotebook().bytes()};
  for (NotebookBuilder* book : {&gaps, &named, &styled, &rows, &text})
    books.push_back(book->sheetEnd().end().bytes());
  return books;
}

void addNotebooks(Seeds& seeds) {
  // A reader, a listing, its first sheet and all items of it, the second sheet and two items.
  const auto calls = "\x00\x01\x02\x05\x06\x0A\x04\x04\x07\x07\x07\x07\x07\x07\x07\x07"sv;
  // The tenth read fails, and every pool block from the sixth on.
  const auto faults = "\x01\x00\x09\x00\x03\x01\x05\x00\x01"sv;
  unsigned shape = 1;
  for (const Bytes& book : notebooks()) {
    seeds.add("plain_notebook", {}, book);
    seeds.add("compound_notebook", Body().u8(shape += 14), book);
    seeds.add("embedded_host", Body().u16(0), book);
    seeds.add("embedded_host", Body().u16(50), book);
    seeds.add("host_calls", Body().fill(9, 7).text(calls), book);
    seeds.add("host_calls", Body().text(faults).text(calls), book);
  }
}

// Every command; and what is not as it seems: markup, formulas, controls, encodings of more bytes.
void addTools(Seeds& seeds) {
  constexpr std::string_view kTexts[] = {
      "<script>x</script>", "\"><b>&amp;",      "=1+1",         "a;=b\n@c",
      "\x1B[2J\x7F\x9B",    "\x82\xA0\x81\x5C", "\x0E$)A!!\x0F"};
  constexpr std::string_view kEncodings[] = {"windows-1252", "UTF-8",  "SHIFT_JIS", "BIG5-HKSCS",
                                             "ISO-2022-KR",  "IBM437", "GB18030"};
  constexpr unsigned kCommands = 7;
  std::vector<Bytes> books = notebooks();
  for (const std::string_view text : kTexts) {
    NotebookBuilder book;
    book.header().font(12, 0x27, text).style({}).sheetStart().sheetName(text).table(9, 9);
    book.label({}, text).label({.column = 3, .row = 5}, text).blank({.column = 3, .row = 5});
    books.push_back(book.sheetEnd().end().bytes());
  }
  unsigned flags = 0;
  for (const Bytes& book : books)
    for (unsigned command = 0; command < kCommands; ++command, flags += 37) {
      const std::string_view encoding = kEncodings[flags % std::size(kEncodings)];
      seeds.add("tool_writers",
                Body().text(encoding).fill(16 - encoding.size()).u8(command | flags << 3).u8(flags),
                book);
    }
}

// Documents of every shape that the writer knows, around the same notebook.
void addDocuments(Seeds& seeds) {
  // Opens the notebook's stream, reads, seeks, compares readings, closes.
  const auto calls = "\x00\x06\x39\x47\x6A\x16\x0E\x1E\x0D\x0C\x04\x05\x12\x30\x03\x41"sv;
  const std::vector<NamedStream> streams = {{"Other", Bytes(70)},
                                            {"Storage/NOVELL_MAIN", Bytes(9)},
                                            {"PerfectOffice_MAIN", notebooks()[1]}};
  for (unsigned shape = 0; shape < 13; ++shape) {
    const Bytes document = writeCompound({.version = shape == 12 ? 4U : 3U,
                                          .sectors = static_cast<SectorOrder>(shape % 3),
                                          .siblings = static_cast<SiblingOrder>(shape / 3 % 2),
                                          .miniStreamCutoff = shape < 6 ? 0U : 4096U},
                                         streams);
    seeds.add("compound_notebook", Body().u8(0), document);
    // As it is, and with a mended header and failing blocks.
    for (const unsigned flags : {0U, 1U, 0x37U})
      seeds.add("compound_library", Body().u8(flags).text(calls), document);
  }
}

void addFormats(Seeds& seeds) {
  constexpr std::string_view kTexts[] = {
      "N9,999.00",
      "N'$'9,999.00;N'none';N'('0.0')'",
      "N0.00%",
      "N0.000E+00",
      "N000'-'00'-'0000",
      "N9.9.9,9",
      "N'a'9,999,990'b';N;N9",
      "TDD-Mon-YY",
      "TWEEKDAY Weekday weekday MONTH Month month AMPM",
      "TWDAY Wday wday YYYY MON Mon mon DD HH MM SS YY D H M S",
      "TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM",
      "THH:MM'x''y",
      "1.23E+05",
  };
  constexpr double kValues[] = {0, -1, 0.5, 1234567.891, 45296.75, -36000.25, 1e-9, 1e300};
  constexpr unsigned kFormats[] = {1,  4,  5,  6,  7,   8,    9,    10,   11,   12,
                                   13, 14, 15, 96, 112, 0x13, 0x22, 0x32, 0x42, 0x52};
  unsigned i = 0;
  for (const std::string_view text : kTexts) {
    const double value = kValues[i % std::size(kValues)];
    seeds.add("format_text", Body().f64(value).u16(1000).u8(0).u8(i % 8).u8(10), bytesOf(text));
    seeds.add("render_functions", Body().f64(value).u16(i).u16(64 * i), bytesOf(text));
    ++i;
  }
  for (const unsigned format : kFormats) {
    const double value = kValues[i++ % std::size(kValues)];
    seeds.add("format_text", Body().f64(value).u16(1000).u8(format).u8(0).u8(10), {});
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Seeds seeds(argv[1]);
  addNotebooks(seeds);
  addTools(seeds);
  addDocuments(seeds);
  addFormats(seeds);
  if (seeds.failed()) std::fprintf(stderr, "cannot write to %s\n", argv[1]);
  return seeds.failed() ? 1 : 0;
}
