// SPDX-License-Identifier: MIT
//
// A compound-document library whose container holds what the test says, and whose every step can
// fail. The host is the container handle.
#include <utility>

#include "tests/support/recording_host.h"

namespace qps::test {

struct FakeLibrary {
  static RecordingHost& of(void* container) { return *static_cast<RecordingHost*>(container); }

  static void* openContainer(SSStream* file, SSMemoryPool* pool) {
    RecordingHost& host = static_cast<RecordingStream*>(file)->host();
    host.note("ole ", "openContainer");
    require(pool == &host.services_.pool && !host.fake_.isOpen,
            "one container, of the host's pool");
    if (file->open(file) == 0) return nullptr;
    if (host.faultAt(Step::kOpenContainer)) {
      file->close(file);
      return nullptr;
    }
    host.fake_.isOpen = true;
    return &host;
  }

  static std::int32_t openStream(void* container, const char* name) {
    RecordingHost& host = of(container);
    host.note("ole ", "openStream", name);
    if (host.faultAt(Step::kOpenStream) || !host.fake_.streams.contains(name)) return 0;
    host.fake_.openStream = name;
    return 3;
  }

  static SSStream* streamObject(void* container) {
    RecordingHost& host = of(container);
    host.note("ole ", "streamObject");
    host.fake_.objectTaken = true;
    const auto found = host.fake_.streams.find(host.fake_.openStream);
    if (host.faultAt(Step::kStreamObject) || found == host.fake_.streams.end()) return nullptr;
    host.fake_.inner = std::make_unique<RecordingStream>(host, "inner ", found->second, true);
    return host.fake_.inner.get();
  }

  static void releaseStreamObject(void* container) {
    RecordingHost& host = of(container);
    host.note("ole ", "releaseStreamObject");
    require(std::exchange(host.fake_.objectTaken, false), "gives back an object that it took");
    host.fake_.inner.reset();
  }

  static void closeStream(void* container, const char* name) {
    RecordingHost& host = of(container);
    host.note("ole ", "closeStream", name);
    require(!host.fake_.openStream.empty() && host.fake_.openStream == name,
            "closes the stream that is open");
    host.fake_.openStream.clear();
  }

  static void closeContainer(void* container) {
    RecordingHost& host = of(container);
    host.note("ole ", "closeContainer");
    require(std::exchange(host.fake_.isOpen, false), "closes an open container");
    host.file_.close(&host.file_);
  }

  static void fill(OLEInterface* table) {
    *table = {};
    table->openContainer = openContainer;
    table->openStream = openStream;
    table->streamObject = streamObject;
    table->releaseStreamObject = releaseStreamObject;
    table->closeStream = closeStream;
    table->closeContainer = closeContainer;
  }
};

void RecordingHost::useFakeContainer(std::map<std::string, Bytes, std::less<>> streams) {
  fake_.streams = std::move(streams);
  oleEntryPoint = FakeLibrary::fill;
}

}  // namespace qps::test
