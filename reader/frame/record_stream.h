// SPDX-License-Identifier: MIT
//
// The record stream: from a stream's bytes to records and values.
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

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include <qpsreader/host_tables.h>
#include "reader/frame/record_types.h"
#include "reader/frame/short_text.h"

namespace qps {

inline constexpr std::size_t kRecordHeaderBytes = 4;
inline constexpr std::size_t kRecordBufferBytes = 5120;

// Zero bytes that follow a body in the record buffer. No cell record has a fixed field beyond so
// many bytes: reading one takes no test of the body's length.
inline constexpr std::size_t kBodyPadding = 16;

inline std::uint16_t u16From(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline std::uint32_t u32From(const std::uint8_t* bytes) {
  return u16From(bytes) | std::uint32_t{u16From(bytes + 2)} << 16;
}

// A record's body: bytes beyond its end read as 0, and a text ends at the end of the body when no
// zero byte ends it before.
class BodyView {
 public:
  // kBodyPadding zero bytes follow `bytes`.
  BodyView(std::span<const std::uint8_t> bytes, bool swapBytes)
      : bytes_(bytes), swapBytes_(swapBytes) {}

  std::size_t size() const { return bytes_.size(); }
  std::span<const std::uint8_t> bytes() const { return bytes_; }

  std::uint8_t u8At(std::size_t offset) const {
    return isThere(offset, 1) ? bytes_.data()[offset] : std::uint8_t{0};
  }
  std::uint16_t u16At(std::size_t offset) const {
    return static_cast<std::uint16_t>(u8At(offset) | u8At(offset + 1) << 8);
  }
  std::uint32_t u32At(std::size_t offset) const { return valueAt<std::uint32_t>(offset); }
  double doubleAt(std::size_t offset) const { return valueAt<double>(offset); }

  // From `offset` up to the first zero byte; empty when the body ends before.
  std::string_view textAt(std::size_t offset) const {
    if (offset >= size()) return {};
    return reinterpret_cast<const char*>(bytes_.data() + offset);
  }

 private:
  // Whether `count` bytes lie within the body and its padding; known when the code is compiled for
  // the fields that do whatever the body's size.
  bool isThere(std::size_t offset, std::size_t count) const {
    return offset + count <= kBodyPadding || offset + count <= size();
  }

  // A value of more than two bytes: the file's bytes in their order, or reversed on a big-endian
  // host.
  template <typename Value>
  Value valueAt(std::size_t offset) const {
    std::array<std::uint8_t, sizeof(Value)> stored;
    if (isThere(offset, sizeof(Value))) {
      std::memcpy(stored.data(), bytes_.data() + offset, sizeof(Value));
    } else {
      for (std::uint8_t& byte : stored)
        byte = u8At(offset++);
    }
    if (swapBytes_) std::reverse(stored.begin(), stored.end());
    return std::bit_cast<Value>(stored);
  }

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
  alignas(16) std::uint8_t recordBuffer[kRecordBufferBytes + kBodyPadding];

  RecordType type() const { return static_cast<RecordType>(recordType); }

  // False when the stream ended before a full header; the current record is then of type
  // kEndOfFile, with no body.
  [[nodiscard]] bool readHeader() {
    if (stream->read(stream, recordBuffer, kRecordHeaderBytes) != kRecordHeaderBytes) [[unlikely]] {
      failHeader();
      return false;
    }
    decodeHeader();
    return true;
  }

  // False when the stream holds less than the header states, or the rest of a long body cannot be
  // passed over.
  [[nodiscard]] bool readBody() {
    if (recordLength - 1U >= kRecordBufferBytes) [[unlikely]]
      return readUnusualBody();
    const std::uint16_t taken = readToBuffer(recordLength);
    if (taken != recordLength) [[unlikely]] {
      keepBody(0);
      return false;
    }
    keepBody(recordLength);
    return true;
  }

  // Passes over the body without reading it. False when the seek fails.
  [[nodiscard]] bool skipBody() {
    return stream->seek(stream, recordLength, SSSeekFromCurrent) != 0;
  }

  // Moves to a position from the start of the stream. False when the seek fails.
  [[nodiscard]] bool seekTo(std::uint32_t offset);

  // Takes the first four bytes of recordBuffer as the current header.
  void decodeHeader() {
    const std::uint32_t header = u32From(recordBuffer);
    recordType = static_cast<std::uint16_t>(header);
    recordLength = static_cast<std::uint16_t>(header >> 16);
  }

  BodyView body() const { return {std::span(recordBuffer, bodyBytes), swapBytes != 0}; }

 private:
  void failHeader();
  bool readUnusualBody();  // empty, or longer than the buffer

  // The low 16 bits of what the stream says it read are what counts.
  std::uint16_t readToBuffer(std::uint16_t bytes) {
    return static_cast<std::uint16_t>(stream->read(stream, recordBuffer, bytes));
  }

  void keepBody(std::uint16_t bytes) {
    bodyBytes = bytes;
    std::memset(recordBuffer + bytes, 0, kBodyPadding);
  }
};

// Finds the host's byte order by the bytes of a double. False when they are in neither order.
[[nodiscard]] bool probeByteOrder(std::uint32_t& swapBytes);

}  // namespace qps

#endif  // QPSREADER_READER_RECORD_STREAM_H
