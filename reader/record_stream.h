// SPDX-License-Identifier: MIT
//
// The record stream: the only code that turns a stream's bytes into records and values.
//
// A notebook is a sequence of records without padding, little-endian throughout:
//
//   offset  size    field
//   0       2       record type
//   2       2       length of the body in bytes
//   4       length  body
//
// A body is kept up to 5120 bytes; what a longer one has beyond them is passed over.
#ifndef QPSREADER_READER_RECORD_STREAM_H
#define QPSREADER_READER_RECORD_STREAM_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "reader/host_tables.h"
#include "reader/record_types.h"

namespace qps {

inline constexpr std::size_t kRecordHeaderBytes = 4;
inline constexpr std::size_t kRecordBufferBytes = 5120;

inline std::uint16_t u16From(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

// A record's body, and the only way to its fields: bytes beyond its end read as 0, and a text ends
// at the end of the body when no zero byte ends it before.
class BodyView {
 public:
  BodyView(std::span<const std::uint8_t> bytes, bool swapBytes)
      : bytes_(bytes), swapBytes_(swapBytes) {}

  std::size_t size() const { return bytes_.size(); }
  std::span<const std::uint8_t> bytes() const { return bytes_; }

  std::uint8_t u8At(std::size_t offset) const {
    return offset < bytes_.size() ? bytes_[offset] : std::uint8_t{0};
  }
  std::uint16_t u16At(std::size_t offset) const {
    return static_cast<std::uint16_t>(u8At(offset) | u8At(offset + 1) << 8);
  }
  std::uint32_t u32At(std::size_t offset) const { return valueAt<std::uint32_t>(offset); }
  double doubleAt(std::size_t offset) const { return valueAt<double>(offset); }

  // From `offset` up to the first zero byte; empty when the body ends before.
  std::string_view textAt(std::size_t offset) const;

 private:
  // A value of more than two bytes: the file's bytes in their order, or reversed on a big-endian
  // host.
  template <typename Value>
  Value valueAt(std::size_t offset) const;

  std::span<const std::uint8_t> bytes_;
  bool swapBytes_;
};

// Reads one stream record by record. The current record's type and length stand here after
// readHeader, its body after readBody until the next header is read.
struct RecordStream {
  SSStream* stream;
  std::uint32_t swapBytes;     // nonzero on a big-endian host
  std::uint16_t recordType;    // of the current record
  std::uint16_t recordLength;  // its body's length as the header states it
  std::uint16_t bodyBytes;     // bytes of the body that were kept
  std::uint8_t recordBuffer[kRecordBufferBytes];

  RecordType type() const { return static_cast<RecordType>(recordType); }

  // False when the stream ended before a full header; the current record is then of type
  // kEndOfFile, with no body.
  [[nodiscard]] bool readHeader();

  // False when the stream holds less than the header states, or the rest of a long body cannot be
  // passed over.
  [[nodiscard]] bool readBody();

  // Passes over the body without reading it. False when the seek fails.
  [[nodiscard]] bool skipBody();

  // Moves to a position from the start of the stream. False when the seek fails.
  [[nodiscard]] bool seekTo(std::uint32_t offset);

  // Takes the first four bytes of recordBuffer as the current header.
  void decodeHeader();

  BodyView body() const { return {std::span(recordBuffer, bodyBytes), swapBytes != 0}; }
};

// Finds the host's byte order by the bytes of a double. False when they are in neither order.
[[nodiscard]] bool probeByteOrder(std::uint32_t& swapBytes);

}  // namespace qps

#endif  // QPSREADER_READER_RECORD_STREAM_H
