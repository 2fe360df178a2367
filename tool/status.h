// SPDX-License-Identifier: MIT
//
// How a run ends: the exit statuses, and the one exception that carries a reason to the loop over
// the files. The numbers are promised to scripts (man page, "EXIT STATUS").
#ifndef QPSREADER_TOOL_STATUS_H
#define QPSREADER_TOOL_STATUS_H

#include <string>

namespace qps {

enum class Status : int {
  kOk = 0,
  kFailed = 1,        // a file could not be read or written, or has no such worksheet
  kUsage = 2,         // the command line is wrong; nothing was done
  kNotANotebook = 3,  // another kind of file
  kRefused = 4,       // protected by a password
  kDamaged = 5,       // cut short, or its records cannot be followed
  kLimit = 6,         // the machine's memory was not enough, or a limit was reached (limits.h)
};

// One file failed. `reason` is one line, fit to follow "qps: FILE: ".
struct Failure {
  Status status = Status::kFailed;
  std::string reason;
};

// The command line is wrong; thrown before any file is touched.
struct UsageError {
  std::string reason;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_STATUS_H
