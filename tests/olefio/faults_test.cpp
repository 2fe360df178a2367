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
  unsigned version;
  SectorOrder order;
  std::size_t streamBytes;
};

const Sample kSamples[] = {
    {3, SectorOrder::kForward, 70},    {3, SectorOrder::kForward, 5000},
    {3, SectorOrder::kBackward, 5000}, {3, SectorOrder::kScattered, 3000},
    {4, SectorOrder::kForward, 70},    {4, SectorOrder::kBackward, 9000},
};

Bytes fileOf(const Sample& sample, const Bytes& contents) {
  return writeCompound({.version = sample.version, .sectors = sample.order},
                       {{"MAIN", contents}, {"OTHER", contentsOf(500, 2)}});
}

TEST(Faults, AFileMayEndAnywhere) {
  for (const Sample& sample : kSamples) {
    const Bytes contents = contentsOf(sample.streamBytes, 1);
    const Bytes file = fileOf(sample, contents);
    for (std::size_t end = 0; end < file.size(); end += sample.version == 3 ? 1 : 7) {
      RecordingHost host(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(end)));
      host.seekBeyondEnd = end % 2 == 0;
      const Reading reading = readStream(host, "MAIN");
      ASSERT_TRUE(isBeginningOf(reading.bytes, contents)) << end << " of " << file.size();
      ASSERT_EQ(host.state(), "clean") << end << " of " << file.size();
    }
  }
}

TEST(Faults, EveryHostCallMayFail) {
  for (const Sample& sample : kSamples) {
    const Bytes contents = contentsOf(sample.streamBytes, 1);
    const Bytes file = fileOf(sample, contents);
    for (const Step step : {Step::kOpen, Step::kRead, Step::kSeek, Step::kPoolBlock}) {
      for (const std::size_t shortBy : {SIZE_MAX, std::size_t{1}}) {
        for (const bool forGood : {false, true}) {
          bool isMet = true;
          for (std::size_t nth = 1; isMet; ++nth) {
            SCOPED_TRACE(std::string(nameOf(step)) + ' ' + std::to_string(nth));
            RecordingHost host(file);
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
