// SPDX-License-Identifier: MIT
//
// The files of a run: those on the command line, or the names in a file (--files0-from), which are
// taken one by one so that a long list costs nothing and work begins at once.
#ifndef QPSREADER_TOOL_INPUTS_H
#define QPSREADER_TOOL_INPUTS_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <qpsreader/host/notebook.hpp>
#include "tool/settings.h"

namespace qps {

class Inputs {
 public:
  // Throws UsageError when the file of names cannot be opened.
  explicit Inputs(const Settings& settings);

  // None after the last one. Throws Failure when the list cannot be read on; then it has ended.
  std::optional<std::string> next();

  // How many there will be; 0 when that is not known. Reads a list in a file to its end.
  std::uint64_t total() const;

  // What the user called the list; "" for the command line.
  const std::string& list() const { return settings_.files0From; }

 private:
  struct Close {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };

  std::optional<std::string> nextOfAll();

  const Settings& settings_;
  std::size_t nextFile_ = 0;
  std::uint64_t taken_ = 0;                  // of all, those of other shards among them
  std::unique_ptr<std::FILE, Close> names_;  // null: the command line, or a list that has ended
};

// Bytes that grow without a second copy of them.
struct FreeBytes {
  void operator()(std::byte* bytes) const { std::free(bytes); }
};
using InputBytes = std::unique_ptr<std::byte, FreeBytes>;

// An open notebook, and the bytes behind it when they came from standard input. The bytes must
// outlive the notebook, so move both together.
struct OpenedFile {
  InputBytes bytes;
  Notebook notebook;
  std::uint64_t size = 0;       // of the file
  std::uint64_t maxMemory = 0;  // what standard input has left of --max-memory; 0 is no limit
};

// Opens a file, or standard input for "-". Throws Failure.
OpenedFile openInput(const std::string& name, const Settings& settings);

}  // namespace qps

#endif  // QPSREADER_TOOL_INPUTS_H
