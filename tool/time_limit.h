// SPDX-License-Identifier: MIT
#ifndef QPSREADER_TOOL_TIME_LIMIT_H
#define QPSREADER_TOOL_TIME_LIMIT_H

#include <chrono>

namespace qps {

// The processor time that this process has spent since the construction.
class TimeLimit {
 public:
  explicit TimeLimit(std::chrono::milliseconds limit);

  // Throws Failure when the limit is passed. A system call: not for each cell.
  void check() const;

 private:
  std::chrono::milliseconds limit_;  // 0 is none
  std::chrono::nanoseconds start_;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_TIME_LIMIT_H
