// SPDX-License-Identifier: MIT
#ifndef QPSREADER_TOOL_RUN_H
#define QPSREADER_TOOL_RUN_H

#include "tool/status.h"

namespace qps {

// The whole program: takes the command line, reads and writes each file, and answers for it on
// standard error. It goes on after a file that fails and returns the first failure.
Status runTool(int argc, const char* const* argv);

}  // namespace qps

#endif  // QPSREADER_TOOL_RUN_H
