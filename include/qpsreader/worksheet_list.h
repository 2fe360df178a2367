/* SPDX-License-Identifier: MIT
 *
 * The list of a notebook's worksheets, as QPSGetWorkSheetInfo and qpsWorkSheetInfo fill it.
 */
#ifndef QPSREADER_WORKSHEET_LIST_H
#define QPSREADER_WORKSHEET_LIST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { SSWorkSheetNameBytes = 64 };

/* One worksheet: 84 bytes on every host, integers in the host's byte order. A worksheet that the
 * notebook counts but does not describe leaves an entry of 84 zero bytes at its place. */
typedef struct SSWorkSheetEntry {
  char name[SSWorkSheetNameBytes]; /* 0: the display name, zero-terminated, in the notebook's own
                                      character set; a long one is " ... " and its last 58 bytes */
  uint32_t zero64;                 /* 64: 0 */
  uint8_t flagByte;                /* 68: 0 */
  uint8_t zero69[3];               /* 69: 0 */
  uint32_t typeFlags;              /* 72: 0x00004000 */
  uint32_t startOffset; /* 76: bytes from the start of the stream to the worksheet's first
                           record; the third argument of QPSInitSheet */
  uint32_t spareWord;   /* 80: 0xFFFFFFFF */
} SSWorkSheetEntry;

/* The result record, an output: the host sets `entries` to null before the call, and `count` may
 * hold anything. After a result of 1, `entries` points to `count` entries in the host's pool; the
 * QPSReader owns that table and gives it back in QPSCloseReader or when a later listing with the
 * same reader replaces it. The host must not free it. After a result of 0, `entries` is null and
 * `count` means nothing. */
typedef struct SSWorkSheetList {
  uint32_t count;
  SSWorkSheetEntry* entries;
} SSWorkSheetList;

#ifdef __cplusplus
} /* extern "C" */

static_assert(offsetof(SSWorkSheetEntry, flagByte) == 68, "layout");
static_assert(offsetof(SSWorkSheetEntry, typeFlags) == 72, "layout");
static_assert(offsetof(SSWorkSheetEntry, startOffset) == 76, "layout");
static_assert(offsetof(SSWorkSheetEntry, spareWord) == 80, "layout");
static_assert(sizeof(SSWorkSheetEntry) == 84, "layout");
static_assert(sizeof(SSWorkSheetList) == 2 * sizeof(void*), "layout");
#endif

#endif /* QPSREADER_WORKSHEET_LIST_H */
