// SPDX-License-Identifier: MIT
//
// The command line: every command and every option is one row of a table, from which the parser,
// the help and the checks of the man page and the completions are made.
#ifndef QPSREADER_TOOL_COMMAND_LINE_H
#define QPSREADER_TOOL_COMMAND_LINE_H

#include <string>

#include "tool/commands.h"
#include "tool/settings.h"

namespace qps {

struct Invocation {
  const Command* command = nullptr;  // null: there is only `text` to print (help, version)
  Settings settings;
  std::string text;
};

// Throws UsageError.
Invocation parseCommandLine(int argc, const char* const* argv);

}  // namespace qps

#endif  // QPSREADER_TOOL_COMMAND_LINE_H
