// SPDX-License-Identifier: MIT
//
// Files that end anywhere and hosts that fail anywhere: what comes is the beginning of the stream
// or nothing, everything is given back, and the host's stream is closed once.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/olefio/library_driver.h"
#include "tests/support/compound_writer.h"

namespace qps::test {
namespace {

bool isBeginningOf(const Bytes& bytes, const Bytes& original) {
  return bytes.size() <= original.size() &&
         std::equal(bytes.begin(), bytes.end(), original.begin());
}

struct Sample {
  CompoundOptions options;
  std::size_t streamBytes;
  std::size_t cutBytes;  // how far the ends lie apart
  unsigned siblings = 1;
};

const Sample kSamples[] = {
    {{.sectors = SectorOrder::kForward}, 70, 1},
    {{.sectors = SectorOrder::kForward}, 5000, 1},
    {{.sectors = SectorOrder::kBackward}, 5000, 1},
    {{.sectors = SectorOrder::kScattered}, 3000, 1},
    {{.version = 4}, 70, 7},
    {{.version = 4, .sectors = SectorOrder::kBackward}, 9000, 7},
    // More entries wait to be looked at than the first block has room for.
    {{.siblings = SiblingOrder::kComb}, 5000, 31, 40},
    {{.freeSectors = kFreeSectorsForDifatChain}, 5000, 4999},
};

Bytes fileOf(const Sample& sample, const Bytes& contents) {
  std::vector<NamedStream> streams = {{"MAIN", contents}};
  for (unsigned i = 0; i < sample.siblings; ++i)
    streams.push_back({std::to_string(i), contentsOf(500 / (1 + i), 2)});
  return writeCompound(sample.options, streams);
}

TEST(Faults, AFileMayEndAnywhere) {
  for (const Sample& sample : kSamples) {
    const Bytes contents = contentsOf(sample.streamBytes, 1);
    RecordingHost host(fileOf(sample, contents));
    for (Bytes& file = host.file().bytes(); file.size() > sample.cutBytes;) {
      file.resize(file.size() - sample.cutBytes);
      host.seekBeyondEnd = file.size() % 2 == 0;
      const Reading reading = readStream(host, "MAIN");
      ASSERT_TRUE(isBeginningOf(reading.bytes, contents)) << file.size();
      ASSERT_EQ(host.state(), "clean") << file.size();
    }
  }
}

TEST(Faults, EveryHostCallMayFail) {
  for (const Sample& sample : kSamples) {
    const Bytes contents = contentsOf(sample.streamBytes, 1);
    RecordingHost host(fileOf(sample, contents));
    for (const Step step : {Step::kOpen, Step::kRead, Step::kSeek, Step::kPoolBlock}) {
      for (const std::size_t shortBy : {std::size_t{SIZE_MAX}, std::size_t{1}}) {
        for (const bool forGood : {false, true}) {
          bool isMet = true;
          for (std::size_t nth = 1; isMet; ++nth) {
            SCOPED_TRACE(std::string(nameOf(step)) + ' ' + std::to_string(nth));
            host.fail({.step = step, .nth = nth, .forGood = forGood, .shortBy = shortBy});
            const Reading reading = readStream(host, "MAIN");
            isMet = host.faultMet();
            ASSERT_EQ(host.state(), "clean");
            ASSERT_TRUE(isBeginningOf(reading.bytes, contents));
            // Without memory there is no stream, rather than a short one.
            const bool isShort = reading.found == Found::kStream && reading.bytes != contents;
            ASSERT_TRUE(!isShort || (isMet && step != Step::kPoolBlock && step != Step::kOpen));
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace qps::test
