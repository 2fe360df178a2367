// SPDX-License-Identifier: MIT
#include "reader/scan/definition_records.h"

#include <algorithm>
#include <cstring>

#include "reader/frame/pool.h"

namespace qps {

namespace {

// A user format's code is its number in the record plus this; the codes below are built in.
constexpr std::uint16_t kFirstUserFormatCode = 112;

// The style reference of record 208 stands in bits 3 to 15, counted from 0.
constexpr unsigned kStyleReferenceShift = 3;

// A node for what the current record says, once its body is read. Null when it cannot be read or
// the pool has no room.
template <typename Node>
Node* readNode(QPSSheet& sheet) {
  return sheet.records.readBody() ? poolNew<Node>(sheet.services) : nullptr;
}

Step readText(QPSSheet& sheet, char*& text) {
  if (!sheet.records.readBody()) return Step::kFail;
  if (sheet.settingsActive == 0) return Step::kGoOn;
  poolFree(sheet.services, text);
  text = poolCopyText(sheet.services, sheet.records.body().textAt(0));
  return Step::kGoOn;
}

// The flag is set by a zero byte.
Step readFlag(QPSSheet& sheet, std::uint32_t& flag) {
  if (!sheet.records.readBody()) return Step::kFail;
  if (sheet.settingsActive != 0) flag = sheet.records.body().u8At(0) == 0 ? 1 : 0;
  return Step::kGoOn;
}

}  // namespace

// Record 0: 0-1 the version of the format. It counts even when its body is cut short.
Step readFileHeader(QPSSheet& sheet) {
  if (sheet.fileHeaderSeen) return Step::kFail;
  sheet.fileHeaderSeen = true;
  if (sheet.records.readBody()) sheet.formatVersion = sheet.records.body().u16At(0);
  return Step::kGoOn;
}

// Record 6: 4 the last column from 0, 6-7 the last row from 0. At most 256 columns; the count of
// rows is a 16-bit value.
Step readDimensions(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  const BodyView recordBody = sheet.records.body();
  sheet.columnCount = static_cast<std::uint16_t>(recordBody.u8At(4) + 1);
  sheet.rowCount = static_cast<std::uint16_t>(recordBody.u16At(6) + 1);
  return Step::kGoOn;
}

// Records 37 and 38: a text from byte 0.
Step readText37(QPSSheet& sheet) {
  return readText(sheet, sheet.record37Text);
}
Step readText38(QPSSheet& sheet) {
  return readText(sheet, sheet.record38Text);
}

Step readRefusal(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  return sheet.records.body().u16At(0) == 0 ? Step::kGoOn : Step::kFail;
}

// Record 207: 0-1 the size in points, 2 the attributes (bit 0 bold, 1 italic, 2 underline, 5
// strike-out), 4 the name.
Step readFont(QPSSheet& sheet) {
  auto* font = readNode<QPSFont>(sheet);
  if (font == nullptr) return Step::kFail;

  const BodyView recordBody = sheet.records.body();
  font->number =
      sheet.fontList == nullptr ? 1 : static_cast<std::uint8_t>(sheet.fontList->number + 1);
  QPSFont::Shown& shown = font->shown;
  shown.size = recordBody.u8At(0);
  const std::uint8_t attributes = recordBody.u8At(2);
  shown.attrBit0 = attributes & 1;
  shown.attrBit1 = attributes >> 1 & 1;
  shown.attrBit2 = attributes >> 2 & 1;
  shown.attrBit5 = attributes >> 5 & 1;
  shown.extra0 = 1;
  const std::string_view name = recordBody.textAt(4).substr(0, QPSFont::kNameBytes - 1);
  if (!name.empty()) std::memcpy(shown.name, name.data(), name.size());

  pushFront(sheet.fontList, *font);
  sheet.fontByNumber[font->number] = font;
  return Step::kGoOn;
}

// Record 208: 0-1 the id, 2-3 the style in bits 3 to 15, 4 the name.
Step readNamedStyle(QPSSheet& sheet) {
  auto* style = readNode<QPSNamedStyle>(sheet);
  if (style == nullptr) return Step::kFail;

  const BodyView recordBody = sheet.records.body();
  style->id = recordBody.u16At(0);
  style->styleNumber =
      static_cast<std::uint16_t>((recordBody.u16At(2) >> kStyleReferenceShift) + 1);
  style->name = poolCopyText(sheet.services, recordBody.textAt(4));

  pushFront(sheet.namedStyleList, *style);
  if (style->id < std::size(sheet.namedStyleById)) sheet.namedStyleById[style->id] = style;
  return Step::kGoOn;
}

// Record 230: 0-1 the number, 2 the text of the format.
Step readUserFormat(QPSSheet& sheet) {
  auto* format = readNode<QPSUserFormat>(sheet);
  if (format == nullptr) return Step::kFail;

  const BodyView recordBody = sheet.records.body();
  // What the cells of a notebook without styles then show: the number, taken as a format code.
  sheet.unstyled.formatCode = recordBody.u8At(0);
  format->code = static_cast<std::uint16_t>(recordBody.u16At(0) + kFirstUserFormatCode);
  const std::string_view text = recordBody.textAt(2);
  format->text = poolCopyText(sheet.services, text);
  format->textBytes = format->text == nullptr ? 0 : text.size();

  pushFront(sheet.formatList, *format);
  if (format->code < std::size(sheet.formatByCode)) sheet.formatByCode[format->code] = format;
  return Step::kGoOn;
}

Step readUnusedBody(QPSSheet& sheet) {
  return sheet.records.readBody() ? Step::kGoOn : Step::kFail;
}

Step readFlag257(QPSSheet& sheet) {
  return readFlag(sheet, sheet.record257Flag);
}
Step readFlag258(QPSSheet& sheet) {
  return readFlag(sheet, sheet.record258Flag);
}

Step readSettingsOn(QPSSheet& sheet) {
  sheet.settingsActive = 1;
  return readUnusedBody(sheet);
}

Step passSettingsOff(QPSSheet& sheet) {
  sheet.settingsActive = 0;
  return sheet.records.skipBody() ? Step::kGoOn : Step::kFail;
}

Step endOfPass(QPSSheet& /*sheet*/) {
  return Step::kEnd;
}

}  // namespace qps
