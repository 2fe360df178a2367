// SPDX-License-Identifier: MIT
//
// The services table that the reader works with, filled for a real platform: a heap pool, the
// library loader, and the conversion of ASCII letters.
#ifndef QPSREADER_HOST_HOST_SERVICES_HPP
#define QPSREADER_HOST_HOST_SERVICES_HPP

#include <filesystem>
#include <string>

#include <qpsreader/host_tables.h>
#include "host/heap_pool.hpp"

namespace qps {

// The table itself, to be handed to the reader by its address; it stays in place. The pool is
// borrowed and must outlive it.
class HostServices : public SSHostServices {
 public:
  // `libraryFolder` is where the loader looks first (library_loader.hpp), an absolute path or
  // empty.
  explicit HostServices(HeapPool& heapPool, std::filesystem::path libraryFolder = {});
  HostServices(const HostServices&) = delete;
  HostServices& operator=(const HostServices&) = delete;
  ~HostServices();

  const HeapPool& heapPool() const { return heapPool_; }

 private:
  void* load(const char* name);
  void unload(void* library);

  HeapPool& heapPool_;
  std::filesystem::path libraryFolder_;

  // The first library stays loaded as long as the table, so that a notebook of many worksheets does
  // not load it anew for each.
  void* library_ = nullptr;
  std::string libraryName_;
};

}  // namespace qps

#endif  // QPSREADER_HOST_HOST_SERVICES_HPP
