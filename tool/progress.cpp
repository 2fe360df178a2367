// SPDX-License-Identifier: MIT
#include "tool/progress.h"

#include <cstdio>
#include <cstdlib>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace qps {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kInterval{200};

bool errorIsTerminal() {
#if defined(_WIN32)
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

bool terminalIsDumb() {
  const char* const term = std::getenv("TERM");
  return term == nullptr || std::string(term) == "dumb";
}

}  // namespace

Progress::Progress(bool wanted)
    : terminal_(wanted && errorIsTerminal()),
      wanted_(terminal_ && !terminalIsDumb()),
      next_(Clock::now() + kPatience) {}

void Progress::show() {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  std::string line = "qps: " + std::to_string(cells_) + " cells";
  const std::string total = expected_ > 1 ? " of " + std::to_string(expected_) : "";
  if (files_ > 0) line += ", " + std::to_string(files_) + total + " files done";
  clear();
  width_ = line.size();
  std::fputs(("\r" + line).c_str(), stderr);
}

void Progress::finish(const std::string& line) {
  clear();
  if (terminal_) std::fputs((line + "\n").c_str(), stderr);
}

void Progress::clear() {
  if (width_ == 0) return;
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
  width_ = 0;
}

}  // namespace qps
