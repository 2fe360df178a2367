// SPDX-License-Identifier: MIT
//
// extract_stream LIBRARY FILE NAME: writes a stream of a compound document to the standard output,
// through the table of the zbolefio.dll at that path.
#include <dlfcn.h>

#include <cstdio>
#include <vector>

#include <qpsreader/ole_interface.h>
#include "host/file.hpp"
#include "host/file_stream.hpp"
#include "host/heap_pool.hpp"

namespace {

bool writeAll(SSStream* stream) {
  std::vector<char> block(1 << 16);
  std::size_t bytes = 0;
  while ((bytes = stream->read(stream, block.data(), block.size())) != 0) {
    if (std::fwrite(block.data(), 1, bytes, stdout) != bytes) return false;
  }
  return std::fflush(stdout) == 0;
}

bool extract(const OLEInterface& ole, SSStream* file, SSMemoryPool* pool, const char* name) {
  void* container = ole.openContainer(file, pool);
  if (container == nullptr) return false;
  const bool isWritten =
      ole.openStream(container, name) != 0 && writeAll(ole.streamObject(container));
  ole.closeContainer(container);
  return isWritten;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: extract_stream LIBRARY FILE NAME\n", stderr);
    return 2;
  }
  void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  void* symbol = library == nullptr ? nullptr : dlsym(library, OLE_ENTRY_POINT);
  if (symbol == nullptr) {
    std::fprintf(stderr, "extract_stream: %s\n", dlerror());
    return 1;
  }
  OLEInterface ole;
  reinterpret_cast<GetOLEInterfaceFunction>(symbol)(&ole);

  const auto file = qps::File::open(argv[2]);
  qps::HeapPool heap;
  SSMemoryPool pool = heap.table();
  bool isExtracted = false;
  if (file) {
    qps::FileStream stream(**file);
    isExtracted = extract(ole, &stream, &pool, argv[3]) && heap.blocksInUse() == 0;
  }
  dlclose(library);
  if (!isExtracted) std::fprintf(stderr, "extract_stream: no %s in %s\n", argv[3], argv[2]);
  return isExtracted ? 0 : 1;
}
