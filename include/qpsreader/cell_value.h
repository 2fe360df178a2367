/* SPDX-License-Identifier: MIT
 *
 * What a cell holds, beside what it shows: an extension to the operations of qps_reader.h.
 *
 * A cell's display text cannot be undone: a date may lack its year, a number is cut to the width of
 * its column, and a hidden cell shows nothing. QPSGetCellValue tells what stands in the file.
 */
#ifndef QPSREADER_CELL_VALUE_H
#define QPSREADER_CELL_VALUE_H

#include <qpsreader/qps_reader.h>

#ifdef __cplusplus
extern "C" {
#endif

/* QPSCellValue.kind */
enum {
  QPSCellBlank = 0,  /* a styled cell without contents */
  QPSCellNumber = 1, /* `number` */
  QPSCellText = 2,   /* `text`: a label, or a formula's text result */
  QPSCellError = 3   /* a formula whose result is an error; shows as "ERR" */
};

/* QPSCellValue.showsDateOrTime, combined by OR */
enum {
  QPSShowsDate = 1, /* a date, or a part of one: year, month, day or weekday */
  QPSShowsTime = 2  /* a time of day, or a part of one */
};

/* The format's fields hold for every kind of cell, though only numbers show by them. */
typedef struct QPSCellValue {
  uint32_t kind;      /* QPSCell... */
  uint32_t isFormula; /* 1 when a formula computed it, else 0 */
  double number;      /* of a number cell, as the file holds it: a damaged file may hold an infinity
                         or no number. 16-bit and 32-bit integers come as doubles. Else 0 */
  const char* text;   /* of a text cell: `textBytes` bytes in the file's own character set, none of
                         them zero; a zero byte need not follow them. Else null */
  size_t textBytes;   /* 0 to 5113 */

  uint32_t formatCode; /* 0 to 255: the number format in force. 16, 32, 48, 64, 80, 96 and 112 are
                          families; from 113 on they are the notebook's own */
  uint32_t decimals;   /* 0 to 15, for the families that show decimals */
  const char* formatText;   /* the text of the notebook's own format, zero-terminated; null when the
                               code is below 113 or the notebook has no text for it */
  const char* styleName;    /* the text of the named style that the cell's style is based on,
                               zero-terminated, or null */
  uint32_t showsDateOrTime; /* QPSShows...: what the format shows of a number, which it takes as
                               days since 1899-12-30; 0 when it shows a plain number */
} QPSCellValue;

/* Tells about the cell that the last call of QPSProcessSheet for this sheet delivered; also when
 * the cell shows nothing, because its column or its format hides it. Changes nothing, calls nothing
 * of the host, and may be called any number of times.
 *
 * Returns 0 and fills `value`; or returns 1 and leaves it alone when the last call delivered no
 * cell (there was none yet, it delivered an item of another kind, or the sheet has ended) or
 * `sheet` is null. After QPSCloseSheet the sheet must not be passed.
 *
 * The texts belong to the sheet: `text` until the next QPSProcessSheet or QPSCloseSheet, the other
 * two until QPSCloseSheet. */
QPS_API uint32_t QPSGetCellValue(QPSSheet* sheet, QPSCellValue* value);

#ifdef __cplusplus
} /* extern "C" */

static_assert(offsetof(QPSCellValue, number) == 8 && offsetof(QPSCellValue, text) == 16, "layout");
static_assert(offsetof(QPSCellValue, textBytes) == 16 + sizeof(void*), "layout");
static_assert(offsetof(QPSCellValue, formatCode) == 16 + 2 * sizeof(void*), "layout");
static_assert(offsetof(QPSCellValue, formatText) == 24 + 2 * sizeof(void*), "layout");
static_assert(offsetof(QPSCellValue, showsDateOrTime) == 24 + 4 * sizeof(void*), "layout");
#endif

#endif /* QPSREADER_CELL_VALUE_H */
