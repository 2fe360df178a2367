// SPDX-License-Identifier: MIT
//
// The whole tool on a machine whose memory ends at any of its allocations, once or for good: it
// says so and ends with the status for that.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <span>

#include "tool/run.h"

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

std::size_t allocationsLeft = kNever;
bool failsForGood = false;

void* allocate(std::size_t size) {
  if (allocationsLeft == 0) {
    if (!failsForGood) allocationsLeft = kNever;
    throw std::bad_alloc();
  }
  if (allocationsLeft != kNever) --allocationsLeft;
  if (void* const block = std::malloc(size)) return block;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
  return allocate(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace qps {
namespace {

// How the tool ends in a child of which one allocation fails; kNever for none that was made.
int runWithout(std::size_t allocation, bool forGood, std::span<const char* const> arguments) {
  const pid_t child = fork();
  if (child == 0) {
    // What it prints is of no interest.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(98);
    if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(98);
    failsForGood = forGood;
    allocationsLeft = allocation;
    const Status status = runTool(static_cast<int>(arguments.size()), arguments.data());
    const bool met = allocationsLeft == (forGood ? 0 : kNever);
    _exit(met ? static_cast<int>(status) : 97);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// A sort does without memory, more slowly; a failure of one file does not keep the next from being
// tried, whose name is wrong here.
TEST(ToolMemory, AFailedAllocationEndsInWords) {
  constexpr int kNotMet = 97;
  constexpr std::size_t kStep = 7;  // a process for each allocation would take a minute
  struct Row {
    std::span<const char* const> arguments;
    int otherwise;  // the status when the loss was made up for
  };
  const char* const json[] = {"qps", "json", QPS_EXAMPLE, "/nonexistent/file"};
  const char* const csv[] = {"qps", "csv", "--encoding", "UTF-8", "--strict", QPS_EXAMPLE};
  for (const Row& row : {Row{json, 1}, Row{csv, 0}}) {
    for (const bool forGood : {false, true}) {
      std::size_t allocation = forGood ? 3 : 0;
      for (;; allocation += kStep) {
        const int status = runWithout(allocation, forGood, row.arguments);
        if (status == kNotMet) break;
        ASSERT_TRUE(status == 6 || status == row.otherwise) << allocation << ": " << status;
      }
      EXPECT_GT(allocation, 100U);
    }
  }
}

}  // namespace
}  // namespace qps
