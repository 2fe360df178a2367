// SPDX-License-Identifier: MIT
//
// Names of files as the tool has them everywhere: the bytes that the system has; on Windows, whose
// names are UTF-16, UTF-8.
#ifndef QPSREADER_TOOL_FILE_NAMES_H
#define QPSREADER_TOOL_FILE_NAMES_H

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace qps {

// On Windows a name that is not UTF-8 throws Failure.
std::filesystem::path filePathOf(std::string_view name);
std::string fileNameOf(const std::filesystem::path& path);

// With "/" between folders on every system.
std::string genericFileNameOf(const std::filesystem::path& path);

// As std::fopen; null with errno.
std::FILE* openFile(const std::filesystem::path& path, const char* mode);

// For bytes to write. Null, with EEXIST, where anything has that name, a dangling link included, so
// that nothing that stands in the folder can lead the bytes elsewhere.
std::FILE* createFile(const std::filesystem::path& path);

}  // namespace qps

#endif  // QPSREADER_TOOL_FILE_NAMES_H
