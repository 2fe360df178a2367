// SPDX-License-Identifier: MIT
#include "tool/inputs.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "tool/document.h"
#include "tool/status.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

namespace qps {
namespace {

std::vector<std::byte> readStandardInput(std::uint64_t limit) {
#if defined(_WIN32)
  _setmode(_fileno(stdin), _O_BINARY);
#endif
  constexpr std::size_t kBlock = std::size_t{1} << 20;
  std::vector<std::byte> bytes;
  std::size_t size = 0;
  for (;;) {
    bytes.resize(size + kBlock);
    const std::size_t got = std::fread(bytes.data() + size, 1, kBlock, stdin);
    size += got;
    if (limit != 0 && size > limit) throw Failure{Status::kLimit, "the memory limit was reached"};
    if (got == 0) break;
  }
  if (std::ferror(stdin) != 0)
    throw Failure{Status::kFailed, std::generic_category().message(errno)};
  bytes.resize(size);
  return bytes;
}

Notebook valueOrThrow(Expected<Notebook> notebook) {
  if (!notebook) throw failureOf(notebook.error());
  return *std::move(notebook);
}

}  // namespace

Inputs::Inputs(const Settings& settings) : settings_(settings) {
  if (settings.files0From.empty()) return;
  list_ = &std::cin;
  if (settings.files0From == "-") return;
  listFile_.open(settings.files0From, std::ios::binary);
  if (!listFile_)
    throw UsageError{"--files0-from: " + settings.files0From + ": " +
                     std::generic_category().message(errno)};
  list_ = &listFile_;
}

std::optional<std::string> Inputs::next() {
  if (list_ == nullptr) {
    if (nextFile_ == settings_.files.size()) return std::nullopt;
    return settings_.files[nextFile_++];
  }
  std::string name;
  if (!std::getline(*list_, name, '\0')) return std::nullopt;
  return name;
}

OpenedFile openInput(const std::string& name, const Settings& settings) {
  if (name.empty()) throw Failure{Status::kFailed, "the file's name is empty"};
  const OpenOptions options{static_cast<std::size_t>(settings.maxMemory)};
  if (name != "-")
    return OpenedFile{{}, valueOrThrow(Notebook::open(std::filesystem::path(name), options))};

  if (settings.files0From == "-")
    throw Failure{Status::kFailed, "standard input already holds the names of the files"};
  std::vector<std::byte> bytes = readStandardInput(settings.maxMemory);
  Notebook notebook = valueOrThrow(Notebook::open(std::span<const std::byte>(bytes), options));
  return OpenedFile{std::move(bytes), std::move(notebook)};
}

}  // namespace qps
