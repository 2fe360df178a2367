// SPDX-License-Identifier: MIT
//
// Whole processes: "qps csv" against the floor that reads the same file and writes the same CSV.
// Both write to /dev/null and are measured by what the system says of their use of the processor.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/measure.h"
#include "bench/notebooks.h"

namespace qps::bench {
namespace {

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "bench: %s\n", what.c_str());
  std::exit(1);
}

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

// Runs `work` in a process of its own, which must succeed.
template <typename Work>
Usage inProcess(const Work& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) fail("a process failed");
  return {.seconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
          .peakBytes = static_cast<double>(usage.ru_maxrss) * 1024};
}

Usage runProgram(std::vector<std::string> command, const std::string& output) {
  std::vector<char*> arguments;
  for (std::string& argument : command)
    arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  return inProcess([&] {
    dup2(open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), STDOUT_FILENO);
    execv(arguments[0], arguments.data());
    _exit(1);
  });
}

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The notebook is made by a process of its own: what this one had in memory would count as the peak
// of every process that it starts.
void writeNotebook(const std::string& file, std::size_t cells) {
  inProcess([&] {
    const test::NotebookBuilder book = buildNotebook(*findDeck("mix"), cells);
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(book.bytes().data()),
               static_cast<std::streamsize>(book.bytes().size()));
  });
}

}  // namespace

void addProcessMeasures(std::vector<Measure>& measures, std::size_t cells, const std::string& tool,
                        const std::string& floor, const std::string& folder) {
  std::filesystem::create_directories(folder);
  const std::string file = folder + "/mix.wb2";
  writeNotebook(file, cells);
  const std::string floorOutput = folder + "/floor.csv", toolOutput = folder + "/tool.csv";
  const auto add = [&](const char* name, std::vector<std::string> command,
                       const std::string& output, std::string compared, double atMost) {
    const double peak = runProgram(command, output).peakBytes;
    measures.push_back({.group = "whole process",
                        .name = name,
                        .units = cells,
                        .floor = std::move(compared),
                        .atMost = atMost,
                        .runElsewhere = [=] {
                          return Usage{runProgram(command, "/dev/null").seconds, peak};
                        }});
  };
  add("floor (walk, std::to_chars, CSV)", {floor, file}, floorOutput, "", 0);
  add("qps csv", {tool, "csv", file}, toolOutput, keyOf(measures.back()), 1.0);
  if (contents(toolOutput) != contents(floorOutput))
    fail("the tool and the floor do not write the same CSV");
}

}  // namespace qps::bench
