// SPDX-License-Identifier: MIT
#include "reader/frame/record_stream.h"

#include <array>
#include <cstring>
#include <limits>

namespace qps {

namespace {

// 123.321, a double whose eight bytes all differ, as each byte order stores it.
constexpr double kProbeValue = 123.321;
constexpr std::array<std::uint8_t, 8> kProbeLittleEndian{0x06, 0x81, 0x95, 0x43,
                                                         0x8B, 0xD4, 0x5E, 0x40};
constexpr std::array<std::uint8_t, 8> kProbeBigEndian{0x40, 0x5E, 0xD4, 0x8B,
                                                      0x43, 0x95, 0x81, 0x06};

}  // namespace

void RecordStream::failHeader() {
  constexpr std::uint8_t kEndOfFileHeader[kRecordHeaderBytes] = {1, 0, 0, 0};
  std::memcpy(recordBuffer, kEndOfFileHeader, kRecordHeaderBytes);
  decodeHeader();
}

bool RecordStream::readUnusualBody() {
  if (recordLength == 0) {
    keepBody(0);
    return true;
  }
  const std::ptrdiff_t rest = recordLength - static_cast<std::ptrdiff_t>(kRecordBufferBytes);
  const bool complete = readToBuffer(kRecordBufferBytes) == kRecordBufferBytes &&
                        stream->seek(stream, rest, SSSeekFromCurrent) != 0;
  keepBody(complete ? kRecordBufferBytes : 0);
  return complete;
}

bool RecordStream::seekTo(std::uint32_t offset) {
  if constexpr (sizeof(std::ptrdiff_t) == sizeof(std::uint32_t)) {
    if (offset > static_cast<std::uint32_t>(std::numeric_limits<std::ptrdiff_t>::max())) {
      return false;
    }
  }
  return stream->seek(stream, static_cast<std::ptrdiff_t>(offset), SSSeekFromStart) != 0;
}

bool probeByteOrder(std::uint32_t& swapBytes) {
  std::array<std::uint8_t, sizeof(double)> bytes;
  std::memcpy(bytes.data(), &kProbeValue, sizeof(kProbeValue));
  if (bytes != kProbeLittleEndian && bytes != kProbeBigEndian) return false;
  swapBytes = bytes == kProbeBigEndian ? 1 : 0;
  return true;
}

}  // namespace qps
