/* SPDX-License-Identifier: MIT
 *
 * SSItem: the record through which QPSProcessSheet hands one item to the host.
 *
 * Every field has the same byte offset on every host. Text pointers are stored at the host's own
 * width, unaligned where they fall so, which is why the structures are packed: read their fields
 * through the structure, and do not take a field's address. Integers are in the host's byte order.
 *
 * The reader writes only the fields of the item's kind; all other bytes, the unused ones included,
 * keep what the host left there.
 */
#ifndef QPSREADER_SS_ITEM_H
#define QPSREADER_SS_ITEM_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SSItem.kind: the kind SSItemKindX is delivered in a record SSItemX. */
enum {
  SSItemKindSheetInfo = 10,    /* the worksheet's size and defaults: always first, once */
  SSItemKindColumnWidths = 11, /* a run of adjacent columns with one width, not the default */
  SSItemKindRowHeight = 12,    /* a row whose height is not the default */
  SSItemKindRecord38Text = 13, /* a text of the notebook's settings (record 38) */
  SSItemKindRecord37Text = 14, /* a text of the notebook's settings (record 37) */
  SSItemKindCell = 15          /* a cell, in the file's order */
};

enum { SSItemFontNameBytes = 32, SSItemBorderSlots = 4, SSItemBytes = 132 };

#define SS_NO_COLOUR 0xFFFFFFFFu

/* A colour is red in bits 0-7, green in bits 8-15, blue in bits 16-23; SS_NO_COLOUR is none. */
typedef uint32_t SSColour;

#pragma pack(push, 1)

typedef struct SSItemFont {
  uint32_t present;               /* 0: 1; in a cell only when a style was applied, else 0 */
  char name[SSItemFontNameBytes]; /* 4: zero-terminated */
  uint32_t size;                  /* 36: in points, 0 to 255 */
  uint8_t attrBit0;               /* 40: 1 for bold */
  uint8_t attrBit1;               /* 41: 1 for italic */
  uint8_t attrBit2;               /* 42: 1 for underline */
  uint8_t attrBit5;               /* 43: 1 for strike-out */
  uint8_t extra0; /* 44: 1 in a cell whose font was found, 0 in the sheet information */
  uint8_t extra1; /* 45: 0 in a cell whose font was found, 18 in the sheet information */
} SSItemFont;

/* Kind 10. Sizes are in twentieths of a point, 0 to 65535. The counts, 0 to 65535, are what the
 * file says; cells may lie beyond them. */
typedef struct SSItemSheetInfo {
  uint32_t kind;
  uint32_t marker;             /* 4: 1 */
  uint32_t rowCount;           /* 8 */
  uint32_t columnCount;        /* 12 */
  uint32_t record257Flag;      /* 16: 0 or 1 */
  uint32_t record258Flag;      /* 20: 0 or 1 */
  uint32_t defaultColumnWidth; /* 24 */
  uint32_t defaultRowHeight;   /* 28 */
  uint32_t fixedInfo[5];       /* 32: 576, 576, 480, 480, 0 */
  SSItemFont font;             /* 52: "Arial", 10 points */
  uint8_t unused98[2];
  SSColour columnColour; /* 100: the fill colour that all 256 columns share, or SS_NO_COLOUR */
  uint8_t unused104[28];
} SSItemSheetInfo;

/* Kinds 11 and 12. Columns are 1 to 256, rows 1 to 65536; sizes are in twentieths of a point, 0 to
 * 65535. */
typedef struct SSItemRun {
  uint32_t kind;
  uint32_t first; /* 4: the first column, or the row */
  uint32_t last;  /* 8: the last column, or the same row */
  uint32_t value; /* 12: the width or the height; 0 is hidden */
  uint8_t unused16[116];
} SSItemRun;
typedef SSItemRun SSItemColumnWidths;
typedef SSItemRun SSItemRowHeight;

/* Kinds 13 and 14. */
typedef struct SSItemNotebookText {
  uint32_t kind;
  char* text; /* 4: zero-terminated, from SSHostServices.pool; the host owns it and frees it there.
                 Null when it could not be allocated */
  uint8_t unused[SSItemBytes - 4 - sizeof(char*)];
} SSItemNotebookText;
typedef SSItemNotebookText SSItemRecord38Text;
typedef SSItemNotebookText SSItemRecord37Text;

