// SPDX-License-Identifier: MIT
//
// The services table that the reader works with, filled for a real platform: a heap pool, the
// library loader, and the conversion of ASCII letters.
#ifndef QPSREADER_HOST_HOST_SERVICES_HPP
#define QPSREADER_HOST_HOST_SERVICES_HPP

#include <string>

#include <qpsreader/host_tables.h>
#include "host/heap_pool.hpp"

namespace qps {

// The table itself, to be handed to the reader by its address; it stays in place. The pool is
// borrowed and must outlive it.
class HostServices : public SSHostServices {
 public:
  explicit HostServices(HeapPool& heapPool);
  HostServices(const HostServices&) = delete;
  HostServices& operator=(const HostServices&) = delete;
  ~HostServices();

  const HeapPool& heapPool() const { return heapPool_; }

  // Whether a library was asked for and could not be loaded.
  bool libraryMissing() const { return libraryMissing_; }

 private:
  void* load(const char* name);
  void unload(void* library);

  HeapPool& heapPool_;

  // The first library stays loaded as long as the table, so that a notebook of many worksheets does
  // not load it anew for each.
  void* library_ = nullptr;
  std::string libraryName_;
  bool libraryMissing_ = false;
};

}  // namespace qps

#endif  // QPSREADER_HOST_HOST_SERVICES_HPP
