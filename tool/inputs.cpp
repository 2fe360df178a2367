// SPDX-License-Identifier: MIT
#include "tool/inputs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "tool/document.h"
#include "tool/file_names.h"
#include "tool/status.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

namespace qps {
namespace {

namespace fs = std::filesystem;

// No system has longer names; a "list" without zero bytes is something else.
constexpr std::size_t kLongestName = std::size_t{64} << 10;

// How much of a file is looked at to see that it is no notebook.
constexpr std::size_t kBeginning = 4096;

// The reader's offsets have 32 bits.
constexpr std::uint64_t kMostBytes = 0xFFFFFFFF;

void checkSize(std::uint64_t size) {
  if (size > kMostBytes) throw Failure{Status::kLimit, "longer than 4 GiB"};
}

std::string systemMessage() {
  return std::generic_category().message(errno);
}

void readBinary([[maybe_unused]] std::FILE* file) {
#if defined(_WIN32)
  _setmode(_fileno(file), _O_BINARY);
#endif
}

void resize(InputBytes& bytes, std::size_t size) {
  void* const resized = std::realloc(bytes.get(), std::max<std::size_t>(size, 1));
  if (resized == nullptr) throw std::bad_alloc();
  static_cast<void>(bytes.release());
  bytes.reset(static_cast<std::byte*>(resized));
}

// Whether a file can still be a notebook that begins with these bytes: with record 0, or as a
// compound document. Zeros are records 0 without end.
bool canBeNotebook(std::string_view begin) {
  using namespace std::string_view_literals;
  constexpr std::string_view kBegins[] = {"\0\0"sv, "\xD0\xCF\x11\xE0"sv};
  const bool known = std::any_of(
      std::begin(kBegins), std::end(kBegins),
      [&](std::string_view start) { return begin.starts_with(start.substr(0, begin.size())); });
  return known && (begin.size() < kBeginning || begin.find_first_not_of('\0') != begin.npos);
}

// Reads to the end, or one byte more than `most`, or until it can be no notebook.
std::size_t readAll(std::FILE* file, std::uint64_t most, InputBytes& bytes) {
  const std::uint64_t mostRoom =
      std::min<std::uint64_t>(most, std::numeric_limits<std::size_t>::max() - 1) + 1;
  readBinary(file);
  errno = 0;
  std::size_t size = 0;
  std::size_t room = 0;
  while (size == room && room < mostRoom) {
    room =
        static_cast<std::size_t>(std::min<std::uint64_t>(mostRoom, std::max(kBeginning, 2 * room)));
    resize(bytes, room);
    size += std::fread(bytes.get() + size, 1, room - size, file);
    if (!canBeNotebook({reinterpret_cast<const char*>(bytes.get()), size})) break;
  }
  if (std::ferror(file) != 0) throw Failure{Status::kFailed, systemMessage()};
  resize(bytes, size);
  return size;
}

Notebook valueOrThrow(Expected<Notebook> notebook) {
  if (!notebook) throw failureOf(notebook.error());
  return *std::move(notebook);
}

OpenOptions openOptions(std::uint64_t memoryLimit, const Settings& settings) {
  return {.memoryLimit = static_cast<std::size_t>(memoryLimit), .salvage = settings.salvage};
}

// Zeros would be listed as a notebook without worksheets.
[[noreturn]] void refuseBeginning(std::span<const std::byte> bytes) {
  valueOrThrow(Notebook::open(bytes));
  throw Failure{Status::kNotANotebook, "not a Quattro Pro for Windows notebook"};
}

OpenedFile openBytes(std::FILE* file, const Settings& settings) {
  const std::uint64_t limit = settings.maxMemory;
  const std::uint64_t most = limit - limit / 16;  // leaves room for what the program itself takes
  InputBytes bytes;
  const std::size_t size =
      readAll(file, limit == 0 ? kMostBytes : std::min(most, kMostBytes), bytes);
  if (limit != 0 && size >= most) throw failureOf(memoryLimitError());
  checkSize(size);
  if (size == kBeginning && !canBeNotebook({reinterpret_cast<const char*>(bytes.get()), size}))
    refuseBeginning({bytes.get(), size});
  const std::uint64_t left = limit == 0 ? 0 : limit - size;
  Notebook notebook = valueOrThrow(
      Notebook::open(std::span<const std::byte>(bytes.get(), size), openOptions(left, settings)));
  return {std::move(bytes), std::move(notebook), size, left};
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Files that are not what their size says are taken as a stream: those in /proc and devices, which
// have none, and large ones that begin as no notebook does, of which only the beginning is read.
std::optional<OpenedFile> openUnsized(const std::string& name, std::uintmax_t size,
                                      const Settings& settings) {
  constexpr std::uintmax_t kLarge = std::uintmax_t{1} << 20;
  if (size != 0 && size < kLarge) return std::nullopt;
  const std::unique_ptr<std::FILE, CloseFile> file(openFile(filePathOf(name), "rb"));
  if (file == nullptr) return std::nullopt;
  if (size == 0) return openBytes(file.get(), settings);
  std::string begin(kBeginning, '\0');
  begin.resize(std::fread(begin.data(), 1, begin.size(), file.get()));
  if (canBeNotebook(begin)) return std::nullopt;
  std::rewind(file.get());
  return openBytes(file.get(), settings);
}

// The names of a list; 0 when it can only be read once.
std::uint64_t countNames(const std::string& list) {
  std::error_code error;
  const fs::path path = filePathOf(list);
  if (!fs::is_regular_file(path, error)) return 0;
  std::ifstream bytes(path, std::ios::binary);
  std::uint64_t names = 0;
  char last = '\0';
  for (std::array<char, 65536> block; bytes.read(block.data(), block.size()), bytes.gcount() > 0;) {
    const std::string_view part(block.data(), static_cast<std::size_t>(bytes.gcount()));
    names += static_cast<std::uint64_t>(std::count(part.begin(), part.end(), '\0'));
    last = part.back();
  }
  return names + (last == '\0' ? 0 : 1);
}

}  // namespace

Inputs::Inputs(const Settings& settings) : settings_(settings) {
  if (settings.files0From.empty()) return;
  const bool standardInput = settings.files0From == "-";
  names_.reset(standardInput ? stdin : openFile(filePathOf(settings.files0From), "rb"));
  if (names_ == nullptr)
    throw UsageError{"--files0-from: " + settings.files0From + ": " + systemMessage()};
  readBinary(names_.get());
}

std::optional<std::string> Inputs::next() {
  while (auto name = nextOfAll())
    if (taken_++ % settings_.shardCount == settings_.shard) return name;
  return std::nullopt;
}

std::uint64_t Inputs::total() const {
  const std::uint64_t all =
      settings_.files0From.empty() ? settings_.files.size() : countNames(settings_.files0From);
  return all / settings_.shardCount + (all % settings_.shardCount > settings_.shard ? 1 : 0);
}

std::optional<std::string> Inputs::nextOfAll() {
  if (settings_.files0From.empty()) {
    if (nextFile_ == settings_.files.size()) return std::nullopt;
    return settings_.files[nextFile_++];
  }
  if (names_ == nullptr) return std::nullopt;
  std::string name;
  errno = 0;
  for (int byte; (byte = std::getc(names_.get())) != EOF; name += static_cast<char>(byte)) {
    if (byte == '\0') return name;
    if (name.size() < kLongestName) continue;
    names_.reset();
    throw Failure{Status::kFailed, "not a list of names that end in zero bytes"};
  }
  const bool failed = std::ferror(names_.get()) != 0;
  const std::string message = failed ? systemMessage() : "";
  names_.reset();
  if (failed) throw Failure{Status::kFailed, message};
  return name.empty() ? std::nullopt : std::optional(std::move(name));
}

OpenedFile openInput(const std::string& name, const Settings& settings) {
  if (name.empty()) throw Failure{Status::kFailed, "the file's name is empty"};
  if (name == "-") {
    if (settings.files0From == "-")
      throw Failure{Status::kFailed, "standard input already holds the names of the files"};
    return openBytes(stdin, settings);
  }
  std::error_code error;
  const fs::path path = filePathOf(name);
  const fs::file_status status = fs::status(path, error);
  // It would be waited for without end. The shell's, which are open already, were named on purpose.
  if (fs::is_fifo(status) && name != "/dev/stdin" && !name.starts_with("/dev/fd/"))
    throw Failure{Status::kFailed, "a named pipe, which is only read as standard input (-)"};
  const std::uintmax_t size = fs::is_regular_file(status) ? fs::file_size(path, error) : 0;
  if (!error) {
    if (auto bytes = openUnsized(name, size, settings)) return *std::move(bytes);
    checkSize(size);
  }
  return {nullptr, valueOrThrow(Notebook::open(path, openOptions(settings.maxMemory, settings))),
          error ? 0 : size, settings.maxMemory};
}

}  // namespace qps