typedef struct SSItemBorder {
  uint8_t style; /* 0 none, 5 thin, 8 double, 6 thick */
  uint8_t unused1[3];
  SSColour colour;
} SSItemBorder;

/* SSItemCell.alignment: one horizontal and one vertical code and one text flag. The bar form of
 * numbers writes 0x0C, and 0x1C when the value does not fit; so do dates that cannot be shown. */
enum {
  SSAlignVerticalMask = 0x03,
  SSAlignVerticalCentre = 0x01,
  SSAlignVerticalBottom = 0x02,
  SSAlignVerticalTop = 0x03,
  SSAlignHorizontalMask = 0x4C,
  SSAlignLeft = 0x0C,
  SSAlignCentre = 0x04,
  SSAlignRight = 0x08,
  SSAlignCentreAcross = 0x40,
  SSAlignTextFlagSet = 0x20,
  SSAlignTextFlagClear = 0x80
};

/* Kind 15. The border slots count only while `bordered` is 1: with 0 the host ignores them, because
 * they then hold the lines of a base style that the cell does not show, or are not written. */
typedef struct SSItemCell {
  uint32_t kind;
  uint32_t column; /* 4: from 1 to 256 */
  uint32_t row;    /* 8: from 1 to 65536 */
  char* text; /* 12: the display text, zero-terminated, from SSItemAlloc; the host owns it. Null
                 when the cell shows nothing or the text could not be allocated */
#if UINTPTR_MAX == 0xFFFFFFFFu
  uint32_t unused16;
#endif
  uint8_t alignment; /* 20: SSAlign... */
  uint8_t unused21[3];
  SSColour fillColour;                     /* 24 */
  SSColour textColour;                     /* 28 */
  uint32_t bordered;                       /* 32: 1 when the cell's own style has a line */
  SSItemBorder borders[SSItemBorderSlots]; /* 36: left, top, right, bottom; see below */
  SSItemFont font;                         /* 68: without a font only `present` is written */
  uint8_t unused114[2];
  uint32_t spare1; /* 116: 0, written only when no style was applied */
  uint8_t spare2;  /* 120: 0 */
  uint8_t unused121[7];
  uint32_t spare3; /* 128: 0 */
} SSItemCell;

/* At least 132 bytes, any alignment, supplied by the host. `kind` says which member holds. */
typedef union SSItem {
  uint32_t kind;
  SSItemSheetInfo sheetInfo;
  SSItemColumnWidths columnWidths;
  SSItemRowHeight rowHeight;
  SSItemNotebookText notebookText;
  SSItemCell cell;
  uint8_t bytes[SSItemBytes];
} SSItem;

#pragma pack(pop)

#ifdef __cplusplus
} /* extern "C" */

static_assert(sizeof(SSItemFont) == 46 && offsetof(SSItemFont, size) == 36, "layout");
static_assert(offsetof(SSItemSheetInfo, fixedInfo) == 32 && offsetof(SSItemSheetInfo, font) == 52,
              "layout");
static_assert(offsetof(SSItemSheetInfo, columnColour) == 100, "layout");
static_assert(offsetof(SSItemRun, value) == 12 && offsetof(SSItemNotebookText, text) == 4,
              "layout");
static_assert(offsetof(SSItemCell, text) == 12 && offsetof(SSItemCell, alignment) == 20, "layout");
static_assert(offsetof(SSItemCell, fillColour) == 24 && offsetof(SSItemCell, textColour) == 28,
              "layout");
static_assert(offsetof(SSItemCell, bordered) == 32 && offsetof(SSItemCell, borders) == 36,
              "layout");
static_assert(sizeof(SSItemBorder) == 8 && offsetof(SSItemBorder, colour) == 4, "layout");
static_assert(offsetof(SSItemCell, font) == 68 && offsetof(SSItemCell, spare1) == 116, "layout");
static_assert(offsetof(SSItemCell, spare2) == 120 && offsetof(SSItemCell, spare3) == 128, "layout");
static_assert(sizeof(SSItemSheetInfo) == SSItemBytes && sizeof(SSItemRun) == SSItemBytes, "layout");
static_assert(sizeof(SSItemNotebookText) == SSItemBytes && sizeof(SSItemCell) == SSItemBytes,
              "layout");
static_assert(sizeof(SSItem) == SSItemBytes && alignof(SSItem) == 1, "layout");
#endif

#endif /* QPSREADER_SS_ITEM_H */
