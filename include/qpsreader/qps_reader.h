/* SPDX-License-Identifier: MIT
 *
 * The exported operations of the notebook reader.
 *
 * A host loads the library, takes the table of operations from qpsGetSSReaderInterface and calls,
 * in this order:
 *
 *     QPSAllocateReader     a handle for one file
 *     QPSGetWorkSheetInfo   optional: the worksheets and where they start
 *     QPSInitSheet          opens one worksheet
 *     QPSProcessSheet       again and again: one item per call, until it returns 1
 *     QPSCloseSheet         then, perhaps, QPSInitSheet for the next worksheet
 *     QPSCloseReader
 *
 * A pointer must not be null where nothing is said of null; the host's own values (owner, ignored,
 * hostValue1 and 2, hostData, itemAllocContext) may be anything. A stream has one position: one
 * open sheet, or one listing, may use it at a time.
 *
 * Failures have no message: an operation says no, and nothing that it acquired stays behind. Any
 * bytes may stand in the file.
 *
 * Threads: each operation works on the caller's thread and takes no locks; the library has no
 * writable data of its own. Different readers may be used on different threads at the same time,
 * one reader and its sheets on one thread at a time.
 */
#ifndef QPSREADER_QPS_READER_H
#define QPSREADER_QPS_READER_H

#include <qpsreader/host_tables.h>

#if defined(QPS_STATIC)
#define QPS_API
#elif defined(_WIN32)
#if defined(QPS_BUILDING)
#define QPS_API __declspec(dllexport)
#else
#define QPS_API __declspec(dllimport)
#endif
#else
#define QPS_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

union SSItem;           /* ss_item.h */
struct SSWorkSheetList; /* worksheet_list.h */

/* An open worksheet; opaque to the host, which owns it from QPSInitSheet until QPSCloseSheet. */
typedef struct QPSSheet QPSSheet;

/* The handle of one file: seven words from the host's pool. The host owns it from QPSAllocateReader
 * until QPSCloseReader and may read its fields. */
typedef struct QPSReader {
  void* owner;              /* first argument of QPSAllocateReader, not interpreted */
  SSStream* stream;         /* the file; third argument */
  SSHostServices* services; /* fourth argument */
  uint32_t sheetCount;      /* entries in sheetTable; 0 before a successful listing */
  void* sheetTable;         /* the SSWorkSheetEntry table of the last listing, or null */
  void* hostValue2;         /* sixth argument, not interpreted */
  void* hostValue1;         /* fifth argument, not interpreted */
} QPSReader;

/* Makes a handle from services->pool. `services` must be valid until QPSCloseReader; `stream` is
 * not called here, and may be null if only the handle is wanted. `ignored` is not used. Returns
 * null when the pool has no block. */
QPS_API QPSReader* QPSAllocateReader(void* owner, void* ignored, SSStream* stream,
                                     SSHostServices* services, void* hostValue1, void* hostValue2);

/* Gives the worksheet table and the handle back to the pool. Does nothing when `reader`, or its
 * `services`, is null. Close the reader's sheets first; the stream is not touched. */
QPS_API void QPSCloseReader(QPSReader* reader);

/* Stores 0 in `*charSet`: texts come as the file holds them. Always returns 0; `reader` may be
 * null. */
QPS_API int32_t QPSGetCharSet(QPSReader* reader, uint32_t* charSet);

/* With `selector` 0, lists the worksheets as qpsWorkSheetInfo does; a null reader gives 0. With any
 * other selector, returns 1 and does nothing. */
QPS_API int32_t QPSGetWorkSheetInfo(QPSReader* reader, struct SSWorkSheetList* result,
                                    uint32_t selector);

/* Scans the file once and describes each worksheet: its display name and start offset. Opens and
 * closes the reader's stream. `result` is an output; its `entries` must be null on entry.
 *
 * Returns 1 when at least one worksheet was found; the table then stands in `result` and in the
 * reader, which owns it until QPSCloseReader or the next listing that finds one (worksheet_list.h).
 * A damaged or cut file gives the worksheets up to the damage. Returns 0 when the stream is null or
 * cannot be opened, when the file is no notebook or has no worksheet, when a compound document
 * cannot be opened, or when the pool has no room for the table; `result->entries` is then null, and
 * the reader keeps the table of an earlier listing. */
QPS_API int32_t qpsWorkSheetInfo(QPSReader* reader, struct SSWorkSheetList* result);

