// SPDX-License-Identifier: MIT
//
// qps_bench [--cells=N] [--tool=QPS --folder=DIR] [Google Benchmark's flags]: measures the reader
// and prints one table: nanoseconds a unit, and the ratio to the floor of the same run. Runs are
// repeated in random order, so that a disturbance of the machine does not meet one of them alone;
// of several the fastest counts. With --tool it compares whole processes too, on a file that it
// writes to DIR. The status is 1 when a ratio is above what it may be.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "bench/floor.h"
#include "bench/measure.h"
#include "bench/subject.h"

namespace {

using namespace qps::bench;

class RatioTable : public benchmark::BenchmarkReporter {
 public:
  explicit RatioTable(const std::vector<Measure>& measures) {
    for (const Measure& measure : measures)
      rows_.push_back({&measure, 0, 0});
  }

  // Whether no ratio that was measured is above what its measure allows.
  bool allReached() const { return allReached_; }

  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      Row* row = find(run.run_name.function_name);
      if (row == nullptr || run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const auto peak = run.counters.find("peakBytes");
      const bool elsewhere = peak != run.counters.end();
      const double total = elsewhere ? run.real_accumulated_time : run.cpu_accumulated_time;
      const double each =
          total / static_cast<double>(run.iterations) / static_cast<double>(row->measure->units);
      row->seconds = row->seconds == 0 ? each : std::min(row->seconds, each);
      if (elsewhere) row->peakBytes = peak->second.value;
    }
  }

  void Finalize() override {
    std::string group;
    for (const Row& row : rows_) {
      if (row.seconds == 0 || !row.measure->isShown) continue;
      if (row.measure->group != group) {
        group = row.measure->group;
        std::printf("\n%-44s %9s %9s %7s %8s\n", group.c_str(), "ns a unit", "floor", "ratio",
                    "at most");
      }
      print(row);
    }
  }

 private:
  struct Row {
    const Measure* measure;
    double seconds;  // a unit; 0 when it was not measured
    double peakBytes;
  };

  Row* find(const std::string& key) {
    const auto isIt = [&](const Row& row) { return keyOf(*row.measure) == key; };
    const auto found = std::find_if(rows_.begin(), rows_.end(), isIt);
    return found == rows_.end() ? nullptr : &*found;
  }

  void print(const Row& row) {
    std::printf("  %-42s %9.2f", row.measure->name.c_str(), row.seconds * 1e9);
    const Row* floor = find(row.measure->floor);
    if (floor != nullptr && floor->seconds != 0) {
      const double ratio = row.seconds / floor->seconds;
      std::printf(" %9.2f %7.3f", floor->seconds * 1e9, ratio);
      const double atMost = row.measure->atMost;
      const bool reached = atMost == 0 || ratio <= atMost;
      if (atMost != 0) std::printf(" %8.2f%s", atMost, reached ? "" : "  above");
      allReached_ = allReached_ && reached;
    }
    if (row.peakBytes != 0) std::printf("  peak %.1f MB", row.peakBytes / 1e6);
    std::printf("\n");
  }

  std::vector<Row> rows_;
  bool allReached_ = true;
};

// A floor that printed something else than the reader would measure nothing: the two must give the
// same text for each cell of the family.
bool floorPrintsAsTheReader(const FamilyRow& row) {
  Subject subject(buildNotebook(*findDeck(row.name), 5'000).bytes());
  std::vector<std::string> texts, floorTexts;
  subject.items(0, [&](const SSItem& item) {
    const char* text = item.kind == SSItemKindCell ? item.cell.text : nullptr;
    if (text != nullptr) texts.emplace_back(text);
  });
  const std::uint32_t offset = subject.offset();
  walkRecords(subject.openedStream(), offset,
              [&](unsigned type, const std::uint8_t* body, std::size_t bytes) {
                char area[kFloorTextBytes];
                if (isCellRecord(type))
                  floorTexts.emplace_back(floorText(familyOf(body), body, bytes, area));
                return type != qps::test::rec::kSheetEnd;
              });
  if (texts == floorTexts && !texts.empty()) return true;
  const auto [reader, floor] =
      std::mismatch(texts.begin(), texts.end(), floorTexts.begin(), floorTexts.end());
  std::fprintf(stderr, "bench: %s: the floor prints \"%s\", the reader \"%s\"\n", row.name.data(),
               floor == floorTexts.end() ? "" : floor->c_str(),
               reader == texts.end() ? "" : reader->c_str());
  return false;
}

void runMeasure(benchmark::State& state, const Measure& measure) {
  double peak = 0;
  for (auto _ : state) {
    if (measure.run) {
      measure.run();
      continue;
    }
    const Usage usage = measure.runElsewhere();
    state.SetIterationTime(usage.seconds);
    peak = usage.peakBytes;
  }
  if (!measure.run) state.counters["peakBytes"] = peak;
}

// Takes "--name=value" out of the arguments; `otherwise` when it is not there.
std::string takeFlag(std::vector<char*>& arguments, std::string_view name, std::string otherwise) {
  const auto at = std::find_if(arguments.begin(), arguments.end(), [&](std::string_view argument) {
    return argument.starts_with(name);
  });
  if (at == arguments.end()) return otherwise;
  otherwise = std::string_view(*at).substr(name.size());
  arguments.erase(at);
  return otherwise;
}

}  // namespace

int main(int argc, char** argv) {
  // What Google Benchmark is told unless the command line says otherwise, which comes later.
  std::string defaults[] = {"--benchmark_repetitions=7", "--benchmark_min_time=0.1",
                            "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> arguments = {argv[0]};
  for (std::string& flag : defaults)
    arguments.push_back(flag.data());
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  const std::size_t cells = std::stoul(takeFlag(arguments, "--cells=", "1000000"));
  const std::string tool = takeFlag(arguments, "--tool=", "");
  const std::string folder = takeFlag(arguments, "--folder=", "");
  auto count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  std::vector<Measure> processes;  // made first: see writeNotebook
  if (!tool.empty()) {
    const auto floor = std::filesystem::path(argv[0]).parent_path() / "qps_floor_csv";
    addProcessMeasures(processes, cells, tool, floor.string(), folder);
  }
  if (!std::all_of(std::begin(kFamilies), std::end(kFamilies), floorPrintsAsTheReader)) return 1;
  std::vector<Measure> measures;
  addReaderMeasures(measures, cells);
  measures.insert(measures.end(), processes.begin(), processes.end());
  for (const Measure& measure : measures) {
    auto* registered = benchmark::RegisterBenchmark(
        keyOf(measure).c_str(),
        [&measure](benchmark::State& state) { runMeasure(state, measure); });
    if (measure.runElsewhere) registered->UseManualTime();
  }
  RatioTable table(measures);
  benchmark::RunSpecifiedBenchmarks(&table);
  return table.allReached() ? 0 : 1;
}
