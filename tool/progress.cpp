// SPDX-License-Identifier: MIT
#include "tool/progress.h"

#include <cstdio>
#include <cstdlib>
#include <string>

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
    : wanted_(wanted && errorIsTerminal() && !terminalIsDumb()), next_(Clock::now() + kPatience) {}

void Progress::show() {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  std::string line = "qps: " + std::to_string(cells_) + " cells";
  if (files_ > 0) line += ", " + std::to_string(files_) + " files done";
  clear();
  width_ = line.size();
  std::fputs(("\r" + line).c_str(), stderr);
  std::fflush(stderr);
}

void Progress::clear() {
  if (width_ == 0) return;
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
  std::fflush(stderr);
  width_ = 0;
}

}  // namespace qps
