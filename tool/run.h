// SPDX-License-Identifier: MIT
//
// A run over all files: each is read, written, and answered for on standard error.
#ifndef QPSREADER_TOOL_RUN_H
#define QPSREADER_TOOL_RUN_H

#include <initializer_list>
#include <string_view>

#include "tool/commands.h"
#include "tool/settings.h"
#include "tool/status.h"

namespace qps {

// Goes on after a file that fails and returns the first failure. Throws UsageError, before anything
// is done, and WriteError when standard output takes no more.
Status runCommand(const Command& command, const Settings& settings);

// One line on standard error: "qps: " and the parts, made safe for a terminal. Where there is no
// memory for the line it says that.
void printError(std::initializer_list<std::string_view> parts);

}  // namespace qps

#endif  // QPSREADER_TOOL_RUN_H
