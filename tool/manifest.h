// SPDX-License-Identifier: MIT
//
// --manifest: one JSON object a line for each notebook of a run, written as soon as it is done.
#ifndef QPSREADER_TOOL_MANIFEST_H
#define QPSREADER_TOOL_MANIFEST_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include <qpsreader/host/file_facts.hpp>
#include "tool/settings.h"
#include "tool/status.h"

namespace qps {

// What became of one notebook. What is not known is left empty, and null in the manifest.
struct ManifestEntry {
  std::string source;  // as the user named it
  Status status = Status::kOk;
  bool skipped = false;
  std::string message;  // of a failure
  std::vector<std::string> warnings;
  std::optional<NotebookFacts> facts;
  std::optional<std::uint64_t> worksheets;
  std::uint64_t cells = 0;           // with a text, in these worksheets
  std::vector<std::string> outputs;  // below --output-dir
};

class Manifest {
 public:
  // Makes settings.manifest anew. With --skip-existing the lines stay whose notebooks have been
  // done by this command and have all their outputs. Throws UsageError.
  Manifest(const Settings& settings, const char* command);

  // Whether a line that stayed is this notebook's.
  bool has(const std::string& source) const { return kept_.contains(source); }

  // `bytes` are those of a notebook that can be read only once; others, where it has no address,
  // are read for their SHA-256. Throws WriteError.
  void add(const ManifestEntry& entry, std::span<const std::byte> bytes);

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::string keepLines(const Settings& settings);
  bool keeps(const std::string& line, const Settings& settings);

  std::string command_;
  std::unordered_set<std::string> kept_;  // sources
  std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_MANIFEST_H
