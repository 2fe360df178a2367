// SPDX-License-Identifier: MIT
//
// qps_bench [--cells=N] [--tool=QPS --folder=DIR] [Google Benchmark's flags]: measures the reader
// and prints the ratios to the floor. Runs are repeated in random order, so that a disturbance of
// the machine does not meet one of them alone. With --tool it compares whole processes too, on a
// file that it writes to DIR. The status is 1 when a ratio is above what it may be.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "bench/floor.h"
#include "bench/measure.h"
#include "bench/ratio_table.h"
#include "bench/subject.h"

namespace {

using namespace qps::bench;

// A floor that printed something else than the reader would measure nothing: it and the reader must
// give the same text for each cell.
bool floorPrintsAsTheReader() {
  for (const FamilyRow& row : kFamilies) {
    Subject subject(buildNotebook(*findDeck(row.name), 5'000).bytes());
    std::vector<std::string> texts;
    subject.reading.items(subject.reading.offset(), [&](const SSItem& item) {
      if (item.kind != SSItemKindCell) return;
      const char* text = item.cell.text;
      texts.emplace_back(text == nullptr ? "" : text);
    });
    std::size_t cell = 0;
    bool same = true;
    subject.host.stream()->open(subject.host.stream());
    walkRecords(subject.host.stream(), subject.reading.offset(),
                [&](unsigned type, const std::uint8_t* body, std::size_t bytes) {
                  if (!isCellRecord(type)) return type != qps::test::rec::kSheetEnd;
                  char area[kFloorTextBytes];
                  const std::string_view text = floorText(familyOf(body), body, bytes, area);
                  same = cell < texts.size() && texts[cell] == text;
                  if (!same) {
                    std::fprintf(
                        stderr,
                        "bench: %s: cell %zu: the floor prints \"%.*s\", the reader \"%s\"\n",
                        row.name.data(), cell, static_cast<int>(text.size()), text.data(),
                        cell < texts.size() ? texts[cell].c_str() : "");
                  }
                  ++cell;
                  return same;
                });
    if (!same || cell != texts.size()) return false;
  }
  return true;
}

void runMeasure(benchmark::State& state, const Measure& measure) {
  if (measure.run) {
    for (auto _ : state)
      measure.run();
    return;
  }
  double peak = 0;
  for (auto _ : state) {
    const Usage usage = measure.runElsewhere();
    state.SetIterationTime(usage.seconds);
    peak = std::max(peak, usage.peakBytes);
  }
  state.counters["peakBytes"] = peak;
}

void registerMeasure(const Measure& measure) {
  auto* registered = benchmark::RegisterBenchmark(
      keyOf(measure).c_str(), [&measure](benchmark::State& state) { runMeasure(state, measure); });
  if (measure.runElsewhere) registered->UseManualTime();
}

// Takes "--name=value" out of the arguments; `otherwise` when it is not there.
std::string takeFlag(std::vector<char*>& arguments, std::string_view name, std::string otherwise) {
  for (auto at = arguments.begin(); at != arguments.end(); ++at) {
    const std::string_view argument = *at;
    if (!argument.starts_with(name)) continue;
    otherwise = argument.substr(name.size());
    arguments.erase(at);
    break;
  }
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
  if (!floorPrintsAsTheReader()) return 1;
  std::vector<Measure> measures;
  addItemMeasures(measures, cells);
  addOpeningMeasures(measures, cells);
  addGrowthMeasures(measures, cells);
  addWorstCases(measures);
  measures.insert(measures.end(), processes.begin(), processes.end());
  for (const Measure& measure : measures)
    registerMeasure(measure);
  RatioTable table(measures);
  benchmark::RunSpecifiedBenchmarks(&table);
  return table.allReached() ? 0 : 1;
}
