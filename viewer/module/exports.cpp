// SPDX-License-Identifier: MIT
//
// What JavaScript calls (viewer/js/instance.js). An instance reads one notebook: its bytes, its
// worksheets and what was asked of them go with the instance. Results go out through hostWrite;
// failures through hostFail, after which nothing here is called again.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "tool/document.h"
#include "tool/html_writer.h"
#include "tool/inputs.h"
#include "tool/json_forms.h"
#include "tool/letter_case.h"
#include "tool/output.h"
#include "tool/progress.h"
#include "tool/text_forms.h"
#include "tool/time_limit.h"
#include "viewer/module/cells.h"
#include "viewer/module/host_calls.h"
#include "viewer/module/workbook.h"

#define QPS_EXPORT(name) extern "C" [[clang::export_name(#name)]]

namespace qps {
namespace {

constexpr std::size_t kMostFound = 10'000;

constexpr Command kShow{CommandId::kHtml, "html", "", Need::kAll, true, ".html", false, writeHtml};
constexpr Command kCsv{CommandId::kCsv, "csv", "", Need::kTexts, false, ".csv", true, writeCsv};
constexpr Command kXlsx{CommandId::kXlsx, "xlsx", "", Need::kAll, true, ".xlsx", false, nullptr};

struct Shown {
  Document document;
  std::vector<std::unique_ptr<HtmlSheet>> sheets;
};

// The cells of one worksheet, as far as they have been fetched.
struct Fetch {
  Fetch(const Notebook& notebook, const Sheet& sheet, const Decoder& decoder)
      : range(notebook.items(sheet)), next(range.begin()), writer(decoder) {}

  ItemRange range;
  ItemRange::Iterator next;
  CellWriter writer;
};

class Session {
 public:
  Session(std::span<const std::byte> bytes, const Settings& settings);

  void describe();
  void writeLayout(std::uint32_t index);
  void writeStyles() { writeHtmlStyles(out_, shown().document), out_.flush(); }
  void writeSheet(std::uint32_t index);
  void writeRows(std::uint32_t index, std::uint32_t first, std::uint32_t last);
  void find(std::uint32_t index, std::string_view wanted);
  void writeCell(std::uint32_t index, std::uint32_t row, std::uint32_t column);
  std::uint32_t beginCells(std::uint32_t index);
  void writeCells(std::uint32_t fetch, std::uint32_t count);
  void endCells(std::uint32_t fetch) { fetches_.erase(fetch); }
  void writeSheetCsv(std::uint32_t index);
  void writeNotebookHtml(std::string_view name);
  void writeWorkbook();
  void writeWorkbookWarning() { out_.write(workbookWarning_), out_.flush(); }

 private:
  Notebook open() const;
  Document read(const Command& command, Settings settings);
  Shown& shown();
  void failOn(const ItemRange& range) const;
  void send(const rapidjson::StringBuffer& text);

