// SPDX-License-Identifier: MIT
//
// A line on the terminal while the work lasts: how many files and cells so far. It shows on
// standard error only, only when that is a terminal that can take it back (not TERM=dumb), and only
// after a second. It has no colours.
#ifndef QPSREADER_TOOL_PROGRESS_H
#define QPSREADER_TOOL_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace qps {

class Progress {
 public:
  explicit Progress(bool wanted);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Whether the line will ever show.
  bool wanted() const { return wanted_; }

  // How many files there will be; 0 when that is not known.
  void expect(std::uint64_t files) { expected_ = files; }

  void fileDone() {
    ++files_;
    if (wanted_) show();
  }

  // Called with each cell; looks at the clock now and then.
  void cellRead() {
    if ((++cells_ & 0x3FFF) == 0 && wanted_) show();
  }

  // The last line of a run, on a terminal.
  void finish(const std::string& line);

  // Takes the line away, so that a message can stand in its place.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  void show();

  bool terminal_;  // and the user did not ask for silence
  bool wanted_;
  std::uint64_t files_ = 0;
  std::uint64_t expected_ = 0;
  std::uint64_t cells_ = 0;
  Clock::time_point next_;  // when the line is due
  std::size_t width_ = 0;   // of the line that stands there
};

}  // namespace qps

#endif  // QPSREADER_TOOL_PROGRESS_H
