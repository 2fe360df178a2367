// SPDX-License-Identifier: MIT
//
// One item of a worksheet, as Notebook::items delivers it: what the reader wrote into an SSItem,
// with names, and with nothing stale from the item before.
//
// An Item and everything that was obtained from it (views, texts, font names) hold until the range
// moves to the next item or is destroyed. So neither Item nor CellView can be copied: what shall
// last is taken out of them, as `std::string(cell->text())` or, styles aside from their font's
// name, as the values that they return. Texts that were put into a TextArena live as long as that.
// Texts are the file's own bytes; which characters they mean the file does not say (windows-1252 is
// the usual guess).
#ifndef QPSREADER_HOST_ITEM_HPP
#define QPSREADER_HOST_ITEM_HPP

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include <qpsreader/ss_item.h>
#include <qpsreader/host/cell_value.hpp>

namespace qps {

enum class HorizontalAlign : std::uint8_t { kGeneral, kLeft, kCentre, kRight, kCentreAcross };
enum class VerticalAlign : std::uint8_t { kDefault, kCentre, kBottom, kTop };

// Lines as the item holds them; other values are possible in a damaged file.
enum class BorderLine : std::uint8_t { kNone = 0, kThin = 5, kThick = 6, kDouble = 8 };

// Colours: red in bits 0-7, green in bits 8-15, blue in bits 16-23; SS_NO_COLOUR is none.
struct Border {
  BorderLine line = BorderLine::kNone;
  SSColour colour = SS_NO_COLOUR;
};

struct Font {
  std::string_view name;
  std::uint32_t size = 0;  // in points
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
};

struct CellStyle {
  HorizontalAlign horizontal = HorizontalAlign::kGeneral;
  VerticalAlign vertical = VerticalAlign::kDefault;
  std::uint8_t alignment = 0;  // the whole byte, SSAlign...
  SSColour fillColour = SS_NO_COLOUR;
  SSColour textColour = 0;
  std::array<Border, SSItemBorderSlots> borders{};  // left, top, right, bottom
  std::optional<Font> font;                         // none: the notebook names no font for the cell
};

// Kind 10. Sizes are in twentieths of a point.
struct SheetInfo {
  std::uint32_t rowCount = 0;
  std::uint32_t columnCount = 0;
  std::uint32_t defaultColumnWidth = 0;
  std::uint32_t defaultRowHeight = 0;
  SSColour columnColour = SS_NO_COLOUR;  // the fill that all columns share
  bool record257Flag = false;
  bool record258Flag = false;
};

// Kinds 11 and 12: adjacent columns of one width, or one row (first == last) and its height.
// Columns and rows count from 1.
struct Run {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  std::uint32_t size = 0;  // in twentieths of a point; 0 is hidden
};

// Kind 15: a view of a cell item. Each function decodes what it returns when it is called.
class CellView {
 public:
  // `sheet` delivered the cell as its last item; without one the value is not known and comes as
  // blank.
  explicit CellView(const SSItemCell& cell, QPSSheet* sheet = nullptr)
      : cell_(&cell), sheet_(sheet) {}
  CellView(const CellView&) = delete;
  CellView& operator=(const CellView&) = delete;

  std::uint32_t row() const { return cell_->row; }        // 1 to 65536
  std::uint32_t column() const { return cell_->column; }  // 1 to 256

  // The display text. A blank or hidden cell has none, which is not the same as an empty one.
  bool hasText() const { return cell_->text != nullptr; }
  std::string_view text() const { return hasText() ? std::string_view(cell_->text) : ""; }

  CellStyle style() const;

  // What the cell holds, whatever it shows.
  CellValue value() const;

 private:
  const SSItemCell* cell_;
  QPSSheet* sheet_;
};

class Item {
 public:
  enum class Kind : std::uint32_t {
    kSheetInfo = SSItemKindSheetInfo,
    kColumnWidths = SSItemKindColumnWidths,
    kRowHeight = SSItemKindRowHeight,
    kRecord38Text = SSItemKindRecord38Text,
    kRecord37Text = SSItemKindRecord37Text,
    kCell = SSItemKindCell,
  };

  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;

  Kind kind() const { return static_cast<Kind>(raw_.kind); }

  // Each of these has a value for the kind in its name, and none for the other kinds. A notebook
  // text (of either kind) also has none when it did not fit the memory limit.
  std::optional<CellView> cell() const;
  std::optional<SheetInfo> sheetInfo() const;
  std::optional<Run> columnWidths() const;
  std::optional<Run> rowHeight() const;
  std::optional<std::string_view> notebookText() const;

  // The record itself. Bytes that its kind does not fill are 0.
  const SSItem& raw() const { return raw_; }

 private:
  friend struct ItemRangeState;
  Item() = default;

  alignas(void*) SSItem raw_{};  // packed, and so by itself aligned to nothing
  QPSSheet* sheet_ = nullptr;    // that delivers the item
};

inline std::optional<CellView> Item::cell() const {
  if (kind() != Kind::kCell) return std::nullopt;
  return std::optional<CellView>(std::in_place, raw_.cell, sheet_);
}

}  // namespace qps

#endif  // QPSREADER_HOST_ITEM_HPP
