/* SPDX-License-Identifier: MIT
 *
 * The table of the compound-document library ("zbolefio.dll"), through which the reader reads a
 * notebook that lies in a stream of an OLE2 compound document.
 *
 * The host loads the library when the reader asks for it (SSHostServices.loadLibrary); its one
 * export is GetOLEInterface. The reader calls the slots, all on the thread of the exported
 * operation that needs them: 0, 2 and 11 when a listing or QPSInitSheet finds a compound document,
 * 12, 10 and 8 when the listing is over, in QPSCloseSheet, or when the opening fails. No pointer
 * passed to a slot is null.
 *
 * Threads: the library that comes with the reader shares nothing between containers. Different ones
 * may be used on different threads, one on one thread at a time.
 */
#ifndef QPSREADER_OLE_INTERFACE_H
#define QPSREADER_OLE_INTERFACE_H

#include <qpsreader/host_tables.h>

#ifdef __cplusplus
extern "C" {
#endif

#define OLE_LIBRARY_NAME "zbolefio.dll"
#define OLE_ENTRY_POINT "GetOLEInterface"

/* Fifteen slots; the reader calls the six with a name. A container holds at most one open stream at
 * a time. */
typedef struct OLEInterface {
  /* slot 0: opens the compound document that `file` holds. The library opens `file` (which must not
   * be open), reads through it and allocates from `pool`; both must outlive the container. Returns
   * the container, or null when the file cannot be opened or is no compound document; `file` is
   * closed again then. */
  void* (*openContainer)(SSStream* file, SSMemoryPool* pool);
  void* reserved1;

  /* slot 2: opens the stream with this name in the root storage, closing the one that was open.
   * Nonzero when there is one, 0 otherwise. Names compare without regard to case. */
  int32_t (*openStream)(void* container, const char* name);
  void* reserved3[5];

  /* slot 8: closes the container, whatever is open in it, and `file`. */
  void (*closeContainer)(void* container);
  void* reserved9;

  /* slot 10: closes the open stream if it has this name; its stream object ends with it. */
  void (*closeStream)(void* container, const char* name);

  /* slot 11: the open stream, positioned at its first byte, as an SSStream whose read, seek, tell
   * and close the reader uses; null when none is open. It belongs to the container and stays valid
   * until slot 8, 10 or 12, or until slot 2 opens another. */
  SSStream* (*streamObject)(void* container);

  /* slot 12: gives back the stream object of slot 11, which must not be used after; the stream
   * stays open until slot 10. */
  void (*releaseStreamObject)(void* container);
  void* reserved13[2];
} OLEInterface;

/* The library's export: fills the fifteen slots of `table`, the reserved ones with null. The caller
 * owns the table, which holds as long as the library stays loaded. */
typedef void (*GetOLEInterfaceFunction)(OLEInterface* table);

#ifdef __cplusplus
} /* extern "C" */

static_assert(offsetof(OLEInterface, openContainer) == 0, "layout");
static_assert(offsetof(OLEInterface, openStream) == 2 * sizeof(void*), "layout");
static_assert(offsetof(OLEInterface, closeContainer) == 8 * sizeof(void*), "layout");
static_assert(offsetof(OLEInterface, closeStream) == 10 * sizeof(void*), "layout");
static_assert(offsetof(OLEInterface, streamObject) == 11 * sizeof(void*), "layout");
static_assert(offsetof(OLEInterface, releaseStreamObject) == 12 * sizeof(void*), "layout");
static_assert(sizeof(OLEInterface) == 15 * sizeof(void*), "layout");
#endif

#endif /* QPSREADER_OLE_INTERFACE_H */
