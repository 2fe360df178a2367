// SPDX-License-Identifier: MIT
//
// What the interface costs at least: programs that walk the records through the same function
// pointers as the reader does, two reads a record, and do nothing else; or also render each cell's
// text in the straightforward way with std::to_chars, which they know the family for, and copy it
// to a block from the same allocator. They know no styles, no widths, no damage.
#ifndef QPSREADER_BENCH_FLOOR_H
#define QPSREADER_BENCH_FLOOR_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <qpsreader/host_tables.h>
#include "bench/notebooks.h"

namespace qps::bench {

// A value's text is at most this long in every family.
inline constexpr std::size_t kFloorTextBytes = 64;

// The text of a cell record's body, in `area` or in the body.
std::string_view floorText(Family family, const std::uint8_t* body, std::size_t bodyBytes,
                           char (&area)[kFloorTextBytes]);

// Calls `onRecord`(type, body, bodyBytes) for each record from `offset` until it returns false.
template <typename OnRecord>
void walkRecords(SSStream* stream, std::uint32_t offset, OnRecord onRecord) {
  static std::uint8_t body[65'536];
  if (stream->seek(stream, static_cast<std::ptrdiff_t>(offset), SSSeekFromStart) == 0) return;
  std::uint8_t header[4];
  while (stream->read(stream, header, sizeof header) == sizeof header) {
    const unsigned type = header[0] | static_cast<unsigned>(header[1]) << 8;
    const std::size_t bytes = header[2] | static_cast<std::size_t>(header[3]) << 8;
    if (bytes != 0 && stream->read(stream, body, bytes) != bytes) return;
    if (!onRecord(type, body, bytes)) return;
  }
}

constexpr bool isCellRecord(unsigned type) {
  return type >= test::rec::kInteger && type <= test::rec::kLabel;
}

constexpr Family familyOf(const std::uint8_t* body) {
  return static_cast<Family>(((body[4] | body[5] << 8) >> 3) - 1);
}

// The headers of the file, with a seek over each body and nothing else: the two calls that a
// listing makes for a record. How many there are.
std::size_t floorHeaders(SSStream* stream);

// The cells of one worksheet, from its record 202 to its record 203. How many there are.
std::size_t floorItems(SSStream* stream, std::uint32_t offset, SSItemAlloc itemAlloc,
                       void* context);

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_FLOOR_H