/* Opens the worksheet whose first record lies `sheetStart` bytes into the stream (the `startOffset`
 * of its entry): reads the notebook's definitions and the worksheet's layout, up to its first cell.
 *
 * `itemAlloc`, called with `itemAllocContext`, allocates the texts of cells; it must not be null.
 * `hostData` is stored and not interpreted. `reader` must stay open until QPSCloseSheet.
 *
 * Returns the open sheet, whose stream stays open until QPSCloseSheet; or null, with the stream
 * closed and everything released, when `reader`, its services or its stream are null, the stream
 * cannot be opened, the pool is exhausted, or the bytes are not a readable notebook (protected ones
 * included). What the sheet can do without is left out when the pool refuses it: the height of
 * rows, a text of items 13 and 14, the text of a user-defined format, the name of a style. */
QPS_API QPSSheet* QPSInitSheet(QPSReader* reader, void* itemAllocContext, uint32_t sheetStart,
                               SSItemAlloc itemAlloc, void* hostData);

/* Writes the next item of the sheet into `item` (at least 132 bytes, see ss_item.h) and returns 0;
 * or returns 1, with nothing written, once the worksheet has ended, and then on every later call.
 * The items come in the order of their kinds, 10 to 15; cells come in the file's order, and a
 * damaged or cut file ends the sheet at the damage. When the pool refuses a block here, the text of
 * an item 13 or 14 is null, and nothing else is lost. */
QPS_API uint32_t QPSProcessSheet(QPSSheet* sheet, union SSItem* item);

/* Closes the stream (and the compound document and its library) and gives back everything that the
 * sheet holds, itself included. Texts delivered in items are not touched. Returns 0; or -1 for a
 * null sheet. */
QPS_API int32_t QPSCloseSheet(QPSSheet* sheet);

/* Widens the exponent of a number such as "1.23E+05" from two digits to three, in place:
 * "1.23E+005". Any other text stays as it is. The text grows by one character, for which the caller
 * has room; a text of more than 273 characters is left alone. */
QPS_API void qps2to3E(char* text);

/* The operations as a table: nine slots in this order. */
typedef struct SSReaderInterface {
  QPSReader* (*allocateReader)(void* owner, void* ignored, SSStream* stream,
                               SSHostServices* services, void* hostValue1, void* hostValue2);
  void (*closeReader)(QPSReader* reader);
  int32_t (*getCharSet)(QPSReader* reader, uint32_t* charSet);
  void* reserved3; /* null: no operation */
  int32_t (*getWorkSheetInfo)(QPSReader* reader, struct SSWorkSheetList* result, uint32_t selector);
  void* reserved5; /* null: no operation */
  QPSSheet* (*initSheet)(QPSReader* reader, void* itemAllocContext, uint32_t sheetStart,
                         SSItemAlloc itemAlloc, void* hostData);
  uint32_t (*processSheet)(QPSSheet* sheet, union SSItem* item);
  int32_t (*closeSheet)(QPSSheet* sheet);
} SSReaderInterface;

/* Fills the nine slots of `table`. May be called any number of times. */
QPS_API void qpsGetSSReaderInterface(SSReaderInterface* table);

/* The tokens of the user-defined date formats ("TDD-Mon-YY"), longest first where one begins
 * another: the token and its length in characters, the printing format of its value, and which
 * value it shows (0 to 18). */
typedef struct QPSUserDefine {
  const char* token;
  int32_t length;
  const char* format;
  uint32_t field;
} QPSUserDefine;

enum { QPSUserDefineRows = 23 };

QPS_API extern const QPSUserDefine qpsUSERDEFINE[QPSUserDefineRows];

#ifdef __cplusplus
} /* extern "C" */

static_assert(offsetof(QPSReader, sheetCount) == 3 * sizeof(void*), "layout");
static_assert(offsetof(QPSReader, sheetTable) == 4 * sizeof(void*), "layout");
static_assert(offsetof(QPSReader, hostValue2) == 5 * sizeof(void*), "layout");
static_assert(sizeof(QPSReader) == 7 * sizeof(void*), "layout");
static_assert(offsetof(SSReaderInterface, getWorkSheetInfo) == 4 * sizeof(void*), "layout");
static_assert(offsetof(SSReaderInterface, initSheet) == 6 * sizeof(void*), "layout");
static_assert(sizeof(SSReaderInterface) == 9 * sizeof(void*), "layout");
static_assert(sizeof(QPSUserDefine) == 4 * sizeof(void*), "layout");
#endif

#endif /* QPSREADER_QPS_READER_H */
