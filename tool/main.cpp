// SPDX-License-Identifier: MIT
//
// qps: lists, prints and converts Quattro Pro for Windows notebooks. The command line becomes a
// Command with Settings (command_line.cpp); run.cpp reads each file into a Document (document.cpp)
// and hands it to the command's writer.
#include "tool/run.h"

#if defined(_WIN32)

#include <windows.h>

#include <string>
#include <vector>

namespace {

std::string utf8Of(const wchar_t* text) {
  const auto convert = [text](char* to, int room) {
    return WideCharToMultiByte(CP_UTF8, 0, text, -1, to, room, nullptr, nullptr);
  };
  std::string utf8(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  convert(utf8.data(), static_cast<int>(utf8.size()));
  return utf8;
}

}  // namespace

// Tells the C library to make names of files of "*.wb2": the shells of Windows do not.
int _dowildcard = -1;

// The console shows what is printed, UTF-8, as that, and is then left as it was.
int wmain(int argc, wchar_t** argv) {
  std::vector<std::string> arguments;
  for (int i = 0; i < argc; ++i)
    arguments.push_back(utf8Of(argv[i]));
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments)
    pointers.push_back(argument.c_str());

  const UINT codePage = GetConsoleOutputCP();
  SetConsoleOutputCP(CP_UTF8);
  const qps::Status status = qps::runTool(argc, pointers.data());
  SetConsoleOutputCP(codePage);
  return static_cast<int>(status);
}

#else

int main(int argc, char** argv) {
  return static_cast<int>(qps::runTool(argc, argv));
}

#endif
