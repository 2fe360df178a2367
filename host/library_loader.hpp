// SPDX-License-Identifier: MIT
//
// Loading the compound-document library by its bare name: the one that is linked into the program,
// or a file in one of the few folders where it may lie. Files are always loaded by an absolute
// path: never from the current directory, never by the system's own search.
#ifndef QPSREADER_HOST_LIBRARY_LOADER_HPP
#define QPSREADER_HOST_LIBRARY_LOADER_HPP

#include <filesystem>

#include <qpsreader/ole_interface.h>

namespace qps {

// A handle of the library with this file name, or null. In this order: from `folder`, when it is an
// absolute path; the library that is linked in; the one beside the reader (which is beside the
// program where the reader is linked into it). A name that is empty or names a folder (with "/" or
// "\", "." or "..") is refused.
void* loadLibraryByName(const char* name, const std::filesystem::path& folder = {});

// The address of an exported symbol, or null.
void* librarySymbol(void* library, const char* symbol);

// Gives a handle back.
void unloadLibrary(void* library);

// What the loader needs of the platform (library_loader_posix.cpp, library_loader_windows.cpp).
namespace platform {

// The file that holds the reader's operations: the shared library, or the program itself. An
// absolute path, or empty when it is not known.
std::filesystem::path readerFile();

// The entry point of the compound-document library, or null when it is not linked into the program.
GetOLEInterfaceFunction linkedOleInterface();

// A handle of the library in this file, an absolute path, or null; its symbols; its end.
void* openLibrary(const std::filesystem::path& file);
void* findSymbol(void* library, const char* symbol);
void closeLibrary(void* library);

}  // namespace platform
}  // namespace qps

#endif  // QPSREADER_HOST_LIBRARY_LOADER_HPP
