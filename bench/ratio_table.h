// SPDX-License-Identifier: MIT
//
// Reports measures as one table: nanoseconds a unit, and the ratio to the floor of the same run.
// Of several repetitions the fastest counts: what else the machine does only adds time.
#ifndef QPSREADER_BENCH_RATIO_TABLE_H
#define QPSREADER_BENCH_RATIO_TABLE_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "bench/measure.h"

namespace qps::bench {

class RatioTable : public benchmark::BenchmarkReporter {
 public:
  explicit RatioTable(const std::vector<Measure>& measures) : measures_(measures) {}

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  // Whether no ratio that was measured is above what its measure allows.
  bool allReached() const { return allReached_; }

 private:
  struct Best {
    double seconds = 0;  // of one iteration
    double peakBytes = 0;
  };

  double secondsPerUnit(const std::string& key) const;  // 0 when it was not measured
  void printRow(const Measure& measure, double each);

  const std::vector<Measure>& measures_;
  std::map<std::string, Best> bestByKey_;
  bool allReached_ = true;
};

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_RATIO_TABLE_H
