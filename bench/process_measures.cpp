// SPDX-License-Identifier: MIT
//
// Whole processes: "qps csv" against the floor that reads the same file and writes the same CSV.
// Both write to /dev/null and are measured by what the system says of their use of the processor.
#include <fcntl.h>
#include <spawn.h>
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

Usage runProcess(std::vector<std::string> command, const std::string& output) {
  std::vector<char*> arguments;
  for (std::string& argument : command)
    arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0666);
  pid_t child = 0;
  const int error = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) fail("cannot start " + command[0]);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  if (status != 0) fail(command[0] + " failed");
  return {.seconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
          .peakBytes = static_cast<double>(usage.ru_maxrss) * 1024};
}

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The notebook is made by a process of its own: what this one had in memory would count as the peak
// of every process that it starts.
void writeNotebook(const std::string& file, std::size_t cells) {
  const pid_t child = fork();
  if (child == 0) {
    const test::NotebookBuilder book = buildNotebook(*findDeck("mix"), cells);
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(book.bytes().data()),
               static_cast<std::streamsize>(book.bytes().size()));
    _exit(0);
  }
  waitpid(child, nullptr, 0);
}

}  // namespace

void addProcessMeasures(std::vector<Measure>& measures, std::size_t cells, const std::string& tool,
                        const std::string& floor, const std::string& folder) {
  std::filesystem::create_directories(folder);
  const std::string file = folder + "/mix.wb2";
  writeNotebook(file, cells);
  const std::vector<std::string> toolCommand = {tool, "csv", file};
  const std::vector<std::string> floorCommand = {floor, file};
  const double toolPeak = runProcess(toolCommand, folder + "/tool.csv").peakBytes;
  const double floorPeak = runProcess(floorCommand, folder + "/floor.csv").peakBytes;
  if (contents(folder + "/tool.csv") != contents(folder + "/floor.csv")) {
    fail("the tool and the floor do not write the same CSV");
  }
  const auto run = [](const std::vector<std::string>& command, double peak) {
    return Usage{.seconds = runProcess(command, "/dev/null").seconds, .peakBytes = peak};
  };
  measures.push_back({.group = "whole process",
                      .name = "floor (walk, std::to_chars, CSV)",
                      .units = cells,
                      .runElsewhere = [=] { return run(floorCommand, floorPeak); }});
  measures.push_back({.group = "whole process",
                      .name = "qps csv",
                      .units = cells,
                      .floor = keyOf(measures.back()),
                      .atMost = 1.0,
                      .runElsewhere = [=] { return run(toolCommand, toolPeak); }});
}

}  // namespace qps::bench
