// SPDX-License-Identifier: MIT
//
// Loading the compound-document library by its bare name from the few folders where it may lie,
// always by an absolute path: never from the current directory, never by the system's own search
// (library_loader_posix.cpp, library_loader_windows.cpp).
#ifndef QPSREADER_HOST_LIBRARY_LOADER_HPP
#define QPSREADER_HOST_LIBRARY_LOADER_HPP

#include <filesystem>
#include <vector>

namespace qps {

// Where a library is looked for, in this order, absolute paths only: beside the reader (when it is
// linked into the program: beside that), in `../lib` when the program lies in a folder named `bin`,
// and in the folder where this project's libraries are installed.
std::vector<std::filesystem::path> librarySearchFolders();

// A handle of the first library with this file name in those folders that can be loaded, or null. A
// name that is empty or names a folder (with "/" or "\", "." or "..") is refused.
void* loadLibraryByName(const char* name);

// The address of an exported symbol, or null.
void* librarySymbol(void* library, const char* symbol);

// Gives a handle back.
void unloadLibrary(void* library);

}  // namespace qps

#endif  // QPSREADER_HOST_LIBRARY_LOADER_HPP
