// SPDX-License-Identifier: MIT
//
// The two streams against a model of what a stream is: bytes and a position.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "host/file.hpp"
#include "host/file_stream.hpp"
#include "host/memory_stream.hpp"
#include "tests/host/temporary_folder.h"

namespace qps::test {
namespace {

using Bytes = std::vector<std::byte>;

Bytes randomBytes(std::size_t count) {
  std::mt19937 random(1);
  Bytes bytes(count);
  for (std::byte& byte : bytes)
    byte = static_cast<std::byte>(random());
  return bytes;
}

std::unique_ptr<File> openFile(const std::filesystem::path& path) {
  auto file = File::open(path);
  EXPECT_TRUE(file);
  return file ? *std::move(file) : nullptr;
}

// Reads of record-like and of large sizes, and seeks to and around every interesting bound.
void compareWithModel(SSStream& stream, const Bytes& bytes, unsigned seed) {
  std::mt19937 random(seed);
  const auto size = static_cast<std::ptrdiff_t>(bytes.size());
  const std::ptrdiff_t steps[] = {0,    1,     3,      4,      5,    20,      511,
                                  4096, 65535, 262144, 300000, size, size + 1};
  const auto pick = [&] { return steps[random() % std::size(steps)]; };
  std::ptrdiff_t at = 0;
  std::vector<std::byte> buffer(bytes.size() + 2);
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    if (random() % 3 != 0) {
      const std::ptrdiff_t count = random() % 4 != 0 ? steps[random() % 6] : pick();
      const std::size_t got = stream.read(&stream, buffer.data(), static_cast<std::size_t>(count));
      ASSERT_EQ(got, static_cast<std::size_t>(std::min(count, size - at)));
      ASSERT_TRUE(got == 0 || std::memcmp(buffer.data(), bytes.data() + at, got) == 0);
      at += static_cast<std::ptrdiff_t>(got);
    } else {
      const bool relative = random() % 2 != 0;
      const std::ptrdiff_t offset = (random() % 3 == 0 ? -1 : 1) * pick();
      const std::ptrdiff_t target = relative ? at + offset : offset;
      const bool possible = target >= 0 && target <= size;
      ASSERT_EQ(stream.seek(&stream, offset, relative ? SSSeekFromCurrent : SSSeekFromStart) != 0,
                possible);
      if (possible) at = target;
    }
    ASSERT_EQ(stream.tell(&stream), at);
  }
}

TEST(Streams, BehaveLikeBytesWithAPosition) {
  const TemporaryFolder folder;
  for (const std::size_t size : {0u, 1u, 4u, 4095u, 4096u, 4097u, 262144u, 700001u}) {
    SCOPED_TRACE("size " + std::to_string(size));
    const Bytes bytes = randomBytes(size);
    const auto file = openFile(folder.write("bytes", bytes));
    MemoryStream fromMemory(bytes);
    FileStream fromFile(*file);
    for (SSStream* stream :
         {static_cast<SSStream*>(&fromMemory), static_cast<SSStream*>(&fromFile)}) {
      for (unsigned seed = 1; seed <= 2; ++seed) {  // the second time it is opened again
        ASSERT_NE(stream->open(stream), 0);
        compareWithModel(*stream, bytes, seed);
        stream->close(stream);
      }
    }
  }
}

TEST(Streams, RefuseOffsetsThatNoFileReaches) {
  const TemporaryFolder folder;
  const Bytes bytes = randomBytes(10);
  const auto file = openFile(folder.write("bytes", bytes));
  MemoryStream fromMemory(bytes);
  FileStream fromFile(*file);
  for (SSStream* stream :
       {static_cast<SSStream*>(&fromMemory), static_cast<SSStream*>(&fromFile)}) {
    ASSERT_NE(stream->open(stream), 0);
    ASSERT_NE(stream->seek(stream, 5, SSSeekFromStart), 0);
    for (const std::ptrdiff_t far : {PTRDIFF_MAX, PTRDIFF_MIN}) {
      EXPECT_EQ(stream->seek(stream, far, SSSeekFromStart), 0);
      EXPECT_EQ(stream->seek(stream, far, SSSeekFromCurrent), 0);
      EXPECT_EQ(stream->tell(stream), 5);
    }
    stream->close(stream);
  }
}

TEST(FileStream, ReadsInBlocksAndSurvivesAFileThatShrinksOrGrows) {
  const TemporaryFolder folder;
  const Bytes bytes = randomBytes(100000);
  const auto path = folder.write("bytes", bytes);
  const auto file = openFile(path);
  FileStream stream(*file);
  std::byte buffer[100000];

  ASSERT_NE(stream.open(&stream), 0);
  EXPECT_EQ(stream.read(&stream, buffer, 4), 4u);
  std::filesystem::resize_file(path, 10);
  EXPECT_EQ(stream.read(&stream, buffer, 20), 20u) << "the first block is in memory";
  EXPECT_EQ(std::memcmp(buffer, bytes.data() + 4, 20), 0);
  EXPECT_LT(stream.read(&stream, buffer, sizeof buffer), sizeof buffer - 24);
  EXPECT_EQ(stream.read(&stream, buffer, 4), 0u);
  EXPECT_EQ(file->readError(), "") << "an early end is no error of the system";

  std::filesystem::resize_file(path, 200000);
  ASSERT_NE(stream.seek(&stream, 99999, SSSeekFromStart), 0);
  EXPECT_EQ(stream.read(&stream, buffer, 20), 1u) << "the stream ends where the file ended";
  stream.close(&stream);
}

TEST(File, SaysWhyItCannotBeOpened) {
  const TemporaryFolder folder;
  for (const auto& path : {folder.path() / "missing", folder.path()}) {
    const auto file = File::open(path);
    ASSERT_FALSE(file);
    EXPECT_EQ(file.error().reason, Reason::kUnreadable);
    EXPECT_NE(file.error().message, "");
  }
}

}  // namespace
}  // namespace qps::test
