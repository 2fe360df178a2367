// SPDX-License-Identifier: MIT
//
// Which bytes of an SSItem belong to which kind stands here once, in `fieldsOf`: printing and the
// check for stray writes both use it.
#include "tests/support/sheet_driver.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <span>

namespace qps::test {

namespace {

struct Field {
  const char* name;
  std::size_t offset;
  std::size_t size;  // 1, 4, or 32 for a font name
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

std::span<const Field> fieldsOf(std::uint32_t kind) {
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
std::size_t textOffsetOf(std::uint32_t kind) {
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

bool isUntouched(const std::uint8_t* bytes, std::size_t count) {
  return std::all_of(bytes, bytes + count, [](std::uint8_t byte) { return byte == kUntouched; });
}

using Mask = std::array<std::uint8_t, SSItemBytes>;

// The bytes that an item of the kind may write.
const Mask& maskOf(std::uint32_t kind) {
  static const auto masks = [] {
    std::array<Mask, SSItemKindCell + 1> made{};
    for (std::uint32_t each = SSItemKindSheetInfo; each <= SSItemKindCell; ++each) {
      const auto own = [&](std::size_t offset, std::size_t size) {
        std::fill_n(made[each].begin() + static_cast<std::ptrdiff_t>(offset), size, 0xFF);
      };
      own(0, sizeof(SSItem::kind));
      for (const Field& field : fieldsOf(each))
        own(field.offset, field.size);
      if (const std::size_t offset = textOffsetOf(each); offset != 0) own(offset, sizeof(char*));
    }
    return made;
  }();
  return masks[kind];
}

void requireOwnBytes(const SSItem& item) {
  const Mask& mask = maskOf(item.kind);
  unsigned stray = 0;
  for (std::size_t i = 0; i < mask.size(); ++i)
    stray |= static_cast<unsigned>(item.bytes[i] ^ kUntouched) & ~unsigned{mask[i]};
  require((stray & 0xFF) == 0, "an item writes the bytes of its kind only");
}

void requireInRange(const SSItem& item) {
  constexpr std::uint32_t kMostColumns = 256;
  constexpr std::uint32_t kMostRows = 65536;
  const auto within = [](std::uint32_t value, std::uint32_t most) {
    return value >= 1 && value <= most;
  };
  if (item.kind == SSItemKindColumnWidths) {
    require(within(item.columnWidths.first, item.columnWidths.last) &&
                within(item.columnWidths.last, kMostColumns),
            "a run of columns");
  } else if (item.kind == SSItemKindRowHeight) {
    require(item.rowHeight.first == item.rowHeight.last && within(item.rowHeight.first, kMostRows),
            "one row a row height");
  } else if (item.kind == SSItemKindCell) {
    require(within(item.cell.column, kMostColumns) && within(item.cell.row, kMostRows),
            "a cell in the worksheet");
  }
}

// Copies the item's text out and gives the block back to where it came from.
Item received(RecordingHost& host, const SSItem& delivered) {
  Item item{delivered, std::nullopt};
  const std::size_t offset = textOffsetOf(item.kind());
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
  const std::uint8_t* at = item.bytes + field.offset;
  if (isUntouched(at, field.size)) return "-";
  if (field.size == SSItemFontNameBytes) {
    const char* name = reinterpret_cast<const char*>(at);
    return std::string(name, strnlen(name, SSItemFontNameBytes));
  }
  std::uint32_t value = *at;
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

std::vector<std::uint32_t> SheetRun::kinds() const {
  std::vector<std::uint32_t> result;
  std::transform(items.begin(), items.end(), std::back_inserter(result),
                 [](const Item& item) { return item.kind(); });
  return result;
}

std::vector<Item> SheetRun::only(std::uint32_t kind) const {
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

// Asking for a value takes nothing of the host.
void ItemTaker::takeValue(bool isCell) {
  value_ = {};
  value_.kind = kUntouched;
  const std::size_t calls = host_->hostCalls();
  require((QPSGetCellValue(sheet_, &value_) == 0) == isCell, "a value for each cell, and no other");
  require(host_->hostCalls() == calls, "a value asks for nothing");
  if (!isCell) {
    require(value_.kind == kUntouched, "where there is no value nothing is written");
    return;
  }
  require(value_.kind <= QPSCellError && value_.isFormula <= 1, "a known kind of value");
  require((value_.text != nullptr) == (value_.kind == QPSCellText), "a text for texts");
  require(value_.formatCode <= 255 && value_.decimals <= 15, "a format of one byte");
  require(value_.showsDateOrTime <= (QPSShowsDate | QPSShowsTime), "a date, a time or both");
}

std::optional<Item> ItemTaker::take() {
  if (lastKind_ == 0) takeValue(false);
  SSItem item;
  std::memset(item.bytes, kUntouched, sizeof(item.bytes));
  if (process_(sheet_, &item) != 0) {
    const std::size_t calls = host_->hostCalls();
    require(process_(sheet_, &item) == 1 && host_->hostCalls() == calls, "the end stays the end");
    takeValue(false);
    return std::nullopt;
  }
  require(item.kind >= SSItemKindSheetInfo && item.kind <= SSItemKindCell, "a known kind");
  require(item.kind >= lastKind_, "items in the order of their kinds");
  require((item.kind == SSItemKindSheetInfo) == (lastKind_ == 0), "sheet information first, once");
  lastKind_ = item.kind;
  requireOwnBytes(item);
  requireInRange(item);
  takeValue(item.kind == SSItemKindCell);
  return received(*host_, item);
}

SheetRun readSheet(RecordingHost& host, std::uint32_t offset, const SSReaderInterface& reader) {
  SheetRun run;
  QPSReader* handle =
      reader.allocateReader(&host, nullptr, host.stream(), host.services(), nullptr, nullptr);
  QPSSheet* sheet =
      reader.initSheet(handle, host.itemContext(), offset, RecordingHost::itemAlloc, nullptr);
  if (sheet != nullptr) {
    run.opened = true;
    ItemTaker taker(host, sheet, reader);
    while (auto item = taker.take()) {
      if (item->kind() == SSItemKindCell) run.values.push_back(describe(taker.value()));
      run.items.push_back(std::move(*item));
      if (!host.faultMet()) ++run.soundItems;
    }
    run.closeResult = reader.closeSheet(sheet);
  }
  reader.closeReader(handle);
  return run;
}

std::vector<SSWorkSheetEntry> listSheets(RecordingHost& host, QPSReader* handle,
                                         const SSReaderInterface& reader) {
  constexpr std::uint32_t kPoison = 0xA5A5A5A5;  // the count is an output
  SSWorkSheetList list{kPoison, nullptr};
  const bool listed = reader.getWorkSheetInfo(handle, &list, 0) == 1;
  require(!host.file().isOpen(), "listing closes the stream");
  require(listed == (list.entries != nullptr), "a table or none");
  require(listed || list.count == kPoison || list.count == 0, "a failed listing leaves no count");
  if (!listed) return {};
  require(list.count > 0, "a table has entries");
  require(list.entries == handle->sheetTable && list.count == handle->sheetCount,
          "the reader keeps the table");
  std::vector<SSWorkSheetEntry> entries(list.entries, list.entries + list.count);
  for (const SSWorkSheetEntry& entry : entries)
    require(std::memchr(entry.name, '\0', sizeof(entry.name)) != nullptr, "a name ends");
  return entries;
}

std::optional<std::vector<SSWorkSheetEntry>> listSheets(RecordingHost& host,
                                                        const SSReaderInterface& reader) {
  QPSReader* handle =
      reader.allocateReader(&host, nullptr, host.stream(), host.services(), nullptr, nullptr);
  auto entries = listSheets(host, handle, reader);
  reader.closeReader(handle);
  if (entries.empty()) return std::nullopt;
  return entries;
}

}  // namespace qps::test
