// SPDX-License-Identifier: MIT
#include "tool/limits.h"

#include <string>

#include <qpsreader/host/notebook.hpp>
#include "tool/status.h"

namespace qps {
namespace {

// A notebook numbers its worksheets with one byte.
constexpr std::uint64_t kMostSheets = 256;

// Records before the first worksheet, times the worksheets: 32,768 in each of 256 worksheets (cells
// can refer to 8192 styles, 255 fonts and 143 formats), and in each of four as many as the file has
// room for.
constexpr std::uint64_t mostDefinitions(std::uint64_t fileBytes) {
  return (std::uint64_t{8} << 20) + fileBytes;
}

}  // namespace

void checkOpening(const Notebook& notebook, std::uint64_t worksheets, std::uint64_t fileBytes) {
  const auto refuse = [](const std::string& listed) {
    throw Failure{Status::kLimit, listed + ", more than a notebook has; --sheet can choose"};
  };
  if (worksheets > kMostSheets)
    refuse("lists " + std::to_string(notebook.sheets().size()) + " worksheets");
  const std::uint32_t definitions = notebook.facts().definitionRecords;
  if (worksheets * definitions > mostDefinitions(fileBytes))
    refuse("has " + std::to_string(definitions) + " definitions for each of " +
           std::to_string(worksheets) + " worksheets");
}

}  // namespace qps
