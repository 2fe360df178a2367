// SPDX-License-Identifier: MIT
//
// The table: each slot leads to the container that the handle stands for.
#include "olefio/get_ole_interface.h"

#include "olefio/container.h"

using qps::ole::Container;

namespace {

Container& containerOf(void* handle) {
  return *static_cast<Container*>(handle);
}

}  // namespace

void GetOLEInterface(OLEInterface* table) {
  *table = {};
  table->openContainer = [](SSStream* file, SSMemoryPool* pool) -> void* {
    return Container::open(*file, *pool);
  };
  table->closeContainer = [](void* handle) { Container::close(&containerOf(handle)); };
  table->openStream = [](void* handle, const char* name) -> std::int32_t {
    return containerOf(handle).openStream(name) ? 1 : 0;
  };
  table->closeStream = [](void* handle, const char* name) {
    containerOf(handle).closeStream(name);
  };
  table->streamObject = [](void* handle) -> SSStream* {
    return containerOf(handle).streamObject();
  };
  table->releaseStreamObject = [](void* handle) { containerOf(handle).releaseStreamObject(); };
}
