// SPDX-License-Identifier: MIT
//
// The record stream of a notebook, plain or in a compound document, and a walk over its record
// headers: what the host needs in order to say why the reader said no.
#ifndef QPSREADER_HOST_RECORD_SOURCE_HPP
#define QPSREADER_HOST_RECORD_SOURCE_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include <qpsreader/host_tables.h>
#include <qpsreader/ole_interface.h>
#include "host/host_services.hpp"

namespace qps {

// Opens `file` as the reader does: its own bytes, or the notebook's stream when it begins like a
// compound document. Closes whatever it opened. Both arguments are borrowed and must outlive it.
class RecordSource {
 public:
  enum class Status : std::uint8_t {
    kOpen,
    kUnreadable,       // the file's stream could not be opened
    kMemoryLimit,      // a compound document, and the pool had no room to open it
    kLibraryMissing,   // a compound document, and no library for it
    kBrokenContainer,  // begins like a compound document but cannot be opened as one
    kOtherContainer,   // a compound document without a notebook's stream
  };

  RecordSource(SSStream& file, HostServices& services);
  RecordSource(const RecordSource&) = delete;
  RecordSource& operator=(const RecordSource&) = delete;
  ~RecordSource();

  Status status() const { return status_; }

  // The records, from the first one; only when status() is kOpen.
  SSStream& records() const { return *records_; }

  // Back to the first record; false when the stream refuses.
  bool rewind() const { return records_->seek(records_, 0, SSSeekFromStart) != 0; }

  // The name of the stream in the compound document; "" for a plain file.
  const char* streamName() const { return streamName_; }

  // Whether the compound document has a stream with this name; ends the use of records().
  bool hasStream(const char* name);

 private:
  Status openContainer();

  SSStream& file_;
  HostServices& services_;
  OLEInterface ole_{};
  void* library_ = nullptr;
  void* container_ = nullptr;
  bool fileOpen_ = false;
  SSStream* records_ = nullptr;
  const char* streamName_ = "";
  Status status_;
};

// A header: type and length of the body (16 bits each, little-endian), and where it stands.
struct RecordHeader {
  std::uint16_t type = 0;
  std::uint16_t bodyBytes = 0;
  std::uint64_t offset = 0;
};

// Goes from header to header, through blocks of its own: a walk over a compound document's stream
// would otherwise cost two calls into the library for each record. Bounded by the stream: each step
// moves on by four bytes or more.
class RecordWalk {
 public:
  enum class Step : std::uint8_t {
    kRecord,
    kEnd,       // the end record
    kCutShort,  // no further header, and no end record before
    kOverrun,   // the body of record() runs past the end
  };

  // `offset` is the stream's position: that of a header.
  RecordWalk(SSStream& stream, std::uint64_t offset) : stream_(stream), nextOffset_(offset) {}

  Step next();

  const RecordHeader& record() const { return record_; }

  // Where the next header stands: after the body of record().
  std::uint64_t nextOffset() const { return nextOffset_; }

  // The first value of the body, 16 bits; 0 when the body does not hold one.
  std::uint16_t firstValue();

 private:
  // Makes the next `count` bytes stand in the block, if there are as many.
  bool have(std::size_t count) { return end_ - cursor_ >= count || refill(count); }
  bool refill(std::size_t count);

  SSStream& stream_;
  RecordHeader record_;
  std::uint64_t nextOffset_;
  std::array<unsigned char, std::size_t{16} << 10> block_;
  std::size_t cursor_ = 0;  // in block_: after the header of record()
  std::size_t end_ = 0;     // of the bytes in block_
};

}  // namespace qps

#endif  // QPSREADER_HOST_RECORD_SOURCE_HPP
