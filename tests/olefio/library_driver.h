// SPDX-License-Identifier: MIT
//
// The library as its callers see it: its table, over the recording host.
#ifndef QPSREADER_TESTS_OLEFIO_LIBRARY_DRIVER_H
#define QPSREADER_TESTS_OLEFIO_LIBRARY_DRIVER_H

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

#include "olefio/get_ole_interface.h"
#include "tests/support/recording_host.h"

namespace qps::test {

inline OLEInterface libraryTable() {
  OLEInterface table;
  GetOLEInterface(&table);
  return table;
}

// Bytes that differ from place to place and from seed to seed.
inline Bytes contentsOf(std::size_t count, std::uint32_t seed) {
  Bytes bytes(count);
  for (std::byte& byte : bytes) {
    seed = seed * 1664525 + 1013904223;
    byte = static_cast<std::byte>(seed >> 24);
  }
  return bytes;
}

inline Bytes readAll(SSStream* stream, std::vector<std::size_t> pieces) {
  Bytes bytes;
  for (std::size_t i = 0;; ++i) {
    const std::size_t wanted = pieces[i % pieces.size()];
    const std::size_t before = bytes.size();
    bytes.resize(before + wanted);
    bytes.resize(before + stream->read(stream, bytes.data() + before, wanted));
    if (bytes.size() < before + wanted) return bytes;
  }
}

enum class Found : unsigned char { kNoDocument, kNoStream, kStream };

struct Reading {
  Found found = Found::kNoDocument;
  Bytes bytes;
};

// Opens the host's file, reads the stream with this name and closes everything again, as the reader
// does it.
inline Reading readStream(RecordingHost& host, const char* name) {
  const OLEInterface ole = libraryTable();
  Reading reading;
  void* container = ole.openContainer(host.stream(), &host.services()->pool);
  if (container == nullptr) return reading;
  reading.found = Found::kNoStream;
  if (ole.openStream(container, name) != 0) {
    reading.found = Found::kStream;
    SSStream* stream = ole.streamObject(container);
    reading.bytes = readAll(stream, {4, 1000});
    stream->close(stream);
    ole.releaseStreamObject(container);
    ole.closeStream(container, name);
  }
  ole.closeContainer(container);
  return reading;
}

}  // namespace qps::test

#endif  // QPSREADER_TESTS_OLEFIO_LIBRARY_DRIVER_H
