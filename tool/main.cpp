// SPDX-License-Identifier: MIT
//
// qps: lists, prints and converts Quattro Pro for Windows notebooks. The command line becomes a
// Command with Settings (command_line.cpp); run.cpp reads each file into a Document (document.cpp)
// and hands it to the command's writer.
#include <cerrno>
#include <cstdio>

#include "tool/command_line.h"
#include "tool/output.h"
#include "tool/run.h"

namespace qps {
namespace {

Status runTool(int argc, const char* const* argv) {
  try {
    const Invocation invocation = parseCommandLine(argc, argv);
    if (invocation.command != nullptr) return runCommand(*invocation.command, invocation.settings);
    Output out(stdout);
    out.write(invocation.text);
    out.flush();
    return Status::kOk;
  } catch (const UsageError& error) {
    printError({error.reason});
    return Status::kUsage;
  } catch (const WriteError& error) {
    // A reader that has closed its pipe has what it wanted, and needs no message.
    if (error.error != EPIPE) printError({"standard output: ", error.message()});
    return Status::kFailed;
  } catch (const std::bad_alloc&) {
    printError({"the machine has not enough memory"});
    return Status::kLimit;
  }
}

}  // namespace
}  // namespace qps

int main(int argc, char** argv) {
  return static_cast<int>(qps::runTool(argc, argv));
}
