// SPDX-License-Identifier: MIT
//
// What is left of damaged records: the stretches that can be followed, up to the damage and again
// from the next worksheet on. A record is followed when it can be one of a notebook: a misread
// header mostly has a type that no record has.
//
// Linear in the bytes, whatever they are, and at most kMostPieces are kept.
#ifndef QPSREADER_HOST_SALVAGE_HPP
#define QPSREADER_HOST_SALVAGE_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/record_source.hpp"

namespace qps {

constexpr std::size_t kMostPieces = 256;  // a notebook has at most 256 worksheets

// From `begin` to before `end`, in bytes from the start of the record stream.
struct Stretch {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

// Whole records, and the worksheet that ends with them too early, by its first byte.
struct Piece : Stretch {
  std::optional<std::uint64_t> cutSheet = {};
};

struct Salvage {
  std::vector<Piece> pieces;  // in order
  std::vector<Stretch> lost;  // what lies between and behind them

  // The bytes of the pieces with an end record of a worksheet behind each, and the end record.
  std::size_t repairedBytes() const;

  // Writes that many bytes.
  void repair(std::span<const std::byte> records, std::byte* repaired) const;

  // A byte's place among the repaired ones, and back. The byte is in a piece.
  std::uint32_t repairedOffset(std::uint32_t offset) const;
  std::uint32_t originalOffset(std::uint32_t repaired) const;

  bool isCut(std::uint32_t sheetOffset) const;

  // "bytes 400 to 911, 1300 to 1410 are lost"; "" when nothing is.
  std::string lostBytes() const;
};

// Whether a notebook can have a record of this type and length, as far as that is known.
bool isPlausible(const RecordHeader& record);

// Whether each record can be one of a notebook, up to the end record. One walk over the headers;
// the stream stands at the first.
bool isWholeNotebook(SSStream& records);

// Goes through the records of a notebook that is not whole.
Salvage salvage(std::span<const std::byte> records);

}  // namespace qps

#endif  // QPSREADER_HOST_SALVAGE_HPP
