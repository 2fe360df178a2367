// SPDX-License-Identifier: MIT
//
// A row of the table: a named run over so many units (cells, records, rows), mostly to be compared
// with another run, whose cost a unit is the floor.
#ifndef QPSREADER_BENCH_MEASURE_H
#define QPSREADER_BENCH_MEASURE_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace qps::bench {

// What a run measured itself, where the time of this process's processor does not say it.
struct Usage {
  double seconds = 0;
  double peakBytes = 0;
};

struct Measure {
  std::string group;  // measures of one group stand together
  std::string name;   // unique in its group
  std::size_t units = 0;
  std::string floor{};  // keyOf the measure to compare with, or empty
  double atMost = 0;    // the ratio to reach, or 0
  bool isShown = true;  // floors are shown in the rows that are compared with them
  std::function<void()> run{};
  std::function<Usage()> runElsewhere{};  // in the place of `run`: another process
};

// What Google Benchmark's --benchmark_filter sees: "items/mix".
inline std::string keyOf(const Measure& measure) {
  return measure.group + "/" + measure.name;
}

void addReaderMeasures(std::vector<Measure>& measures, std::size_t cells);

// Compares the tool with the floor that writes CSV, both on one file that is written to `folder`.
void addProcessMeasures(std::vector<Measure>& measures, std::size_t cells, const std::string& tool,
                        const std::string& floor, const std::string& folder);

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_MEASURE_H