  std::span<const std::byte> bytes_;
  Settings settings_;
  Decoder decoder_;
  Notebook notebook_;
  std::optional<Error> damage_;
  std::optional<Shown> shown_;
  std::map<std::uint32_t, Fetch> fetches_;
  std::uint32_t nextFetch_ = 1;
  std::string workbookWarning_;
  Output out_{nullptr};
};

[[noreturn]] void fail(const Error& error) {
  hostFail(reasonName(error.reason), error.message.data(), error.message.size());
}

Session::Session(std::span<const std::byte> bytes, const Settings& settings)
    : bytes_(bytes), settings_(settings), decoder_(settings.encoding), notebook_(open()) {
  damage_ = notebook_.damage();
  if (damage_ && !settings_.salvage) fail(*damage_);
}

// The bytes count towards the limit; each of the readings of them may take the rest.
Notebook Session::open() const {
  const std::uint64_t limit = settings_.maxMemory;
  if (limit != 0 && bytes_.size() >= limit) fail(memoryLimitError());
  const std::uint64_t left = limit == 0 ? 0 : limit - bytes_.size();
  auto notebook = Notebook::openBytes(
      bytes_, {.memoryLimit = static_cast<std::size_t>(left), .libraryFolder = {}});
  if (!notebook) fail(notebook.error());
  return *std::move(notebook);
}

Document Session::read(const Command& command, Settings settings) {
  OpenedFile opened{{}, open(), bytes_.size(), settings.maxMemory};
  const TimeLimit time(std::chrono::milliseconds(0));
  Progress progress(false);
  return readDocument("-", opened, command, settings, decoder_, time, progress);
}

// Worksheets are laid out only when somebody looks at one.
Shown& Session::shown() {
  if (!shown_) {
    shown_.emplace(Shown{read(kShow, settings_), {}});
    for (const SheetData& sheet : shown_->document.sheets)
      shown_->sheets.push_back(std::make_unique<HtmlSheet>(out_, shown_->document, sheet));
  }
  return *shown_;
}

void Session::send(const rapidjson::StringBuffer& text) {
  out_.write({text.GetString(), text.GetSize()});
  out_.flush();
}

void Session::describe() {
  rapidjson::StringBuffer text;
  Json json(text);
  json.StartObject();
  json.Key("sheets");
  json.StartArray();
  for (const Sheet& sheet : notebook_.sheets()) {
    const std::string name = decoder_.decode(sheet.name);
    json.String(name.data(), static_cast<rapidjson::SizeType>(name.size()));
  }
  json.EndArray();
  const NotebookFacts& facts = notebook_.facts();
  putText(json, "fileKind",
          facts.kind == FileKind::kCompoundNotebook ? "compound-notebook" : "plain-notebook");
  putNumber(json, "formatVersion", facts.formatVersion);
  if (damage_) putText(json, "damage", validUtf8(damage_->message));
  if (const auto suspicion = notebook_.suspicion()) putText(json, "suspicion", suspicion->message);
  json.EndObject();
  send(text);
}

void Session::writeLayout(std::uint32_t index) {
  const Shown& all = shown();
  const SheetData& sheet = all.document.sheets[index];
  rapidjson::StringBuffer text;
  Json json(text);
  json.StartObject();
  putBool(json, "isLarge", all.sheets[index]->isLarge());
  putNumber(json, "lastRow", sheet.cells.empty() ? 0 : sheet.cells.back().place.row());
  putNumber(json, "cells", static_cast<std::uint32_t>(sheet.cells.size()));
  putNumber(json, "defaultRowHeight", sheet.info.defaultRowHeight);
  json.Key("rowHeights");
  json.StartArray();
  for (const Run& run : sheet.rowHeights) {
    json.Uint(run.first);
    json.Uint(run.size);
  }
  json.EndArray();
  putText(json, "warning", repeatedCellsMessage(sheet));
  json.EndObject();
  send(text);
}

void Session::writeSheet(std::uint32_t index) {
  HtmlSheet& sheet = *shown().sheets[index];
  if (sheet.isLarge())
    sheet.writeFrame();
  else
    sheet.write();
  out_.flush();
}

void Session::writeRows(std::uint32_t index, std::uint32_t first, std::uint32_t last) {
  shown().sheets[index]->writeRows(first, last);
  out_.flush();
}

// Places of cells whose text contains `wanted`, whatever the case of its letters.
void Session::find(std::uint32_t index, std::string_view wanted) {
  const std::string needle = lowerCase(wanted);
  rapidjson::StringBuffer text;
  Json json(text);
  std::string shownText;
  std::size_t found = 0;
  json.StartArray();
  for (const Cell& cell : shown().document.sheets[index].cells) {
    if (cell.text == nullptr || *cell.text == '\0') continue;
    shownText.clear();
    decoder_.append(cell.text, shownText);
    if (lowerCase(shownText).find(needle) == std::string::npos) continue;
    json.Uint(cell.place.row());
    json.Uint(cell.place.column());
    if (++found == kMostFound) break;
  }
  json.EndArray();
  send(text);
}

// The last one of this place, as the sheet shows it; null when there is none.
void Session::writeCell(std::uint32_t index, std::uint32_t row, std::uint32_t column) {
  rapidjson::StringBuffer text;
  ItemRange items = notebook_.items(notebook_.sheets()[index]);
  for (const Item& item : items) {
    const auto cell = item.cell();
    if (!cell || cell->row() != row || cell->column() != column) continue;
    text.Clear();
    Json json(text);
    CellWriter(decoder_).write(item, *cell, json);
  }
  if (text.GetSize() == 0) out_.write("null");
  send(text);
}

std::uint32_t Session::beginCells(std::uint32_t index) {
  fetches_.try_emplace(nextFetch_, notebook_, notebook_.sheets()[index], decoder_);
  return nextFetch_++;
}

void Session::failOn(const ItemRange& range) const {
  const auto error = range.error();
  if (error && !(settings_.salvage && error->reason == Reason::kDamaged)) fail(*error);
}

// The cells among the next `count` items, and at least one; an empty array after the last one.
void Session::writeCells(std::uint32_t number, std::uint32_t count) {
  const auto found = fetches_.find(number);
  if (found == fetches_.end()) return out_.write("[]"), out_.flush();
  Fetch& fetch = found->second;
  rapidjson::StringBuffer text;
  Json json(text);
  json.StartArray();
  bool any = false;
  while (fetch.next != std::default_sentinel && (count > 0 || !any)) {
    const Item& item = *fetch.next;
    if (const auto cell = item.cell()) {
      fetch.writer.write(item, *cell, json);
      any = true;
    }
    ++fetch.next;
    if (count > 0) --count;
  }
  json.EndArray();
  if (!any) failOn(fetch.range);
  send(text);
}

// As `qps csv --sheet` writes it.
void Session::writeSheetCsv(std::uint32_t index) {
  Settings settings = settings_;
  settings.sheets = {std::to_string(index + 1)};
  const Document document = read(kCsv, settings);
  const auto same = [index](const SheetData& sheet) { return sheet.number == index + 1; };
  const auto found = std::find_if(document.sheets.begin(), document.sheets.end(), same);
  if (found != document.sheets.end()) writeCsv(out_, document, {&*found, 1}, settings);
  out_.flush();
}

void Session::writeNotebookHtml(std::string_view name) {
  Document& document = shown().document;
  document.name = name;
  writeHtml(out_, document, document.sheets, settings_);
  out_.flush();
}

void Session::writeWorkbook() {
  workbookWarning_ = writeXlsx("", read(kXlsx, settings_), settings_.maxMemory);
  const std::vector<char> bytes = takeWorkbook();
  out_.write({bytes.data(), bytes.size()});
  out_.flush();
}

std::optional<Session> session;

}  // namespace

// Room for `size` bytes, in which JavaScript puts what it hands over. Null when there is none.
QPS_EXPORT(allocate) void* allocate(std::size_t size) {
  return std::malloc(std::max<std::size_t>(size, 1));
}

QPS_EXPORT(release) void release(void* block) {
  std::free(block);
}

// Opens the notebook in these bytes, which stay where they are, and describes it in JSON. Texts are
// zero-terminated UTF-8 in this and the other calls; sheets count from 0. The C library has an
// `open`.
QPS_EXPORT(open)
void openNotebook(const std::byte* bytes, std::size_t size, const char* encoding,
                  double memoryLimit, std::uint32_t salvage) {
  Settings settings;
  settings.encoding = encoding;
  settings.maxMemory = static_cast<std::uint64_t>(memoryLimit);
  settings.salvage = salvage != 0;
  session.emplace(std::span(bytes, size), settings);
  session->describe();
}

QPS_EXPORT(layout) void layout(std::uint32_t sheet) {
  session->writeLayout(sheet);
}

QPS_EXPORT(styles) void styles() {
  session->writeStyles();
}

QPS_EXPORT(sheet) void sheet(std::uint32_t sheet) {
  session->writeSheet(sheet);
}

QPS_EXPORT(rows) void rows(std::uint32_t sheet, std::uint32_t first, std::uint32_t last) {
  session->writeRows(sheet, first, last);
}

QPS_EXPORT(find) void find(std::uint32_t sheet, const char* wanted) {
  session->find(sheet, wanted);
}

QPS_EXPORT(cell) void cell(std::uint32_t sheet, std::uint32_t row, std::uint32_t column) {
  session->writeCell(sheet, row, column);
}

// Several worksheets may be read at a time, each by a number of its own.
QPS_EXPORT(beginCells) std::uint32_t beginCells(std::uint32_t sheet) {
  return session->beginCells(sheet);
}

QPS_EXPORT(cells) void cells(std::uint32_t fetch, std::uint32_t count) {
  session->writeCells(fetch, count);
}

QPS_EXPORT(endCells) void endCells(std::uint32_t fetch) {
  session->endCells(fetch);
}

QPS_EXPORT(csv) void csv(std::uint32_t sheet) {
  session->writeSheetCsv(sheet);
}

QPS_EXPORT(html) void html(const char* name) {
  session->writeNotebookHtml(name);
}

QPS_EXPORT(xlsx) void xlsx() {
  session->writeWorkbook();
}

// What there is to warn of in the workbook that was written last, or nothing.
QPS_EXPORT(xlsxWarning) void xlsxWarning() {
  session->writeWorkbookWarning();
}

}  // namespace qps
