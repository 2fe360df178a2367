// SPDX-License-Identifier: MIT
//
// The files of a run: those on the command line, or the names in a file (--files0-from), which are
// taken one by one so that a long list costs nothing and work begins at once.
#ifndef QPSREADER_TOOL_INPUTS_H
#define QPSREADER_TOOL_INPUTS_H

#include <cstddef>
#include <fstream>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "tool/settings.h"

namespace qps {

class Inputs {
 public:
  // Throws UsageError when the file of names cannot be opened.
  explicit Inputs(const Settings& settings);

  std::optional<std::string> next();

 private:
  const Settings& settings_;
  std::size_t nextFile_ = 0;
  std::ifstream listFile_;
  std::istream* list_ = nullptr;  // null: the command line
};

// An open notebook, and the bytes behind it when they came from standard input. The bytes must
// outlive the notebook, so move both together.
struct OpenedFile {
  std::vector<std::byte> bytes;
  Notebook notebook;
};

// Opens a file, or standard input for "-". Throws Failure.
OpenedFile openInput(const std::string& name, const Settings& settings);

}  // namespace qps

#endif  // QPSREADER_TOOL_INPUTS_H
