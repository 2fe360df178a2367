// SPDX-License-Identifier: MIT
//
// From the fields of an SSItem to plain values.
#include <qpsreader/host/item.hpp>

namespace qps {
namespace {

HorizontalAlign horizontalOf(std::uint8_t alignment) {
  switch (alignment & SSAlignHorizontalMask) {
    case SSAlignLeft:
      return HorizontalAlign::kLeft;
    case SSAlignCentre:
      return HorizontalAlign::kCentre;
    case SSAlignRight:
      return HorizontalAlign::kRight;
    case SSAlignCentreAcross:
      return HorizontalAlign::kCentreAcross;
    default:
      return HorizontalAlign::kGeneral;
  }
}

VerticalAlign verticalOf(std::uint8_t alignment) {
  switch (alignment & SSAlignVerticalMask) {
    case SSAlignVerticalCentre:
      return VerticalAlign::kCentre;
    case SSAlignVerticalBottom:
      return VerticalAlign::kBottom;
    case SSAlignVerticalTop:
      return VerticalAlign::kTop;
    default:
      return VerticalAlign::kDefault;
  }
}

Font fontOf(const SSItemFont& font) {
  return {.name = font.name,
          .size = font.size,
          .bold = font.attrBit0 != 0,
          .italic = font.attrBit1 != 0,
          .underline = font.attrBit2 != 0,
          .strikeOut = font.attrBit5 != 0};
}

Run runOf(const SSItemRun& run) {
  return {.first = run.first, .last = run.last, .size = run.value};
}

}  // namespace

// The border slots of a cell without borders may hold its base style's; `bordered` decides.
CellStyle CellView::style() const {
  CellStyle style;
  style.horizontal = horizontalOf(cell_->alignment);
  style.vertical = verticalOf(cell_->alignment);
  style.alignment = cell_->alignment;
  style.fillColour = cell_->fillColour;
  style.textColour = cell_->textColour;
  if (cell_->bordered != 0) {
    for (std::size_t side = 0; side < style.borders.size(); ++side) {
      const SSItemBorder& border = cell_->borders[side];
      style.borders[side] = {static_cast<BorderLine>(border.style), border.colour};
    }
  }
  if (cell_->font.extra0 != 0) style.font = fontOf(cell_->font);
  return style;
}

std::optional<SheetInfo> Item::sheetInfo() const {
  if (kind() != Kind::kSheetInfo) return std::nullopt;
  const SSItemSheetInfo& info = raw_.sheetInfo;
  return SheetInfo{.rowCount = info.rowCount,
                   .columnCount = info.columnCount,
                   .defaultColumnWidth = info.defaultColumnWidth,
                   .defaultRowHeight = info.defaultRowHeight,
                   .columnColour = info.columnColour,
                   .record257Flag = info.record257Flag != 0,
                   .record258Flag = info.record258Flag != 0};
}

std::optional<Run> Item::columnWidths() const {
  if (kind() != Kind::kColumnWidths) return std::nullopt;
  return runOf(raw_.columnWidths);
}

std::optional<Run> Item::rowHeight() const {
  if (kind() != Kind::kRowHeight) return std::nullopt;
  return runOf(raw_.rowHeight);
}

std::optional<std::string_view> Item::notebookText() const {
  const bool isText = kind() == Kind::kRecord38Text || kind() == Kind::kRecord37Text;
  const char* const text = isText ? raw_.notebookText.text : nullptr;
  return text != nullptr ? std::optional<std::string_view>(text) : std::nullopt;
}

}  // namespace qps
