// SPDX-License-Identifier: MIT
#include "tool/time_limit.h"

#include <ctime>
#include <string>

#include "tool/status.h"

namespace qps {
namespace {

std::chrono::nanoseconds processorTime() {
#if defined(_WIN32)
  // There the C library's clock is one on the wall, which is the nearest that it offers.
  return std::chrono::milliseconds(std::clock());
#else
  std::timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
#endif
}

}  // namespace

TimeLimit::TimeLimit(std::chrono::milliseconds limit) : limit_(limit), start_(processorTime()) {}

void TimeLimit::check() const {
  if (limit_.count() != 0 && processorTime() - start_ > limit_)
    throw Failure{Status::kLimit, "the time limit was reached: " + std::to_string(limit_.count()) +
                                      " ms of the processor (--max-time)"};
}

}  // namespace qps
