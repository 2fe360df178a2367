// SPDX-License-Identifier: MIT
//
// The steps that switch from a compound document to the notebook's records in one of its streams,
// and back. The document itself is read by a library that the host loads (OLEInterface).
#ifndef QPSREADER_READER_CONTAINER_H
#define QPSREADER_READER_CONTAINER_H

#include <cstdint>

#include <qpsreader/host_tables.h>
#include <qpsreader/ole_interface.h>

namespace qps {

// What an opening acquired; all zero for a plain file.
struct Container {
  void* container;              // the library's handle of the open document
  std::uint32_t containerKind;  // 0: none; else 1 + the index of the stream's name that was opened
  void* oleLibrary;             // the host's handle of the loaded library
  OLEInterface ole;             // the library's table
};

// Whether the first four bytes of a file are a compound document's (D0 CF 11 E0).
bool isCompoundDocument(const std::uint8_t* firstFourBytes);

// Closes the host stream `file`, loads the library, and opens the document that the file holds and
// the notebook's stream in it; the library opens `file` again itself. Returns the notebook's
// stream, or null. In both cases `container` holds what was acquired, for closeContainer.
[[nodiscard]] SSStream* openContainer(Container& container, SSHostServices* services,
                                      SSStream* file);

// Gives back the stream object, the stream, the document and the library, as far as they were
// acquired.
void closeContainer(Container& container, SSHostServices* services);

}  // namespace qps

#endif  // QPSREADER_READER_CONTAINER_H
