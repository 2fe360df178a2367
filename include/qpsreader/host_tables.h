/* SPDX-License-Identifier: MIT
 *
 * What the host brings: its services table, its byte stream and its allocator of item texts.
 *
 * The reader has no file handle, no heap and no dynamic loader of its own. It reaches all of them
 * through these tables, which belong to the host: the reader never writes into them, and reads only
 * the slots that have a name here. A slot is one pointer-sized word; the reserved slots may hold
 * anything.
 *
 * Threads: every slot is called on the thread that called the exported operation, and only during
 * that call. Different readers may run on different threads at the same time, so that a services
 * table which they share must bear calls from those threads; one reader and its sheets run on one
 * thread at a time. The reader takes no locks.
 */
#ifndef QPSREADER_HOST_TABLES_H
#define QPSREADER_HOST_TABLES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct SSHostServices SSHostServices;
typedef struct SSMemoryPool SSMemoryPool;
typedef struct SSStream SSStream;

/* The host's memory pool: slots 33 to 37 of SSHostServices. Every operation gets the address of the
 * pool inside the table that the reader was given, never a copy of it.
 *
 * The reader frees every block it got from the pool, on the same pool, at the latest in
 * QPSCloseSheet or QPSCloseReader. The exceptions are the texts of items 13 and 14, which belong to
 * the host from the moment the item is delivered. */
struct SSMemoryPool {
  void* state; /* slot 33: the host's own; never read by the reader */

  /* slot 34: a block of at least `size` bytes (size > 0), aligned as malloc aligns, of any
   * contents; null when there is none. What the reader then leaves out stands with each operation;
   * some blocks only save time, and nothing is lost without them. */
  void* (*alloc)(SSMemoryPool* pool, size_t size);

  /* slot 35: takes back a block of slot 34, 36 or 37. Never called with null. */
  void (*free)(SSMemoryPool* pool, void* block);

  /* slot 36: `block` resized to `size` bytes with its contents kept, or null; on null the old block
   * stays valid and the reader frees it. */
  void* (*realloc)(SSMemoryPool* pool, void* block, size_t size);

  /* slot 37: a block of count x size zero bytes, aligned as malloc aligns, or null. */
  void* (*calloc)(SSMemoryPool* pool, size_t count, size_t size);
};

/* The host's services. It must stay valid and in place from QPSAllocateReader until QPSCloseReader
 * and until the last QPSCloseSheet. */
struct SSHostServices {
  void* reserved0[3];

  /* slot 3: loads the shared library with this file name (a bare name, "zbolefio.dll"; where to
   * look for it is the host's business, and the current directory is a bad place). Nonzero on
   * success, with a handle in `*handle`; 0 on failure. Called for compound documents only. */
  int32_t (*loadLibrary)(SSHostServices* services, const char* name, void** handle);

  /* slot 4: the address of the exported symbol with this name ("GetOLEInterface") of a library that
   * slot 3 loaded, or null when it has none: the compound document then cannot be opened. Called
   * once after each successful slot 3. */
  void* (*getSymbol)(SSHostServices* services, void* library, const char* symbol);

  /* slot 5: gives back a handle of slot 3; called once for each successful slot 3, after the last
   * call into the library: at the end of a listing, in QPSCloseSheet, or in the failed opening. */
  void (*freeLibrary)(SSHostServices* services, void* library);

  void* reserved6[27];

  SSMemoryPool pool; /* slots 33 to 37 */

  void* reserved38[36];

  /* slots 74 and 75: convert a zero-terminated text, in place or elsewhere, and return the
   * converted text. The reader passes a working copy of an English month or weekday name in a
   * 16-byte area and reads the result before its next call into the host. Must not return null. */
  char* (*toLowerText)(SSHostServices* services, char* text);
  char* (*toUpperText)(SSHostServices* services, char* text);
};

/* Origins of SSStream.seek. */
enum { SSSeekFromStart = 0, SSSeekFromCurrent = 1 };

/* A stream of bytes: the host's, over a file, or the compound-document library's, over a stream in
 * it. The pointer that the reader was given is the first argument of each operation.
 *
 * The order of calls on one stream is open, then read, seek and tell in any order, then close.
 * After close it may be opened again: listing the worksheets and opening one each open and close
 * the host stream. The reader closes a stream that it opened exactly once, on failure too, with one
 * exception that the compound-document library owns (see ole_interface.h). */
struct SSStream {
  void* reserved0[8];

  /* slot 8: makes the stream ready for reading from its first byte. Nonzero when it is; 0 refuses
   * the file, and close is then the only call that follows. */
  int32_t (*open)(SSStream* stream);

  /* slot 9: reads up to `count` bytes to `buffer` from the current position and moves past them.
   * Returns the number of bytes read, at most `count`; fewer than asked, down to 0, is the end of
   * the data or an error, and the reader makes no difference between them. The reader asks for at
   * most 5120 bytes at a time, the compound-document library for at most 8192. */
  size_t (*read)(SSStream* stream, void* buffer, size_t count);

  void* reserved10;

  /* slot 11: moves to `offset` bytes from the start (origin 0) or from the current position
   * (origin 1, the offset may be negative). Nonzero on success, 0 on failure. Whether a position
   * beyond the end is a failure is the host's choice: the read after it then finds no data. */
  int32_t (*seek)(SSStream* stream, ptrdiff_t offset, int32_t origin);

  /* slot 12: the current position in bytes from the start. Called when worksheets are listed, once
   * for each; there is no result that means failure. Positions from 4 GiB on do not fit a start
   * offset, whose upper bits are then lost. */
  ptrdiff_t (*tell)(SSStream* stream);

  /* slot 13: ends the reading. */
  void (*close)(SSStream* stream);
};

/* Allocates the text of a cell item, at most once a QPSProcessSheet call: `size` bytes (1 or more,
 * the zero byte included), no alignment needed, or null (the cell then comes without a text).
 * `context` is what QPSInitSheet was given; `block` is always null and `flags` always 0. The block
 * belongs to the host: the reader never frees it and does not touch it after the QPSProcessSheet
 * call that delivered it. */
typedef void* (*SSItemAlloc)(void* context, void* block, size_t size, uint32_t flags);

#ifdef __cplusplus
} /* extern "C" */

static_assert(offsetof(SSMemoryPool, calloc) == 4 * sizeof(void*), "layout");
static_assert(offsetof(SSHostServices, loadLibrary) == 3 * sizeof(void*), "layout");
static_assert(offsetof(SSHostServices, getSymbol) == 4 * sizeof(void*), "layout");
static_assert(offsetof(SSHostServices, freeLibrary) == 5 * sizeof(void*), "layout");
static_assert(offsetof(SSHostServices, pool) == 33 * sizeof(void*), "layout");
static_assert(offsetof(SSHostServices, toLowerText) == 74 * sizeof(void*), "layout");
static_assert(offsetof(SSHostServices, toUpperText) == 75 * sizeof(void*), "layout");
static_assert(sizeof(SSHostServices) == 76 * sizeof(void*), "layout");
static_assert(offsetof(SSStream, open) == 8 * sizeof(void*), "layout");
static_assert(offsetof(SSStream, read) == 9 * sizeof(void*), "layout");
static_assert(offsetof(SSStream, seek) == 11 * sizeof(void*), "layout");
static_assert(offsetof(SSStream, tell) == 12 * sizeof(void*), "layout");
static_assert(offsetof(SSStream, close) == 13 * sizeof(void*), "layout");
static_assert(sizeof(SSStream) == 14 * sizeof(void*), "layout");
#endif

#endif /* QPSREADER_HOST_TABLES_H */
