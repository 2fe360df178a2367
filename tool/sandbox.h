// SPDX-License-Identifier: MIT
//
// What a notebook could make of this program if it found a fault in it: before the first byte of
// one is read, the program gives up what it does not need for that.
#ifndef QPSREADER_TOOL_SANDBOX_H
#define QPSREADER_TOOL_SANDBOX_H

#include <string>

namespace qps {

struct Sandbox {
  bool systemCalls = false;  // seccomp: no program can be run, no socket opened, no process touched
  bool files = false;        // Landlock: no file can be written outside of one folder

  std::string description() const;  // "seccomp and Landlock", "none"
};

// For the rest of the process's life: files can be read, what is open can be written to, and new
// files and folders can be made in `outputFolder` only ("" for none). What the system refuses is
// left out; the result says what is in force. Libraries that may be needed must be loaded before.
//
// Where there is seccomp and no Landlock, files can be written anywhere when `outputFolder` is
// named, and nowhere when it is not.
Sandbox enterSandbox(const std::string& outputFolder);

}  // namespace qps

#endif  // QPSREADER_TOOL_SANDBOX_H
