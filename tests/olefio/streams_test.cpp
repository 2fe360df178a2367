// SPDX-License-Identifier: MIT
//
// Documents of every shape give the bytes that were put into them, in small and large reads and
// after seeks, and reading forward costs the host no more than the file's bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "tests/olefio/library_driver.h"
#include "tests/support/compound_writer.h"

namespace qps::test {
namespace {

struct Shape {
  const char* name;
  CompoundOptions options;
};

const Shape kShapes[] = {
    {"version 3", {}},
    {"version 4", {.version = 4}},
    {"backward", {.sectors = SectorOrder::kBackward, .siblings = SiblingOrder::kList}},
    {"scattered", {.sectors = SectorOrder::kScattered, .siblings = SiblingOrder::kUnordered}},
    {"scattered, version 4", {.version = 4, .sectors = SectorOrder::kScattered}},
    {"DIFAT chain", {.freeSectors = kFreeSectorsForDifatChain}},
    {"scattered DIFAT chain",
     {.sectors = SectorOrder::kScattered, .freeSectors = 2 * kFreeSectorsForDifatChain}},
    {"no mini stream", {.miniStreamCutoff = 0}},
    {"everything in the mini stream", {.version = 4, .miniStreamCutoff = 1 << 20}},
};

// Around every boundary: mini sector, sector of either version, cutoff, the library's buffer.
std::vector<NamedStream> streamsOfManySizes() {
  std::vector<NamedStream> streams;
  for (const std::size_t size : {1u, 63u, 64u, 65u, 511u, 512u, 513u, 4095u, 4096u, 4097u, 8191u,
                                 8192u, 8193u, 20000u, 300000u}) {
    streams.push_back({std::to_string(size) + " bytes", contentsOf(size, 7)});
  }
  for (int i = 0; i < 200; ++i)
    streams.push_back({std::to_string(i) + " filler", contentsOf(9, 8)});
  streams.push_back({"Empty", {}});
  streams.push_back({"Storage/20000 bytes", contentsOf(20000, 9)});
  streams.push_back({"Storage/Inner", contentsOf(5000, 10)});
  return streams;
}

void expectRandomSeeksToMatch(SSStream* stream, const Bytes& original) {
  std::uint32_t random = 1;
  const auto below = [&random](std::size_t bound) {
    random = random * 1664525 + 1013904223;
    return (random >> 8) % bound;
  };
  for (int i = 0; i < 200; ++i) {
    const std::size_t target = below(original.size() + 1);
    if (i % 2 == 0) {
      ASSERT_NE(stream->seek(stream, static_cast<std::ptrdiff_t>(target), SSSeekFromStart), 0);
    } else {
      const auto here = stream->tell(stream);
      ASSERT_NE(stream->seek(stream, static_cast<std::ptrdiff_t>(target) - here, SSSeekFromCurrent),
                0);
    }
    const std::size_t wanted = i % 3 == 0 ? below(2 * original.size()) : below(70);
    Bytes piece(wanted);
    piece.resize(stream->read(stream, piece.data(), wanted));
    const std::size_t from = std::min(target, original.size());
    const std::size_t there = std::min(wanted, original.size() - from);
    ASSERT_TRUE(std::ranges::equal(piece, std::span(original).subspan(from, there)))
        << wanted << " bytes at " << target;
    ASSERT_EQ(stream->tell(stream), static_cast<std::ptrdiff_t>(target + there));
  }
}

TEST(Streams, GiveTheBytesThatWerePutIn) {
  const std::vector<NamedStream> streams = streamsOfManySizes();
  const OLEInterface ole = libraryTable();
  for (const Shape& shape : kShapes) {
    for (const bool seekBeyondEnd : {false, true}) {
      RecordingHost host(writeCompound(shape.options, streams));
      host.seekBeyondEnd = seekBeyondEnd;
      void* container = ole.openContainer(host.stream(), &host.services()->pool);
      ASSERT_NE(container, nullptr) << shape.name;
      for (const NamedStream& original : streams) {
        SCOPED_TRACE(std::string(shape.name) + ": " + original.name);
        const bool isInRoot = original.name.find('/') == std::string::npos;
        const std::string name = original.name.substr(original.name.find('/') + 1);
        if (name == "Inner") {
          EXPECT_EQ(ole.openStream(container, "Inner"), 0) << "in another storage";
        }
        if (!isInRoot) continue;
        ASSERT_NE(ole.openStream(container, name.c_str()), 0);
        SSStream* stream = ole.streamObject(container);
        EXPECT_EQ(readAll(stream, {4, 60}), original.bytes);
        EXPECT_EQ(readAll(ole.streamObject(container), {100000}), original.bytes);
        EXPECT_EQ(readAll(ole.streamObject(container), {4, 5000, 1, 9000}), original.bytes);
        if (original.bytes.size() > 60) expectRandomSeeksToMatch(stream, original.bytes);
      }
      ole.closeContainer(container);
      EXPECT_EQ(host.state(), "clean");
    }
  }
}

TEST(Streams, ReadForwardInFewHostCalls) {
  const Bytes original = contentsOf(1 << 20, 3);
  for (const bool isFragmented : {false, true}) {
    RecordingHost host(
        writeCompound({.sectors = isFragmented ? SectorOrder::kScattered : SectorOrder::kForward},
                      {{"MAIN", original}}));
    const OLEInterface ole = libraryTable();
    void* container = ole.openContainer(host.stream(), &host.services()->pool);
    ASSERT_NE(ole.openStream(container, "MAIN"), 0);
    const std::size_t bytesToOpen = host.bytesRead();
    const std::size_t callsToOpen = host.hostCalls();
    SSStream* stream = ole.streamObject(container);
    // Records of 64 bytes: a header, a step back and forward again over it, and a body.
    for (std::size_t records = 0; records < original.size() / 64; ++records) {
      std::byte piece[60];
      ASSERT_EQ(stream->read(stream, piece, 4), 4u);
      ASSERT_NE(stream->seek(stream, -4, SSSeekFromCurrent), 0);
      ASSERT_NE(stream->seek(stream, 4, SSSeekFromCurrent), 0);
      ASSERT_EQ(stream->read(stream, piece, 60), 60u);
    }
    // Opening reads the FAT: 4 bytes for each sector of 512, and little else.
    EXPECT_LE(bytesToOpen, original.size() / 512 * 4 + 4096);
    EXPECT_EQ(host.bytesRead() - bytesToOpen, original.size());
    const std::size_t reads = original.size() / (isFragmented ? 512 : 8192);
    EXPECT_LE(host.hostCalls() - callsToOpen, 2 * reads);
    // One large read goes to the host as it is, once for each run of sectors.
    const std::size_t runs = isFragmented ? original.size() / 512 : 1;
    const std::size_t readsBefore = host.calls(Step::kRead);
    EXPECT_EQ(readAll(ole.streamObject(container), {original.size()}), original);
    EXPECT_EQ(host.calls(Step::kRead) - readsBefore, runs);
    ole.closeContainer(container);
  }
}

// The directory is the last part of these files, which must be found wherever they end.
TEST(Streams, AreReadFromFilesOfAnyNumberOfSectors) {
  for (std::size_t sectors = 8; sectors < 140; ++sectors) {
    const Bytes original = contentsOf(sectors * 512, 5);
    RecordingHost host(writeCompound({.sectors = SectorOrder::kBackward}, {{"MAIN", original}}));
    ASSERT_EQ(readStream(host, "MAIN").bytes, original) << sectors;
  }
}

TEST(Streams, AreFoundInFewStepsInALargeDirectory) {
  std::vector<NamedStream> streams;
  for (int i = 0; i < 2000; ++i)
    streams.push_back({std::to_string(i * 7), {}});
  RecordingHost host(writeCompound({}, streams));
  const OLEInterface ole = libraryTable();
  void* container = ole.openContainer(host.stream(), &host.services()->pool);
  for (const NamedStream& stream : streams) {
    const std::size_t readsBefore = host.calls(Step::kRead);
    ASSERT_NE(ole.openStream(container, stream.name.c_str()), 0) << stream.name;
    ASSERT_LE(host.calls(Step::kRead) - readsBefore, 11u) << stream.name;
  }
  ole.closeContainer(container);
}

TEST(Streams, AreFoundByNameWithoutRegardToCase) {
  const struct {
    const char* stored;
    const char* asked;
    bool isFound;
  } kRows[] = {
      {"PerfectOffice_MAIN", "PerfectOffice_MAIN", true},
      {"PERFECTOFFICE_main", "PerfectOffice_MAIN", true},
      {"perfectoffice_main", "PERFECTOFFICE_MAIN", true},
      {"PerfectOffice_MAI", "PerfectOffice_MAIN", false},
      {"PerfectOffice_MAINS", "PerfectOffice_MAIN", false},
      {"PerfectOffice-MAIN", "PerfectOffice_MAIN", false},
      {"a[z", "A{Z", false},
      {"\xE0\xFE\xF7", "\xC0\xDE\xF7", true},
      {"\xDF", "\xBF", false},
      {"\xF7", "\xD7", false},
      {"\xFF", "\xDF", false},
      {"A234567890123456789012345678901", "a234567890123456789012345678901", true},
      {"A234567890123456789012345678901", "a2345678901234567890123456789012", false},
      {"MAIN", "", false},
      {"MAIN", "Root Entry", false},
  };
  for (const auto& row : kRows) {
    RecordingHost host(
        writeCompound({}, {{"First", {}}, {row.stored, contentsOf(9, 1)}, {"Z", {}}}));
    const Reading reading = readStream(host, row.asked);
    EXPECT_EQ(reading.found, row.isFound ? Found::kStream : Found::kNoStream)
        << row.stored << " asked for as " << row.asked;
    EXPECT_EQ(reading.bytes.size(), row.isFound ? 9u : 0u);
  }
}

TEST(Streams, SeekWithinTheStream) {
  const struct {
    std::ptrdiff_t from;
    std::ptrdiff_t offset;
    std::int32_t origin;
    std::ptrdiff_t position;  // afterwards; -1: the seek fails, and the position stays
  } kRows[] = {
      {10, 0, SSSeekFromStart, 0},
      {10, 5, SSSeekFromCurrent, 15},
      {10, -10, SSSeekFromCurrent, 0},
      {10, -11, SSSeekFromCurrent, -1},
      {10, -1, SSSeekFromStart, -1},
      {10, PTRDIFF_MIN, SSSeekFromCurrent, -1},
      {10, 5000, SSSeekFromStart, 5000},
      {10, 5001, SSSeekFromStart, -1},
      {10, 4990, SSSeekFromCurrent, 5000},
      {10, 4991, SSSeekFromCurrent, -1},
      {10, PTRDIFF_MAX, SSSeekFromStart, -1},
      {10, PTRDIFF_MAX, SSSeekFromCurrent, -1},
      {10, 0, 2, -1},
      {10, 0, -1, -1},
  };
  const Bytes original = contentsOf(5000, 2);
  RecordingHost host(writeCompound({}, {{"MAIN", original}}));
  const OLEInterface ole = libraryTable();
  void* container = ole.openContainer(host.stream(), &host.services()->pool);
  ASSERT_NE(ole.openStream(container, "MAIN"), 0);
  SSStream* stream = ole.streamObject(container);
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::to_string(row.offset) + " from " + std::to_string(row.origin));
    ASSERT_NE(stream->seek(stream, row.from, SSSeekFromStart), 0);
    EXPECT_EQ(stream->seek(stream, row.offset, row.origin) != 0, row.position >= 0);
    const std::ptrdiff_t position = row.position >= 0 ? row.position : row.from;
    EXPECT_EQ(stream->tell(stream), position);
    std::byte byte;
    const bool isInside = position < 5000;
    EXPECT_EQ(stream->read(stream, &byte, 1), isInside ? 1u : 0u);
    if (isInside) {
      EXPECT_EQ(byte, original[static_cast<std::size_t>(position)]);
    }
  }
  ole.closeContainer(container);
}

}  // namespace
}  // namespace qps::test
