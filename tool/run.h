// SPDX-License-Identifier: MIT
//
// A run over all files: each is read, written, and answered for on standard error.
#ifndef QPSREADER_TOOL_RUN_H
#define QPSREADER_TOOL_RUN_H

#include "tool/commands.h"
#include "tool/settings.h"
#include "tool/status.h"

namespace qps {

// Goes on after a file that fails and returns the first failure. Throws UsageError, before anything
// is done, and WriteError when standard output takes no more.
Status runCommand(const Command& command, const Settings& settings);

// One line on standard error: "qps: " and the parts, made safe for a terminal.
void printError(std::string_view text);

}  // namespace qps

#endif  // QPSREADER_TOOL_RUN_H
