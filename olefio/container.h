// SPDX-License-Identifier: MIT
//
// An open compound document: the file, its tables, and the one stream that may be open in it.
#ifndef QPSREADER_OLEFIO_CONTAINER_H
#define QPSREADER_OLEFIO_CONTAINER_H

#include <qpsreader/host_tables.h>
#include "olefio/directory.h"
#include "olefio/entry_name.h"
#include "olefio/extents.h"
#include "olefio/header.h"
#include "olefio/host_file.h"
#include "olefio/sector_space.h"
#include "olefio/stream.h"

namespace qps::ole {

class Container {
 public:
  // Opens `file` and the document in it. Null when that fails; `file` is then closed again. The
  // caller closes a container with close().
  static Container* open(SSStream& file, SSMemoryPool& pool);
  static void close(Container* container);

  // Used by open() and close() only.
  Container(HostFile file, const Header& header, SSMemoryPool& pool);
  Container(const Container&) = delete;
  Container& operator=(const Container&) = delete;
  ~Container() = default;

  // Closes the open stream and opens the one with this name. False when there is none, when none of
  // the bytes that it claims can be found, or when the pool has no block.
  bool openStream(const char* name);
  void closeStream(const char* name);

  // The open stream at its first byte; null when none is open.
  SSStream* streamObject();
  void releaseStreamObject();

 private:
  bool load();
  bool locate(const DirectoryEntry& entry, Extents& bytes);
  bool locateInMiniStream(const DirectoryEntry& entry, Extents& bytes);

  SSMemoryPool& pool_;
  HostFile file_;
  Header header_;
  SectorSpace sectors_;
  Directory directory_;
  Stream stream_;
  EntryName openName_;  // empty when no stream is open
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_CONTAINER_H
