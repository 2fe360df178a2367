// SPDX-License-Identifier: MIT
//
// The library's one export, for programs that link the library instead of loading it.
#ifndef QPSREADER_OLEFIO_GET_OLE_INTERFACE_H
#define QPSREADER_OLEFIO_GET_OLE_INTERFACE_H

#include <qpsreader/ole_interface.h>

// Under Windows the linker exports the function by its name.
#if defined(__GNUC__) && !defined(_WIN32)
#define QPS_OLE_API __attribute__((visibility("default")))
#else
#define QPS_OLE_API
#endif

// Fills the table's six named slots; the reserved ones become null.
extern "C" QPS_OLE_API void GetOLEInterface(OLEInterface* table);

#endif  // QPSREADER_OLEFIO_GET_OLE_INTERFACE_H
