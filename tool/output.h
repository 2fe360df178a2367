// SPDX-License-Identifier: MIT
//
// Where results go: a block of bytes in front of a file, and a file in --output-dir that appears
// under its name only when it is whole.
#ifndef QPSREADER_TOOL_OUTPUT_H
#define QPSREADER_TOOL_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace qps {

// The system took no more bytes; `error` is its errno.
struct WriteError {
  int error = 0;
  std::string message() const;
};

class Output {
 public:
  // Writes to `file`, past its own buffer; the file stays the caller's.
  explicit Output(std::FILE* file);

  // Writes nowhere: for a rehearsal of what will be written to `real`. Throws Failure as soon as it
  // is more than `most` bytes.
  Output(const Output& real, std::uint64_t most);

  // Room for at least `size` bytes. What was written there counts once `commit` is told its end.
  char* reserve(std::size_t size) {
    if (size > static_cast<std::size_t>(end_ - cursor_)) makeRoom(size);
    return cursor_;
  }
  void commit(char* end) { cursor_ = end; }

  void put(char byte) {
    *reserve(1) = byte;
    ++cursor_;
  }
  void write(std::string_view text) {
    if (text.empty()) return;
    std::memcpy(reserve(text.size()), text.data(), text.size());
    cursor_ += text.size();
  }
  void fill(std::size_t count, char byte);

  // Hands everything to the system. This, and whatever needs room, may throw WriteError.
  void flush();

  // Whether people see it as it is written, on a terminal.
  bool isTerminal() const { return terminal_; }

 private:
  // Large enough that the system calls no longer show, small enough to stay in the cache.
  static constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

  void makeRoom(std::size_t size);

  std::FILE* file_;  // null: a rehearsal
  bool terminal_;
  std::uint64_t bytesLeft_ = 0;  // of a rehearsal
  std::size_t capacity_ = kBlockBytes;
  std::unique_ptr<char[]> block_{new char[kBlockBytes]};
  char* cursor_ = block_.get();
  char* end_ = cursor_ + kBlockBytes;
};

// Whether "A" and "a" are one file in this folder, in which files can be made.
bool ignoresCase(const std::filesystem::path& folder);

// Removes the temporary files in the folder that no process is writing to: those of processes that
// were killed.
void removeLeftovers(const std::filesystem::path& folder);

// From now on signals that end the process (Ctrl-C, TERM, HUP) remove its temporary file first.
void cleanUpOnSignals();

// A new file below a folder; `name` may have folders before it, which are made. Its bytes go to a
// temporary name beside it, which `finish` turns into its own; without `finish` nothing stays
// behind. Each function may throw WriteError.
class OutputFile {
 public:
  OutputFile(const std::filesystem::path& folder, const std::string& name);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  Output& out() { return out_; }
  // The file under its temporary name, for what writes to a name.
  const std::filesystem::path& temporary() const { return temporary_; }
  // False where a file of that name is there, with other bytes; it is replaced only if `overwrite`
  // says so. Of two processes that finish at the same time one finds the other's file.
  [[nodiscard]] bool finish(bool overwrite);

 private:
  std::filesystem::path target_;
  std::filesystem::path temporary_;
  std::FILE* file_;  // null once closed
  Output out_;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_OUTPUT_H
