// SPDX-License-Identifier: MIT
#include "reader/record_stream.h"

#include <algorithm>
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

std::string_view BodyView::textAt(std::size_t offset) const {
  if (offset >= bytes_.size()) return {};
  const auto rest = bytes_.subspan(offset);
  const void* zero = std::memchr(rest.data(), 0, rest.size());
  const std::size_t length =
      zero == nullptr
          ? rest.size()
          : static_cast<std::size_t>(static_cast<const std::uint8_t*>(zero) - rest.data());
  return {reinterpret_cast<const char*>(rest.data()), length};
}

template <typename Value>
Value BodyView::valueAt(std::size_t offset) const {
  std::array<std::uint8_t, sizeof(Value)> stored{};
  if (offset < bytes_.size()) {
    std::memcpy(stored.data(), bytes_.data() + offset,
                std::min(stored.size(), bytes_.size() - offset));
  }
  if (swapBytes_) std::reverse(stored.begin(), stored.end());
  Value value;
  std::memcpy(&value, stored.data(), sizeof(value));
  return value;
}

template std::uint32_t BodyView::valueAt<std::uint32_t>(std::size_t) const;
template double BodyView::valueAt<double>(std::size_t) const;

void RecordStream::decodeHeader() {
  recordType = u16From(recordBuffer);
  recordLength = u16From(recordBuffer + 2);
  bodyBytes = 0;
}

bool RecordStream::readHeader() {
  const bool complete =
      stream->read(stream, recordBuffer, kRecordHeaderBytes) == kRecordHeaderBytes;
  if (!complete) {
    constexpr std::uint8_t kEndOfFileHeader[kRecordHeaderBytes] = {1, 0, 0, 0};
    std::memcpy(recordBuffer, kEndOfFileHeader, kRecordHeaderBytes);
  }
  decodeHeader();
  return complete;
}

bool RecordStream::readBody() {
  bodyBytes = 0;
  if (recordLength == 0) return true;
  const std::size_t kept = std::min<std::size_t>(recordLength, kRecordBufferBytes);
  if ((stream->read(stream, recordBuffer, kept) & 0xFFFF) != kept) return false;
  if (kept < recordLength && stream->seek(stream, static_cast<std::ptrdiff_t>(recordLength - kept),
                                          SSSeekFromCurrent) == 0) {
    return false;
  }
  bodyBytes = static_cast<std::uint16_t>(kept);
  return true;
}

bool RecordStream::skipBody() {
  return stream->seek(stream, recordLength, SSSeekFromCurrent) != 0;
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
