// SPDX-License-Identifier: MIT
//
// Drives the exported operations over a LeanHost and checks what they promise: well-formed items in
// the order of their kinds, and work that the bytes of the file account for.
#ifndef QPSREADER_FUZZ_SESSION_H
#define QPSREADER_FUZZ_SESSION_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <qpsreader/qps_reader.h>
#include <qpsreader/ss_item.h>
#include "fuzz/lean_host.h"

namespace qps::fuzz {

// How much work one operation may take: so much for each byte of the file, and so much at all.
struct WorkLimit {
  uint64_t callsPerByte, calls;
  uint64_t bytesPerByte, bytes;
  uint64_t poolPerByte, pool;  // bytes outstanding at any time
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

// Requires that the work since `before` stays within the limit.
void requireWork(const LeanHost& host, const Work& before, const WorkLimit& limit);

// 64-bit FNV-1a, to compare what two readings delivered.
class Digest {
 public:
  void add(std::string_view bytes) {
    for (const char c : bytes)
      value_ = (value_ ^ static_cast<uint8_t>(c)) * 0x100000001B3U;
  }
  uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325U;
};

// One item with its text taken out. `text` is null when there is none.
struct TakenItem {
  SSItem item;
  char* text;
};

// Takes items one by one. A row height record of ten bytes stands for up to 65536 items, so callers
// bound how many they take.
class ItemTaker {
 public:
  ItemTaker(LeanHost& host, QPSSheet* sheet) : host_(&host), sheet_(sheet) {}

  // Checks the item and gives its text back to the host after adding it to `digest`. False at the
  // end.
  bool take(Digest& digest);

 private:
  LeanHost* host_;
  QPSSheet* sheet_;
  uint32_t lastKind_ = 0;
};

// Opens a worksheet, takes up to `mostItems` of its items and closes it. Adds everything that came
// to `digest`.
void readSheet(LeanHost& host, QPSReader* reader, uint32_t offset, uint32_t mostItems,
               const WorkLimit& limit, Digest& digest);

// A whole visit: lists the worksheets and reads the first three of them, or, when there are none,
// whatever opens at offset 0. Returns the digest of all that came.
uint64_t visitNotebook(LeanHost& host, uint32_t mostItems, const WorkLimit& limit);

}  // namespace qps::fuzz

#endif  // QPSREADER_FUZZ_SESSION_H
