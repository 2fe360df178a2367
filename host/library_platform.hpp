// SPDX-License-Identifier: MIT
//
// What the loader needs of the platform (library_loader_posix.cpp, library_loader_windows.cpp).
#ifndef QPSREADER_HOST_LIBRARY_PLATFORM_HPP
#define QPSREADER_HOST_LIBRARY_PLATFORM_HPP

#include <filesystem>

namespace qps::platform {

// The running program's file; empty when it is not known.
std::filesystem::path programFile();

// The file that holds the reader's operations: the shared library, or the program itself.
std::filesystem::path readerFile();

// A handle of the library in this file, an absolute path, or null.
void* openLibrary(const std::filesystem::path& file);

}  // namespace qps::platform

#endif  // QPSREADER_HOST_LIBRARY_PLATFORM_HPP
