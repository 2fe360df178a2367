// SPDX-License-Identifier: MIT
//
// Writes the seed inputs of every fuzz target into one folder each: make_seeds FOLDER. What stands
// before the file or the text in an input is described in the targets.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/compound_writer.h"
#include "tests/support/notebook_builder.h"

namespace {

using namespace qps::test;

// The seeds of one target, numbered.
class Folder {
 public:
  Folder(const std::filesystem::path& root, const char* target) : path_(root / target) {
    std::filesystem::create_directories(path_);
  }

  void add(const Body& prefix, const Bytes& rest) {
    std::ofstream file(path_ / std::to_string(++count_), std::ios::binary);
    for (const Bytes& bytes : {prefix.bytes(), rest}) {
      file.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    }
    failed_ = failed_ || !file.flush();
  }
  bool failed() const { return failed_; }

 private:
  std::filesystem::path path_;
  int count_ = 0;
  bool failed_ = false;
};

NotebookBuilder bookStart() {
  NotebookBuilder book;
  book.header().style();
  return book;
}

// Small notebooks, each with a few records that belong together, and one with everything.
std::vector<Bytes> notebooks() {
  std::vector<Bytes> books;
  const auto add = [&](NotebookBuilder book) { books.push_back(book.bytes()); };
  add(everyRecordNotebook());
  add(NotebookBuilder().header().sheetStart().table(1, 1).label({}, "A").sheetEnd().end());
  add(bookStart().sheetStart().sheetName("Name").table(2, 2).integer({}, 7).number({}, 2.5).end());
  add(bookStart().sheetStart(255).sheetName(std::string(80, 'n')).table(2, 2).blank({}).sheetEnd());
  add(NotebookBuilder().header().sheetStart().record(rec::kTable).sheetStart(1).table(1, 1).end());
  add(NotebookBuilder().header().settings(true).notebookText(rec::kText37, "37").end());
  add(NotebookBuilder()
          .header()
          .font(12, 0x27, "Font")
          .namedStyle(3, 1, "Date")
          .userFormat(1, "TDD-Mon-YY")
          .style({.format = 113, .blend = 4, .lines = {1, 2, 3, 1}, .namedStyle = 3})
          .sheetStart()
          .table(1, 1)
          .number({}, 36000.25)
          .columnStyle(0, 1)
          .number({}, -1));
  add(bookStart()
          .sheetStart()
          .table(1, 9)
          .rowHeight(3, 300)
          .hiddenRows(Body().u8(0xFF).u8(0x0A))
          .rowHeights(2, 12, 500)
          .hiddenRows(Body().u8(0x0F))
          .hiddenColumns(Body().u8(3))
          .columnWidth(3, 0x8100)
          .formulaWithString({})
          .string({}, "result")
          .formulaSpecial({}, 3, 5)
          .sheetEnd());
  return books;
}

// Documents of every shape that the writer knows, around the same notebook.
std::vector<Bytes> documents(const Bytes& book) {
  const std::vector<NamedStream> streams = {
      {"Other", Bytes(70)}, {"Storage/NOVELL_MAIN", Bytes(9)}, {"PerfectOffice_MAIN", book}};
  std::vector<Bytes> all;
  for (const SectorOrder sectors :
       {SectorOrder::kForward, SectorOrder::kBackward, SectorOrder::kScattered}) {
    for (const uint32_t cutoff : {0U, 4096U}) {
      for (const SiblingOrder siblings : {SiblingOrder::kTree, SiblingOrder::kList}) {
        all.push_back(writeCompound(
            {.sectors = sectors, .siblings = siblings, .miniStreamCutoff = cutoff}, streams));
      }
    }
  }
  all.push_back(writeCompound({.version = 4}, streams));
  return all;
}

void addDocuments(const std::filesystem::path& root, bool& failed) {
  Folder notebook(root, "compound_notebook"), library(root, "compound_library");
  const std::vector<Bytes> books = notebooks();
  unsigned shape = 1;
  for (const Bytes& book : books)
    notebook.add(Body().u8(shape += 14), book);
  for (const Bytes& document : documents(books[1])) {
    notebook.add(Body().u8(0), document);
    // Opens the notebook's stream, reads, seeks, compares readings, closes; as it is, and with a
    // mended header and failing blocks.
    const auto operations = [](Body& body) -> Body& {
      return body.u8(0)
          .u8(0x06)
          .u8(0x39)
          .u8(0x47)
          .u8(0x6A)
          .u8(0x16)
          .u8(14)
          .u8(0x1E)
          .u8(0x0D)
          .u8(0x0C)
          .u8(0x04)
          .u8(0x05)
          .u8(0x12)
          .u8(0x30)
          .u8(0x03)
          .u8(0x41);
    };
    for (const unsigned flags : {0U, 1U, 0x37U}) {
      Body prefix = Body().u8(flags);
      library.add(operations(prefix), document);
    }
  }
  failed = failed || notebook.failed() || library.failed();
}

constexpr std::string_view kFormatTexts[] = {
    "N9,999.00",
    "N'$'9,999.00;N'none';N'('0.0')'",
    "N0.00%",
    "N0.000E+00",
    "N000'-'00'-'0000",
    "N9.9.9,9",
    "N'a'9,999,990'b';N;N9",
    "N9;N0;N'-'9",
    "TDD-Mon-YY",
    "TWEEKDAY Weekday weekday MONTH Month month AMPM",
    "TWDAY Wday wday YYYY MON Mon mon DD HH MM SS YY D H M S",
    "TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM",
    "THH:MM'x''y",
    "N'Positive';N'Zero';N'Negative'",
    "TMonth' 'D', 'YYYY'",
    "1.23E+05",
};
constexpr double kValues[] = {0, -1, 0.5, 1234567.891, 45296.75, -36000.25, 1e-9, 1e300};

void addFormats(const std::filesystem::path& root, bool& failed) {
  Folder cells(root, "format_text"), functions(root, "render_functions");
  unsigned i = 0;
  for (const std::string_view text : kFormatTexts) {
    const double value = kValues[i % std::size(kValues)];
    cells.add(Body().f64(value).u16(1000).u8(0).u8(i % 8).u8(10), bytesOf(text));
    functions.add(Body().f64(value).u16(i).u16(64 * i), bytesOf(text));
    ++i;
  }
  for (const unsigned format : {1U,  4U,  5U,  6U,  7U,   8U,    9U,    10U,   11U,   12U,
                                13U, 14U, 15U, 96U, 112U, 0x13U, 0x22U, 0x32U, 0x42U, 0x52U}) {
    cells.add(Body().f64(kValues[i++ % std::size(kValues)]).u16(1000).u8(format).u8(0).u8(10), {});
  }
  failed = failed || cells.failed() || functions.failed();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::filesystem::path root = argv[1];
  bool failed = false;
  addFormats(root, failed);
  addDocuments(root, failed);
  Folder plain(root, "plain_notebook"), calls(root, "host_calls"), embedded(root, "embedded_host");
  for (const Bytes& book : notebooks()) {
    plain.add({}, book);
    embedded.add(Body().u16(0), book);
    embedded.add(Body().u16(50), book);
    // A reader, a listing, its first sheet and all items of it, the second sheet and two items.
    const auto operations = [](Body& body) -> Body& {
      return body.u8(0).u8(1).u8(2).u8(5).u8(6).u8(0x0A).u8(4).u8(4).fill(8, 7);
    };
    Body sound = Body().fill(9, 7);
    calls.add(operations(sound), book);
    // The tenth read fails, and every pool block from the sixth on.
    Body failing = Body().u8(3).u8(0).u8(9).u8(0).u8(0).u8(1).u8(5).u8(0).u8(1);
    calls.add(operations(failing), book);
  }
  failed = failed || plain.failed() || calls.failed() || embedded.failed();
  if (failed) std::fprintf(stderr, "cannot write to %s\n", argv[1]);
  return failed ? 1 : 0;
}
