// SPDX-License-Identifier: MIT
#include "bench/ratio_table.h"

#include <algorithm>
#include <cstdio>

namespace qps::bench {

bool RatioTable::ReportContext(const Context&) {
  return true;
}

void RatioTable::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration || run.error_occurred || run.iterations == 0) continue;
    const auto iterations = static_cast<double>(run.iterations);
    const auto peak = run.counters.find("peakBytes");
    const bool elsewhere = peak != run.counters.end();
    const double total = elsewhere ? run.real_accumulated_time : run.cpu_accumulated_time;
    const Best now{total / iterations, elsewhere ? peak->second.value : 0};
    const auto [best, isNew] = bestByKey_.emplace(run.run_name.function_name, now);
    if (!isNew) best->second.seconds = std::min(best->second.seconds, now.seconds);
  }
}

void RatioTable::Finalize() {
  std::string group;
  for (const Measure& measure : measures_) {
    const double each = secondsPerUnit(keyOf(measure));
    if (each == 0 || measure.isOnlyFloor) continue;
    if (measure.group != group) {
      group = measure.group;
      std::printf("\n%-44s %9s %9s %7s %8s\n", group.c_str(), "ns a unit", "floor", "ratio",
                  "at most");
    }
    printRow(measure, each);
  }
}

double RatioTable::secondsPerUnit(const std::string& key) const {
  const auto best = bestByKey_.find(key);
  const auto measure = std::find_if(measures_.begin(), measures_.end(),
                                    [&](const Measure& m) { return keyOf(m) == key; });
  if (best == bestByKey_.end() || measure == measures_.end()) return 0;
  return best->second.seconds / static_cast<double>(measure->units);
}

void RatioTable::printRow(const Measure& measure, double each) {
  std::printf("  %-42s %9.2f", measure.name.c_str(), each * 1e9);
  if (const double floor = secondsPerUnit(measure.floor); floor != 0) {
    const double ratio = each / floor;
    std::printf(" %9.2f %7.3f", floor * 1e9, ratio);
    if (measure.atMost != 0) {
      const bool reached = ratio <= measure.atMost;
      allReached_ = allReached_ && reached;
      std::printf(" %8.2f%s", measure.atMost, reached ? "" : "  above");
    }
  }
  const double peak = bestByKey_[keyOf(measure)].peakBytes;
  if (peak != 0) std::printf("  peak %.1f MB", peak / 1e6);
  std::printf("\n");
}

}  // namespace qps::bench
