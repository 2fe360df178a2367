// SPDX-License-Identifier: MIT
//
// What the table promises about opening, closing and the one open stream.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "tests/olefio/library_driver.h"
#include "tests/support/compound_writer.h"

namespace qps::test {
namespace {

TEST(InterfaceTable, HasNullInReservedSlots) {
  const OLEInterface ole = libraryTable();
  const void* const kReserved[] = {ole.reserved1,    ole.reserved3[0],  ole.reserved3[1],
                                   ole.reserved3[2], ole.reserved3[3],  ole.reserved3[4],
                                   ole.reserved9,    ole.reserved13[0], ole.reserved13[1]};
  EXPECT_EQ(std::ranges::count(kReserved, nullptr), std::ssize(kReserved));
}

class Interface : public testing::Test {
 protected:
  void SetUp() override {
    container_ = ole_.openContainer(host_.stream(), &host_.services()->pool);
    ASSERT_NE(container_, nullptr);
  }
  void TearDown() override {
    ole_.closeContainer(container_);
    EXPECT_EQ(host_.state(), "clean");
  }
  SSStream* open(const char* name) {
    return ole_.openStream(container_, name) != 0 ? ole_.streamObject(container_) : nullptr;
  }

  const Bytes large_ = contentsOf(9000, 1);
  const Bytes small_ = contentsOf(90, 2);
  const OLEInterface ole_ = libraryTable();
  RecordingHost host_{writeCompound({}, {{"Large", large_}, {"Small", small_}})};
  void* container_ = nullptr;
};

TEST_F(Interface, OneStreamIsOpenAtATime) {
  EXPECT_EQ(ole_.streamObject(container_), nullptr);
  EXPECT_EQ(readAll(open("Large"), {100}), large_);
  EXPECT_EQ(readAll(open("Small"), {100}), small_);
  EXPECT_EQ(readAll(ole_.streamObject(container_), {7}), small_) << "again at its first byte";
  EXPECT_EQ(open("Missing"), nullptr);
  EXPECT_EQ(ole_.streamObject(container_), nullptr) << "the one that was open is closed";
}

TEST_F(Interface, AStreamIsClosedByItsName) {
  ASSERT_NE(open("Large"), nullptr);
  ole_.closeStream(container_, "Small");
  EXPECT_EQ(readAll(ole_.streamObject(container_), {100}), large_);
  ole_.closeStream(container_, "LARGE");
  EXPECT_EQ(ole_.streamObject(container_), nullptr);
  ole_.closeStream(container_, "Large");
  ole_.closeStream(container_, "");
}

TEST_F(Interface, AClosedOrReleasedObjectGivesNoBytes) {
  SSStream* stream = open("Large");
  std::byte piece[8];
  ASSERT_EQ(stream->read(stream, piece, 8), 8u);
  stream->close(stream);
  EXPECT_EQ(stream->read(stream, piece, 8), 0u);
  EXPECT_EQ(stream->seek(stream, 0, SSSeekFromStart), 0);
  EXPECT_NE(stream->open(stream), 0);
  EXPECT_EQ(readAll(stream, {100}), large_);
  ole_.releaseStreamObject(container_);
  EXPECT_EQ(stream->read(stream, piece, 8), 0u);
  stream = ole_.streamObject(container_);
  EXPECT_EQ(readAll(stream, {100}), large_);
  ole_.closeStream(container_, "Large");
  EXPECT_EQ(stream->open(stream), 0);
  EXPECT_EQ(stream->read(stream, piece, 8), 0u);
}

TEST_F(Interface, ReadingNothingAsksTheHostForNothing) {
  SSStream* stream = open("Large");
  std::byte first;
  ASSERT_EQ(stream->read(stream, &first, 1), 1u);
  const std::size_t before = host_.hostCalls();
  EXPECT_EQ(stream->read(stream, nullptr, 0), 0u);
  EXPECT_EQ(host_.hostCalls(), before);
}

}  // namespace
}  // namespace qps::test
