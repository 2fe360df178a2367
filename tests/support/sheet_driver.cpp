// SPDX-License-Identifier: MIT
//
// Which bytes of an SSItem belong to which kind stands here once, in `fieldsOf`: printing and the
// check for stray writes both use it.
#include "tests/support/sheet_driver.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <span>

namespace qps::test {

namespace {

struct Field {
  const char* name;
  size_t offset;
  size_t size;  // 1, 4, or 32 for a font name
  bool isHex = false;
};

constexpr Field kSheetInfoFields[] = {
    {"marker", 4, 4},   {"rows", 8, 4},
    {"columns", 12, 4}, {"flag257", 16, 4},
    {"flag258", 20, 4}, {"width", 24, 4},
    {"height", 28, 4},  {"fixed", 32, 4},
    {"", 36, 4},        {"", 40, 4},
    {"", 44, 4},        {"", 48, 4},
    {"present", 52, 4}, {"font", 56, 32},
    {"size", 88, 4},    {"attr", 92, 1},
    {"", 93, 1},        {"", 94, 1},
    {"", 95, 1},        {"extra", 96, 1},
    {"", 97, 1},        {"colour", 100, 4, true},
};

constexpr Field kRunFields[] = {{"first", 4, 4}, {"last", 8, 4}, {"value", 12, 4}};

constexpr Field kCellFields[] = {
    {"column", 4, 4},      {"row", 8, 4},        {"align", 20, 1, true},
    {"fill", 24, 4, true}, {"ink", 28, 4, true}, {"bordered", 32, 4},
    {"borders", 36, 1},    {"", 40, 4, true},    {"", 44, 1},
    {"", 48, 4, true},     {"", 52, 1},          {"", 56, 4, true},
    {"", 60, 1},           {"", 64, 4, true},    {"present", 68, 4},
    {"font", 72, 32},      {"size", 104, 4},     {"attr", 108, 1},
    {"", 109, 1},          {"", 110, 1},         {"", 111, 1},
    {"extra", 112, 1},     {"", 113, 1},         {"spare", 116, 4},
    {"", 120, 1},          {"", 128, 4},
};

std::span<const Field> fieldsOf(uint32_t kind) {
  switch (kind) {
    case SSItemKindSheetInfo:
      return kSheetInfoFields;
    case SSItemKindColumnWidths:
    case SSItemKindRowHeight:
      return kRunFields;
    case SSItemKindCell:
      return kCellFields;
    default:
      return {};
  }
}

// Where the kind's text pointer stands; 0 for a kind without one.
size_t textOffsetOf(uint32_t kind) {
  switch (kind) {
    case SSItemKindCell:
      return offsetof(SSItemCell, text);
    case SSItemKindRecord37Text:
    case SSItemKindRecord38Text:
      return offsetof(SSItemNotebookText, text);
    default:
      return 0;
  }
}

bool isUntouched(const uint8_t* bytes, size_t count) {
  return std::all_of(bytes, bytes + count, [](uint8_t byte) { return byte == kUntouched; });
}

void checkStrayWrites(RecordingHost& host, const SSItem& item) {
  SSItem rest = item;
  std::memset(rest.bytes, kUntouched, sizeof(rest.kind));
  for (const Field& field : fieldsOf(item.kind))
    std::memset(rest.bytes + field.offset, kUntouched, field.size);
  if (const size_t offset = textOffsetOf(item.kind); offset != 0)
    std::memset(rest.bytes + offset, kUntouched, sizeof(char*));
  if (!isUntouched(rest.bytes, sizeof(rest.bytes)))
    host.violate("an item of kind " + std::to_string(item.kind) + " wrote bytes that are not its");
}

// Copies the item's text out and gives the block back to where it came from.
Item take(RecordingHost& host, const SSItem& delivered) {
  Item item{delivered, std::nullopt};
  const size_t offset = textOffsetOf(item.kind());
  if (offset == 0) return item;
  char* text = nullptr;
  std::memcpy(&text, item.raw.bytes + offset, sizeof(text));
  std::memset(item.raw.bytes + offset, 0, sizeof(text));
  if (text == nullptr) return item;
  item.text = text;
  if (item.kind() == SSItemKindCell) {
    host.freeItemText(text);
  } else {
    host.freePoolBlock(text);
  }
  return item;
}

std::string print(const Field& field, const SSItem& item) {
  const uint8_t* at = item.bytes + field.offset;
  if (isUntouched(at, field.size)) return "-";
  if (field.size == SSItemFontNameBytes) {
    const char* name = reinterpret_cast<const char*>(at);
    return std::string(name, strnlen(name, SSItemFontNameBytes));
  }
  uint32_t value = *at;
  if (field.size == sizeof(value)) std::memcpy(&value, at, sizeof(value));
  char digits[16];
  std::snprintf(digits, sizeof(digits), field.isHex ? "%X" : "%u", value);
  return digits;
}

}  // namespace

bool Item::operator==(const Item& other) const {
  return std::memcmp(raw.bytes, other.raw.bytes, sizeof(raw.bytes)) == 0 && text == other.text;
}

std::string describe(const Item& item) {
  std::string line = std::to_string(item.kind());
  for (const Field& field : fieldsOf(item.kind())) {
    line += field.name[0] == '\0' ? "," : std::string(" ") + field.name + "=";
    line += print(field, item.raw);
  }
  if (textOffsetOf(item.kind()) != 0)
    line += item.text.has_value() ? " text='" + *item.text + "'" : " no text";
  return line;
}

std::ostream& operator<<(std::ostream& out, const Item& item) {
  return out << describe(item);
}

std::vector<uint32_t> SheetRun::kinds() const {
  std::vector<uint32_t> result;
  std::transform(items.begin(), items.end(), std::back_inserter(result),
                 [](const Item& item) { return item.kind(); });
  return result;
}

std::vector<Item> SheetRun::only(uint32_t kind) const {
  std::vector<Item> result;
  std::copy_if(items.begin(), items.end(), std::back_inserter(result),
               [kind](const Item& item) { return item.kind() == kind; });
  return result;
}

CellValue describe(const QPSCellValue& value) {
  std::string contents = value.isFormula != 0 ? "formula " : "";
  char digits[32];
  std::snprintf(digits, sizeof(digits), "%.17g", value.number);
  switch (value.kind) {
    case QPSCellNumber:
      contents += std::string("number ") + digits;
      break;
    case QPSCellText:
      contents += "text '" + std::string(value.text, value.textBytes) + "'";
      break;
    default:
      contents += value.kind == QPSCellError ? "error" : "blank";
      if (value.text != nullptr || value.textBytes != 0) contents += " with a text";
  }
  std::string format = std::to_string(value.formatCode) + "." + std::to_string(value.decimals);
  if (value.formatText != nullptr) format += std::string(" '") + value.formatText + "'";
  if ((value.showsDateOrTime & QPSShowsDate) != 0) format += " date";
  if ((value.showsDateOrTime & QPSShowsTime) != 0) format += " time";
  if (value.styleName != nullptr) format += std::string(" style=") + value.styleName;
  return {contents, format};
}

// Asks for the value after an item of this kind, or at a time without one (0).
static void takeValue(RecordingHost& host, QPSSheet* sheet, uint32_t kind, SheetRun& run) {
  QPSCellValue value{};
  value.kind = kUntouched;
  const size_t callsSoFar = host.hostCalls();
  const bool isThere = QPSGetCellValue(sheet, &value) == 0;
  if (isThere != (kind == SSItemKindCell) || (!isThere && value.kind != kUntouched))
    host.violate("QPSGetCellValue after kind " + std::to_string(kind));
  if (host.hostCalls() != callsSoFar) host.violate("QPSGetCellValue called the host");
  if (isThere) run.values.push_back(describe(value));
}

SheetRun readSheet(RecordingHost& host, uint32_t offset, const SSReaderInterface& reader) {
  SheetRun run;
  QPSReader* handle =
      reader.allocateReader(&host, nullptr, host.stream(), host.services(), nullptr, nullptr);
  QPSSheet* sheet =
      reader.initSheet(handle, host.itemContext(), offset, RecordingHost::itemAlloc, nullptr);
  if (sheet != nullptr) {
    run.opened = true;
    takeValue(host, sheet, 0, run);
    SSItem item;
    for (;;) {
      std::memset(item.bytes, kUntouched, sizeof(item.bytes));
      if (reader.processSheet(sheet, &item) != 0) break;
      checkStrayWrites(host, item);
      takeValue(host, sheet, item.kind, run);
      run.items.push_back(take(host, item));
      if (!host.faultMet()) ++run.soundItems;
    }
    const size_t callsSoFar = host.hostCalls();
    if (reader.processSheet(sheet, &item) != 1 || host.hostCalls() != callsSoFar)
      host.violate("QPSProcessSheet went on after the end");
    takeValue(host, sheet, 0, run);
    run.closeResult = reader.closeSheet(sheet);
  }
  reader.closeReader(handle);
  return run;
}

std::optional<std::vector<SSWorkSheetEntry>> listSheets(RecordingHost& host,
                                                        const SSReaderInterface& reader) {
  std::optional<std::vector<SSWorkSheetEntry>> entries;
  QPSReader* handle =
      reader.allocateReader(&host, nullptr, host.stream(), host.services(), nullptr, nullptr);
  constexpr uint32_t kPoison = 0xA5A5A5A5;  // the count is an output
  SSWorkSheetList list{kPoison, nullptr};
  if (reader.getWorkSheetInfo(handle, &list, 0) == 1) {
    if (list.entries != handle->sheetTable || list.count != handle->sheetCount)
      host.violate("the reader's handle does not hold the listing");
    entries.emplace(list.entries, list.entries + list.count);
  } else if (list.entries != nullptr || (list.count != kPoison && list.count != 0)) {
    host.violate("a failed listing left a table or a count");
  }
  reader.closeReader(handle);
  return entries;
}

}  // namespace qps::test
