// SPDX-License-Identifier: MIT
//
// What the fuzz targets require of the exported operations beside what tests/support/sheet_driver.h
// does: work that the bytes of the file account for, and the same items every time.
#ifndef QPSREADER_FUZZ_SESSION_H
#define QPSREADER_FUZZ_SESSION_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "tests/support/sheet_driver.h"

namespace qps::fuzz {

using namespace qps::test;

inline Bytes copyOf(std::span<const std::uint8_t> input) {
  const auto bytes = std::as_bytes(input);
  return {bytes.begin(), bytes.end()};
}

// How much work one operation may take: so much for each byte of the file, and so much at all.
struct WorkLimit {
  std::uint64_t callsPerByte, calls;
  std::uint64_t bytesPerByte, bytes;
  std::uint64_t poolPerByte, pool;  // bytes outstanding at any time
};

// Opening, listing and reading a plain notebook. A record has at least four bytes: a header, a body
// or a step over it, and what is kept of it; a bitmap of hidden rows keeps up to four ranges a
// byte.
inline constexpr WorkLimit kPlainWork{8, 64, 3, 64, 128, 65536};

// The same through the compound-document library. A hostile document may have its directory and its
// stream both be the whole file. Then each of two names costs one reading of it, and so does each
// of two passes over the stream (or the one of a listing, twice: a step back to a header that lies
// across the end of the stream's buffer fills it anew). The FAT adds 1/128, the mini FAT 1/16 a
// name, and the header, the search for the file's end and the last blocks of the tables some bytes
// at all. The stream asks for its bytes in large pieces, so that the calls are those for blocks.
// The list of runs takes 48 bytes for each mini sector of 64 while it grows, which leaves room for
// the tables in one more byte a byte.
inline constexpr WorkLimit kCompoundWork{8, 128, 5, 4096, 129, 65536};

// What a host is asked for while this lives.
class WorkMeter {
 public:
  WorkMeter(const RecordingHost& host, const WorkLimit& limit)
      : host_(host), limit_(limit), calls_(host.hostCalls()), bytes_(host.bytesRead()) {}

  // Requires that the work so far stays within the limit, and `moreCalls`.
  void check(std::uint64_t moreCalls = 0) const;

 private:
  const RecordingHost& host_;
  const WorkLimit& limit_;
  std::uint64_t calls_, bytes_;
};

// 64-bit FNV-1a, to compare what two readings delivered.
class Digest {
 public:
  void add(std::string_view bytes) {
    for (const char c : bytes)
      value_ = (value_ ^ static_cast<std::uint8_t>(c)) * 0x100000001B3U;
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325U;
};

// A whole visit: lists the worksheets and reads up to `mostItems` of each of the first three of
// them, or, when there are none, of whatever opens at offset 0. Returns the digest of all that
// came; nothing is left behind.
std::uint64_t visitNotebook(RecordingHost& host, std::size_t mostItems, const WorkLimit& limit);

}  // namespace qps::fuzz

#endif  // QPSREADER_FUZZ_SESSION_H
