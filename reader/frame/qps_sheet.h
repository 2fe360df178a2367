// SPDX-License-Identifier: MIT
//
// QPSSheet, the context of one open worksheet, and every node it owns: the whole data model.
//
// The opening pass (scan/, styles/) fills it, the items (items/) come out of it, close_sheet
// releases it. All blocks are the host pool's. Lists are singly linked, newest node first; where a
// cell or a record looks something up by number, an index beside the list finds the node that a
// walk from the front would find first. A list and its index change together, in the one function
// that pushes.
#ifndef QPSREADER_READER_QPS_SHEET_H
#define QPSREADER_READER_QPS_SHEET_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <qpsreader/host_tables.h>
#include <qpsreader/qps_reader.h>
#include "reader/frame/container.h"
#include "reader/frame/record_stream.h"

namespace qps {

inline constexpr std::size_t kColumns = 256;
inline constexpr std::size_t kRows = 65536;
inline constexpr std::uint32_t kNotSet = 0xFFFFFFFF;    // a column's width
inline constexpr std::uint32_t kNoColour = 0xFFFFFFFF;  // a colour
inline constexpr std::size_t kBorderSlots = 4;

// Record 207.
struct QPSFont {
  static constexpr std::size_t kNameBytes = 32;

  // What an item shows, in the item's layout, so that a cell takes it as one block
  // (reader/styles/apply_style.h).
  struct Shown {
    char name[kNameBytes];  // cut, zero-terminated and filled with zeros
    std::uint32_t size;     // points; the low byte of the record's value
    std::uint8_t attrBit0;
    std::uint8_t attrBit1;
    std::uint8_t attrBit2;
    std::uint8_t attrBit5;
    std::uint8_t extra0;
    std::uint8_t extra1;
  };

  QPSFont* next;
  std::uint8_t number;  // 1, 2, 3... in file order, wrapping after 255
  Shown shown;
};

// Record 208.
struct QPSNamedStyle {
  QPSNamedStyle* next;
  std::uint16_t id;           // what a style's `namedStyle` refers to
  std::uint16_t styleNumber;  // the style that the name stands for
  char* name;                 // own block; null when it could not be allocated
};

struct UserFormatPlan;  // reader/format/user_format_plan.h: what the text says, parsed

// Record 230.
struct QPSUserFormat {
  QPSUserFormat* next;
  std::uint16_t code;  // the record's number + 112
  std::uint8_t parts;  // reader/format/shown_parts.h; 0 until somebody asks for a cell's value
  char* text;          // own block; null when it could not be allocated
  std::size_t textBytes;
  UserFormatPlan* plan;  // own block; null until a cell shows the format
};

// The kinds of cell that the default alignment tells apart: labels and blank cells, and numbers and
// the results of formulas.
enum CellKind : std::uint8_t { kTextCell = 0, kNumericCell = 1 };

// What a style means for a cell, worked out when the first cell uses it: the style over its base
// style, with the fonts, formats and names that it refers to found.
struct QPSAppearance {
  struct Colours {
    std::uint32_t fill;
    std::uint32_t text;
    std::uint32_t bordered;
  };

