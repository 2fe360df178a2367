// SPDX-License-Identifier: MIT
//
// qps: lists, prints and converts Quattro Pro for Windows notebooks. The command line becomes a
// Command with Settings (command_line.cpp); run.cpp reads each file into a Document (document.cpp)
// and hands it to the command's writer.
#include "tool/run.h"

int main(int argc, char** argv) {
  return static_cast<int>(qps::runTool(argc, argv));
}
