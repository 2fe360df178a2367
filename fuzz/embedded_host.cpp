// SPDX-License-Identifier: MIT
//
// What only the class Notebook can show: two ranges read in turn, its memory limit, the reason why
// a notebook is damaged. The first two bytes of the input are the limit in KiB, 0 for none.
// Compound documents are left out: loading a library each time is slow, and the other targets have
// them.
#include <numeric>

#include <qpsreader/host/notebook.hpp>
#include "fuzz/input_bytes.h"
#include "tests/support/recording_host.h"

namespace {

using qps::test::require;

constexpr std::size_t kMostSheets = 2;
constexpr std::size_t kMostItems = 500;
volatile unsigned sink;

void look(std::string_view text) {
  sink = std::accumulate(text.begin(), text.end(), 0U,
                         [](unsigned sum, char c) { return sum + static_cast<unsigned>(c); });
}

// Decodes all that an item has.
void look(const qps::Item& item) {
  const int views = item.cell().has_value() + item.sheetInfo().has_value() +
                    item.columnWidths().has_value() + item.rowHeight().has_value();
  require(views <= 1, "an item is of one kind");
  if (const auto text = item.notebookText()) look(*text);
  if (const auto cell = item.cell()) {
    look(cell->text());
    if (const auto style = cell->style(); style.font) look(style.font->name);
    const qps::CellValue value = cell->value();
    look(value.text().value_or(""));
    look(value.format().styleName);
    if (const auto when = qps::dateTimeOf(value.number().value_or(0)))
      require(when->date.ok() && when->timeOfDay <= std::chrono::hours(24), "a day, and its time");
  }
}

bool ranOutOfMemory(const qps::ItemRange& items) {
  const auto error = items.error();
  return error && error->reason == qps::Reason::kMemoryLimit;
}

void readSheet(const qps::Notebook& notebook, const qps::Sheet& sheet) {
  look(sheet.name);
  qps::TextArena arena = notebook.textArena();
  qps::ItemRange kept = notebook.items(sheet, arena);
  qps::ItemRange passing = notebook.items(sheet);
  auto one = kept.begin();
  auto other = passing.begin();
  std::size_t items = 0;
  for (; items < kMostItems && one != kept.end() && other != passing.end(); ++items) {
    // A row that cannot be kept is lost, and only that row; the range then tells why.
    require(one->kind() == other->kind() || ranOutOfMemory(kept) || ranOutOfMemory(passing),
            "two ranges deliver the same");
    look(*one);
    look(*other);
    ++one;
    ++other;
  }
  if (const auto error = kept.error()) require(!error->message.empty(), "an error has a message");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qps::fuzz::InputBytes input(data, size);
  const std::size_t limit = std::size_t{input.u16()} * 1024;
  const auto file = std::as_bytes(input.rest());
  if (!file.empty() && file[0] == std::byte{0xD0}) return 0;
  const auto notebook = qps::Notebook::open(file, {.memoryLimit = limit});
  if (!notebook) {
    require(!notebook.error().message.empty(), "an error has a message");
    return 0;
  }
  require(!notebook->sheets().empty(), "an open notebook has worksheets");
  const std::size_t before = notebook->memoryInUse();
  std::size_t read = 0;
  for (const qps::Sheet& sheet : notebook->sheets()) {
    if (read++ == kMostSheets) break;
    readSheet(*notebook, sheet);
  }
  require(notebook->memoryInUse() == before, "ranges and arenas give everything back");
  require(limit == 0 || before <= limit, "the limit holds");
  const auto damage = notebook->damage();
  require(!damage || !damage->message.empty(), "damage has a message");
  return 0;
}