  std::uint8_t formatCode;
  std::uint8_t decimals;
  std::uint8_t alignment[2];  // by CellKind
  std::uint32_t present;      // 0 only where no style applies
  Colours colours;
  const struct QPSStyle* borders;  // whose border slots are written, or null
  const QPSFont* font;             // or null
  QPSUserFormat* userFormat;       // whose text renders the cell, or null
  bool isDate;                     // the style's name is "Date"
};

// Record 206.
struct QPSStyle {
  QPSStyle* next;
  std::uint16_t number;  // 1, 2, 3... in file order
  std::uint8_t formatCode;
  std::uint8_t decimals;
  std::uint8_t horizontal;  // 0 (by the kind of cell), 0x04, 0x08, 0x0C or 0x40
  std::uint8_t vertical;    // 1, 2 or 3
  std::uint8_t textFlag;    // 0x20 or 0x80
  std::uint8_t blend;       // 0 to 7
  std::uint8_t font;        // a QPSFont's number
  std::uint8_t namedStyle;  // a QPSNamedStyle's id
  std::uint8_t borderStyle[kBorderSlots];
  std::uint32_t colour1;
  std::uint32_t colour2;
  std::uint32_t textColour;
  std::uint32_t borderColour[kBorderSlots];
};

// 256 styles of the index by number, of which the high byte chooses the page. The appearances stand
// by the number in the cells, where 0 is style 1 too.
struct QPSStylePage {
  QPSStyle* styles[256];
  QPSAppearance* appearances[256];  // own blocks; null until a cell uses the style
};

// Records 214, 220 and 261: either a range of rows with one height, or a set of rows that hide in
// the older nodes after it (reader/scan/row_heights.h).
struct QPSRowHeight {
  QPSRowHeight* next;
  std::uint32_t firstRow;  // from 1
  std::uint32_t lastRow;
  std::uint16_t height;       // 0 is hidden
  std::uint16_t hiddenBytes;  // 0 for a range; else the bytes of the bitmap that follows this node
};

// One bit a row, row 1 first: bit k of byte i is row 8 x i + k + 1, as in record 220.
using RowBitmap = std::uint8_t[kRows / 8];

enum ItemState : std::uint32_t {
  ItemStateStart = 0,
  ItemStateWidths = 1,
  ItemStateRecords = 3,
  ItemStateCells = 5,  // the last part of ItemStateRecords: nothing but cells is left
  ItemStateEnd = 4,
};

}  // namespace qps

struct QPSSheet {
  // Its stream is null while none is open. It comes first because one register then holds the
  // address of both, in code that runs for every cell.
  qps::RecordStream records;

  void* hostData;
  QPSReader* reader;
  void* itemAllocContext;
  SSItemAlloc itemAlloc;
  SSHostServices* services;

  qps::Container container;
  std::uint32_t sheetStart;  // where the worksheet's records begin, from the stream's start

  // Items
  std::uint32_t itemState;
  std::uint32_t nextWidthColumn;  // first column of the next run of widths, from 1; 0 for none

  // Notebook definitions
  std::uint16_t formatVersion;
  bool fileHeaderSeen;
  std::uint32_t settingsActive;
  std::uint32_t record257Flag;
  std::uint32_t record258Flag;
  char* record38Text;
  char* record37Text;
  qps::QPSFont* fontList;
  qps::QPSNamedStyle* namedStyleList;
  qps::QPSUserFormat* formatList;
  qps::QPSStyle* styleList;

  // The worksheet's layout
  std::uint16_t rowCount;
  std::uint16_t columnCount;
  std::uint16_t defaultColumnWidth;
  std::uint16_t defaultRowHeight;
  std::uint32_t columnWidths[qps::kColumns];   // kNotSet until the first item
  std::uint32_t columnColours[qps::kColumns];  // kNoColour for none
  qps::QPSRowHeight* rowHeightList;

  // `unstyled` is what cells show in a notebook without styles, or in one whose styles lack the
  // cell's number; `scratchAppearance` serves when the pool has no room.
  qps::QPSAppearance unstyled;
  qps::QPSAppearance scratchAppearance;

  // Indexes beside the lists
  qps::QPSFont* fontByNumber[256];
  qps::QPSNamedStyle* namedStyleById[256];  // a style's reference has one byte
  qps::QPSUserFormat* formatByCode[256];    // so has a format code
  qps::QPSStylePage* stylePageByNumber[256];
  qps::RowBitmap rowListed;  // rows that rowHeightList held when the sheet was opened
  qps::RowBitmap rowHidden;  // rows that hide in the newest node that holds them
  std::uint16_t
      rowHiddenBytes;  // while the sheet is being opened: rowHidden is 0 from this byte on
};

namespace qps {

// What the sheet information says of every worksheet, whatever the file.
inline constexpr std::uint32_t kFixedInfo[5] = {576, 576, 480, 480, 0};

// Links a node in front of its list.
template <typename Node>
void pushFront(Node*& list, Node& node) {
  node.next = list;
  list = &node;
}

// Releases everything that the sheet holds and the sheet itself; closes what is open.
void closeSheet(QPSSheet* sheet);

}  // namespace qps

#endif  // QPSREADER_READER_QPS_SHEET_H
